// The library's threads and the host's signals.

#include "platform/threads.h"

#include "platform/linux/thread_queue.h"
#include "services/hardware_names.h"
#include "services/message_thread.h"
#include "services/polled_service.h"
#include "services/sys_info.h"
#include "simulator/bus.h"
#include "tests/support/scripted_device.h"
#include "transport/cmd_queue.h"
#include "transport/device_closer.h"
#include "transport/reader_thread.h"
#include "transport/usb_hid.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <string>
#include <sys/resource.h>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

std::set<int> threadsOfTheProcess()
{
    std::set<int> numbers;
    for (const auto& one : std::filesystem::directory_iterator("/proc/self/task"))
        numbers.insert(std::stoi(one.path().filename().string()));
    return numbers;
}

/// The signals that a thread has blocked, signal 1 being the lowest bit.
std::uint64_t blockedOf(int thread)
{
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    for (std::string word; status >> word;)
        if (word == "SigBlk:" && status >> word)
            return std::stoull(word, nullptr, 16);
    return 0;
}

/// All but SIGILL 4, SIGTRAP 5, SIGBUS 7, SIGFPE 8, SIGKILL 9, SIGSEGV 11, SIGSTOP 19, SIGSYS 31, and the two
/// of the C library's own, 32 and 33.
constexpr std::uint64_t allButMistakes = 0xFFFFFFFE3FFBFA27;

/// What the C library blocks while a thread comes into being: all but SIGKILL and SIGSTOP.
constexpr std::uint64_t unborn = 0xFFFFFFFFFFFBFEFF;

TEST(LibraryThreads, leaveTheHostsSignalsToTheHost)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    std::promise<std::uint64_t> blocked;
    std::thread thread = platform::startThread(
        [&] { blocked.set_value(blockedOf(static_cast<int>(platform::currentThreadId()))); });
    EXPECT_EQ(blocked.get_future().get(), allButMistakes);
    thread.join();
    sigset_t now;
    pthread_sigmask(SIG_SETMASK, nullptr, &now);
    for (int signal = 1; signal < 65; ++signal)
        EXPECT_EQ(sigismember(&now, signal), sigismember(&before, signal)) << signal;
}

/// How many threads there are beside those in `before`, and that each leaves signals alone.
int newThreads(const std::set<int>& before)
{
    int count = 0;
    for (const int thread : threadsOfTheProcess()) {
        if (before.contains(thread))
            continue;
        ++count;
        while (blockedOf(thread) == unborn)
            std::this_thread::yield();
        EXPECT_EQ(blockedOf(thread), allButMistakes);
    }
    return count;
}

TEST(LibraryThreads, areAllStartedInOneWay)
{
    const auto device = std::make_shared<ScriptedDevice>();
    const std::string path = sim::plug(device);
    {
        usbHid channel(path);
        ASSERT_TRUE(channel.open(usbHid::Mode::blocking));
        auto before = threadsOfTheProcess();
        EXPECT_EQ(channel.writeWatched(std::array<std::uint8_t, 3>{0, 0x41, 0x80}), E_OK);
        EXPECT_EQ(newThreads(before), 1);
        before = threadsOfTheProcess();
        ReaderThread reader(channel, {});
        EXPECT_TRUE(reader.start([](const Reply&) {}));
        EXPECT_EQ(newThreads(before), 1);
        before = threadsOfTheProcess();
        const CmdQueue queue;
        EXPECT_EQ(newThreads(before), 1);
        before = threadsOfTheProcess();
        MessageThread messages;
        EXPECT_TRUE(messages.start([](const platform::ThreadMessage&) {}));
        EXPECT_EQ(newThreads(before), 1);
        before = threadsOfTheProcess();
        PollingThread polling(1h, Clock::steady(), [] {});
        EXPECT_EQ(newThreads(before), 1);
    }
    sim::unplug(path);
}

TEST(LibraryThreads, thatAskForHardwareLeaveSignalsAloneToo)
{
    std::mutex mutex;
    std::multiset<std::uint64_t> masks;
    SysHardwareNames names;
    EXPECT_EQ(collectHardwareNames(
                  [&](platform::Hardware) {
                      const std::lock_guard lock(mutex);
                      masks.insert(blockedOf(static_cast<int>(platform::currentThreadId())));
                      return platform::HardwareFacts{};
                  },
                  names),
              E_OK);
    EXPECT_EQ(masks.count(allButMistakes), 4U);
}

/// The process can open no further file.
class NoDescriptors {
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit before{};
};

TEST(WithoutDescriptors, messagesStillArrive)
{
    const NoDescriptors none;
    platform::ThreadQueue queue;
    EXPECT_TRUE(platform::postThreadMessage(platform::currentThreadId(), {1035, 7, 8}));
    const auto message = queue.wait(10s);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->number, 1035U);
    EXPECT_EQ(message->second, 8U);
    EXPECT_FALSE(queue.take());
}

TEST(WithoutDescriptors, sysInfoComesAndGoes)
{
    // Left alone when it hangs, with all that it uses.
    auto* const gone = new std::promise<bool>;
    std::future<bool> done = gone->get_future();
    const NoDescriptors none;
    std::thread([gone] {
        auto* const manager = new PYRUX_SERVICE;
        auto* const object = new SYS_INFO({.services = *manager, .limits = {10s, 10s}});
        std::int32_t cores = 0;
        EXPECT_EQ(object->getSysCore(&cores, &cores), E_INVALID_GET);
        object->destroy(1);
        delete manager;
        gone->set_value(true);
    }).detach();
    ASSERT_EQ(done.wait_for(20s), std::future_status::ready);
    EXPECT_TRUE(done.get());
    delete gone;
}

TEST(ThreadQueues, showTheirMessagesToAPollingLoop)
{
    platform::ThreadQueue queue(platform::ThreadQueue::Descriptor::yes);
    EXPECT_GE(queue.descriptor(), 0);
    EXPECT_FALSE(queue.take());
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(platform::postThreadMessage(platform::currentThreadId(), {1035}));
    pollfd ready{queue.descriptor(), POLLIN, 0};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(poll(&ready, 1, 0), 1);
        EXPECT_TRUE(queue.take());
    }
    EXPECT_EQ(poll(&ready, 1, 0), 0);
    EXPECT_EQ(platform::ThreadQueue().descriptor(), -1);
}

TEST(ThreadQueues, showAReplacedMessageOnce)
{
    platform::ThreadQueue queue(platform::ThreadQueue::Descriptor::yes);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(platform::postThreadMessage(platform::currentThreadId(), {1035}, platform::Post::newest));
    pollfd ready{queue.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 0), 1);
    EXPECT_TRUE(queue.take());
    EXPECT_EQ(poll(&ready, 1, 0), 0);
}

TEST(ThreadQueues, loseWhatMayBeLostWhenTheyAreFull)
{
    platform::ThreadQueue queue;
    const platform::ThreadId own = platform::currentThreadId();
    for (int i = 0; i < 64; ++i)
        EXPECT_TRUE(platform::postThreadMessage(own, {1038}, platform::Post::ifRoom));
    EXPECT_FALSE(platform::postThreadMessage(own, {1038}, platform::Post::ifRoom));
    EXPECT_TRUE(platform::postThreadMessage(own, {1031}));
    EXPECT_TRUE(queue.take());
    EXPECT_FALSE(platform::postThreadMessage(own, {1038}, platform::Post::ifRoom)) << "64 are left";
    EXPECT_TRUE(queue.take());
    EXPECT_TRUE(platform::postThreadMessage(own, {1038}, platform::Post::ifRoom));
}

} // namespace
} // namespace pyrux::test
