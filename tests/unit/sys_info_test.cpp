// The object that reports on the host computer, with a computer that tests make up.

#include "services/sys_info.h"

#include "tests/fakes/system_fakes.h"
#include "tests/support/debug_log.h"
#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;

constexpr const char* fifteen = "0.5;1;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14";

/// Time that passes a hundred times faster for whoever sleeps.
class HastyClock final : public Clock {
public:
    std::uint32_t now() override { return 0; }
    void sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::milliseconds time, const std::function<bool()>& cut) override
    {
        changed.wait_for(lock, time / 100, cut);
    }
    void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
              const std::function<bool()>& until) override
    {
        changed.wait(lock, until);
    }
};

/// What callbacks bring, for the test's thread to wait for.
template <class Value>
class Mailbox {
public:
    void put(const Value& value)
    {
        const std::lock_guard lock(mutex);
        values.push_back(value);
        threads.push_back(std::this_thread::get_id());
        changed.notify_all();
    }

    /// The next one that fits; those before it are dropped. No value: it did not come in time.
    std::optional<Value> next(const std::function<bool(const Value&)>& fits = [](const Value&) {
        return true;
    })
    {
        std::unique_lock lock(mutex);
        for (;;) {
            if (!changed.wait_for(lock, 10s, [&] { return !values.empty(); }))
                return {};
            const Value value = values.front();
            values.pop_front();
            thread = threads.front();
            threads.pop_front();
            if (fits(value))
                return value;
        }
    }

    void clear()
    {
        const std::lock_guard lock(mutex);
        values.clear();
        threads.clear();
    }

    bool empty()
    {
        const std::lock_guard lock(mutex);
        return values.empty();
    }

    std::thread::id thread; ///< Where the last one came from.

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Value> values;
    std::deque<std::thread::id> threads;
};

// Callbacks are plain functions.
Mailbox<SysStatusRecord> statuses;
Mailbox<SysDetailRecord> details;
Mailbox<std::int32_t> languages;

void takeStatus(SysStatusRecord status)
{
    statuses.put(status);
}

void takeDetails(SysDetailRecord record)
{
    details.put(record);
}

void takeLanguage(std::int32_t language)
{
    languages.put(language);
}

struct Destroy {
    void operator()(SYS_INFO_Base* object) const { EXPECT_EQ(object->destroy(1), object); }
};

class SysInfo : public testing::Test {
protected:
    SysInfo()
    {
        statuses.clear();
        details.clear();
        languages.clear();
        freshSystemFakes();
    }

    ~SysInfo() override
    {
        object.reset();
        manager.releaseAll();
    }

    /// Makes the object, where the resident service says these things.
    void make(std::map<std::string, std::string> says)
    {
        if (!says.empty()) {
            replies = std::move(says);
            peer.emplace("twldservicepipe", [this](PipePeer::Client& client) {
                const std::string request = client.receive();
                if (request.empty())
                    return;
                {
                    const std::lock_guard lock(mutex);
                    client.send(replies[request]);
                }
                client.receive(); // until it goes
            });
        }
        object.reset(new SYS_INFO(sources()));
    }

    void say(const std::string& request, const std::string& reply)
    {
        const std::lock_guard lock(mutex);
        replies[request] = reply;
    }

    SystemSources sources()
    {
        return {.services = manager,
                .limits = {10s, 10s},
                .cpuLoad = cpuLoad,
                .cpuTimes =
                    [this] {
                        ticks += 100;
                        return platform::CpuTimes{.total = ticks, .idle = ticks / 4}; // 75 %
                    },
                .memoryLoad = [] { return 62u; },
                .gpuLoad = [this] { return ++gpuCalls, 37u; },
                .hardware =
                    [](platform::Hardware) {
                        return platform::HardwareFacts{.texts = {"A", "B", "C"}};
                    },
                .windowThread = [](void*) { return 4711u; },
                .keyboardLanguage =
                    [this](platform::ThreadId thread) {
                        askedThread = thread;
                        return std::uint16_t(primaryLanguage);
                    }};
    }

    std::int32_t languageOf(int primary)
    {
        primaryLanguage = primary;
        std::int32_t language = -1;
        EXPECT_EQ(object->getKeyboardLanguage(&language), 0);
        return language;
    }

    void setWindow()
    {
        testing::internal::CaptureStdout();
        EXPECT_EQ(object->setHookWindow(&window), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "hook_pid set = 4711\n");
    }

    OwnPipes pipes;
    std::mutex mutex;
    std::map<std::string, std::string> replies;
    std::optional<PipePeer> peer;
    HastyClock clock;
    CpuLoad cpuLoad;
    PYRUX_SERVICE manager{{clock, {10s, 10s}}};
    std::atomic<std::uint64_t> ticks = 0;
    std::atomic<int> gpuCalls = 0;
    std::atomic<int> primaryLanguage = 0;
    std::atomic<platform::ThreadId> askedThread = 0;
    int window = 0;
    std::unique_ptr<SYS_INFO_Base, Destroy> object;
};

} // namespace

TEST_F(SysInfo, tellsLoadsWithTheTemperatures)
{
    make({{"temp", "45;60"}, {"getcorenum", "8;16"}});
    EXPECT_EQ(object->registerStatusNotify(takeStatus), 0);
    const auto status = statuses.next();
    ASSERT_TRUE(status);
    EXPECT_EQ(status->cpuTemp, 45);
    EXPECT_EQ(status->gpuTemp, 60);
    EXPECT_EQ(status->ramUsage, 62);
    EXPECT_EQ(status->cpuUsage, 75);
    EXPECT_EQ(status->gpuUsage, 37);
    EXPECT_NE(statuses.thread, std::this_thread::get_id());
    say("temp", "50;-3");
    EXPECT_TRUE(statuses.next([](const auto& one) { return one.cpuTemp == 50 && one.gpuTemp == -3; }));
}

TEST_F(SysInfo, tellsNothingOfACardWithoutCores)
{
    for (const char* cores : {"0;16", "8", "x;y"}) {
        statuses.clear();
        gpuCalls = 0;
        make({{"temp", "45;60"}, {"getcorenum", cores}});
        object->registerStatusNotify(takeStatus);
        const auto status = statuses.next();
        ASSERT_TRUE(status);
        EXPECT_EQ(status->cpuTemp, 45);
        EXPECT_EQ(status->gpuTemp, 0);
        EXPECT_EQ(status->gpuUsage, 0);
        EXPECT_EQ(status->cpuUsage, 75);
        EXPECT_EQ(gpuCalls, 0);
        // The temperature is kept all the same; it is stored after the first call.
        ASSERT_TRUE(statuses.next());
        std::int32_t cpu = 0;
        std::int32_t gpu = 0;
        EXPECT_EQ(object->getSysTemp(&cpu, &gpu), 0);
        EXPECT_EQ(cpu, 45);
        EXPECT_EQ(gpu, 60);
        object.reset();
        manager.releaseAll();
        peer.reset();
    }
}

TEST_F(SysInfo, givesStoredTemperaturesWithinTheirRange)
{
    make({{"temp", "100;0"}, {"getcorenum", "8;16"}});
    object->registerStatusNotify(takeStatus);
    const auto stored = [&](const char* reply, std::int32_t cpuTemp) {
        say("temp", reply);
        const auto fits = [&](const SysStatusRecord& one) { return one.cpuTemp == cpuTemp; };
        EXPECT_TRUE(statuses.next(fits));
        EXPECT_TRUE(statuses.next(fits)); // the first one is stored by now
        std::pair<std::int32_t, std::int32_t> out{-1, -1};
        EXPECT_EQ(object->getSysTemp(&out.first, &out.second), 0);
        return out;
    };
    using Pair = std::pair<std::int32_t, std::int32_t>;
    EXPECT_EQ(stored("100;0", 100), Pair(100, 0));
    EXPECT_EQ(stored("101;50", 101), Pair(0, 50));
    EXPECT_EQ(stored("-1;101", -1), Pair(0, 0));
    EXPECT_EQ(stored("1;-1", 1), Pair(1, 0));
    EXPECT_EQ(stored("0;100", 0), Pair(0, 100));
}

TEST_F(SysInfo, startsWithTemperaturesOfZero)
{
    make({});
    std::int32_t cpu = -1;
    std::int32_t gpu = -1;
    EXPECT_EQ(object->getSysTemp(&cpu, &gpu), 0);
    EXPECT_EQ(cpu, 0);
    EXPECT_EQ(gpu, 0);
}

TEST_F(SysInfo, asksForTheCoresOnce)
{
    make({{"temp", "45;60"}, {"getcorenum", "8;16"}});
    object->registerStatusNotify(takeStatus);
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(statuses.next());
    EXPECT_EQ(std::ranges::count(peer->requests(), "getcorenum"), 1);
    std::int32_t first = 0;
    std::int32_t second = 0;
    EXPECT_EQ(object->getSysCore(&first, &second), 0);
    EXPECT_EQ(first, 8);
    EXPECT_EQ(second, 16);
    EXPECT_EQ(std::ranges::count(peer->requests(), "getcorenum"), 2);
}

TEST_F(SysInfo, getSysCoreDoesAsTheExport)
{
    make({});
    std::int32_t first = 5;
    std::int32_t second = 6;
    EXPECT_EQ(std::ranges::count(debugLinesOf([&] { EXPECT_EQ(object->getSysCore(&first, &second), -3); }),
                                 "[PYRUX][SYS]PYRUX::getSysCore, #"),
              1);
    EXPECT_EQ(first, 5);
    EXPECT_EQ(second, 6);
}

TEST_F(SysInfo, tellsTheDetails)
{
    make({{"getsysinfo", fifteen}});
    EXPECT_EQ(object->registerInfoNotify(takeDetails), 0);
    const auto record = details.next([](const auto& one) { return one.field14 == 14; });
    ASSERT_TRUE(record);
    EXPECT_EQ(record->field0, 0.5F);
    EXPECT_EQ(record->field13, 13);
    EXPECT_NE(details.thread, std::this_thread::get_id());
}

TEST_F(SysInfo, tellsEmptyDetailsWithoutTheResidentService)
{
    make({});
    object->registerInfoNotify(takeDetails);
    const auto record = details.next();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->field14, 0);
    EXPECT_EQ(record->field0, 0.0F);
}

TEST_F(SysInfo, callsNobodyBehindAnUnregistration)
{
    make({{"temp", "45;60"}, {"getsysinfo", fifteen}});
    object->registerStatusNotify(takeStatus);
    object->registerInfoNotify(takeDetails);
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(details.next());
    EXPECT_EQ(object->unRegisterStatusNotify(), 0);
    statuses.clear();
    EXPECT_TRUE(details.next());
    EXPECT_TRUE(details.next());
    EXPECT_TRUE(details.next());
    EXPECT_TRUE(statuses.empty());
    object->registerStatusNotify(takeStatus);
    EXPECT_EQ(object->unRegisterInfoNotify(), 0);
    details.clear();
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(details.empty());
    object->registerStatusNotify(nullptr);
}

TEST_F(SysInfo, hostsCanCallTheCallbacks)
{
    make({});
    EXPECT_EQ(object->callStatusNotify({1, 2, 3, 4, 5}), 0);
    EXPECT_EQ(object->callInfoNotify({}), 0);
    object->registerStatusNotify(takeStatus);
    EXPECT_EQ(object->callStatusNotify({1, 2, 3, 4, 5}), 0);
    const auto status = statuses.next();
    ASSERT_TRUE(status);
    EXPECT_EQ(status->cpuTemp, 1);
    EXPECT_EQ(status->gpuTemp, 2);
    EXPECT_EQ(status->ramUsage, 3);
    EXPECT_EQ(status->cpuUsage, 4);
    EXPECT_EQ(status->gpuUsage, 5);
    EXPECT_EQ(statuses.thread, std::this_thread::get_id());
    object->registerInfoNotify(takeDetails);
    SysDetailRecord record{};
    record.field6 = 66;
    EXPECT_EQ(object->callInfoNotify(record), 0);
    EXPECT_TRUE(details.next([](const auto& one) { return one.field6 == 66; }));
    EXPECT_EQ(details.thread, std::this_thread::get_id());
}

TEST_F(SysInfo, tellsTheLoads)
{
    make({});
    std::int32_t value = -1;
    EXPECT_EQ(object->getCpuUsage(&value), 0);
    EXPECT_EQ(value, 75);
    EXPECT_EQ(object->getGpuUsage(&value), 0);
    EXPECT_EQ(value, 37);
    EXPECT_EQ(object->getRamUsage(&value), 0);
    EXPECT_EQ(value, 62);
}

TEST_F(SysInfo, tellsTheHardwareNames)
{
    make({});
    SysHardwareNames names;
    EXPECT_EQ(object->getHardwareNames(&names), 0);
    EXPECT_EQ(names.cpuName, "A");
    EXPECT_EQ(names.boardProduct, "B");
}

TEST_F(SysInfo, hasNoLanguageWithoutAWindow)
{
    make({});
    std::int32_t language = 77;
    EXPECT_EQ(object->getKeyboardLanguage(&language), -3);
    EXPECT_EQ(language, 77);
    setWindow();
    EXPECT_EQ(object->getKeyboardLanguage(&language), 0);
    EXPECT_EQ(askedThread, 4711u);
}

TEST_F(SysInfo, codesTheLanguages)
{
    make({});
    setWindow();
    constexpr int primary[]{9, 4, 12, 7, 16, 17, 18, 62, 22, 25, 10, 30, 31, 42};
    for (std::int32_t code = 0; code < 14; ++code)
        EXPECT_EQ(languageOf(primary[code]), code);
    int others = 0;
    for (int id = 0; id < 0x400; ++id)
        others += languageOf(id) == 14;
    EXPECT_EQ(others, 0x400 - 14);
    EXPECT_EQ(languageOf(0), 14);
    EXPECT_EQ(languageOf(19), 14);
}

TEST_F(SysInfo, installsTheHookForItsThread)
{
    make({});
    setWindow();
    const SystemFakes& fakes = *systemFakes();
    EXPECT_EQ(fakes.hookCalls, 1);
    EXPECT_EQ(fakes.hookWindow, &window);
    EXPECT_EQ(fakes.hookKind, 4);
    object->registerLanguageNotify(takeLanguage);
    primaryLanguage = 7;
    EXPECT_TRUE(platform::postThreadMessage(fakes.hookThread, {1029, 0, 81}));
    EXPECT_EQ(languages.next(), 3);
    EXPECT_NE(languages.thread, std::this_thread::get_id());
}

TEST_F(SysInfo, standsWithoutAHookLibrary)
{
    SystemSources with = sources();
    with.hookLibrary = "pyrux-no-such-library";
    object.reset(new SYS_INFO(with));
    setWindow();
    EXPECT_EQ(systemFakes()->hookCalls, 0);
    EXPECT_EQ(languageOf(9), 0);
}

TEST_F(SysInfo, takesOnlyTheLanguageFromTheHook)
{
    make({});
    setWindow();
    const platform::ThreadId thread = systemFakes()->hookThread;
    primaryLanguage = 12;
    object->registerLanguageNotify(takeLanguage);
    // Neither other window messages nor other numbers say anything.
    for (const std::uint32_t number : {1024u, 1025u, 1028u, 1030u, 1033u, 1034u, 1035u, 1036u, 1038u, 81u})
        EXPECT_TRUE(platform::postThreadMessage(thread, {number, 0, 81}));
    for (const std::uintptr_t windowMessage : {0, 80, 82, 0x100})
        EXPECT_TRUE(platform::postThreadMessage(thread, {1029, 81, windowMessage}));
    EXPECT_TRUE(platform::postThreadMessage(thread, {1029, 0, 81}));
    EXPECT_EQ(languages.next(), 2);
    EXPECT_TRUE(languages.empty());
    EXPECT_EQ(object->unRegisterLanguageNotify(), 0);
    primaryLanguage = 9;
    EXPECT_TRUE(platform::postThreadMessage(thread, {1029, 0, 81}));
    object.reset(); // after all messages
    EXPECT_TRUE(languages.empty());
}

TEST_F(SysInfo, refusesNullPointers)
{
    make({});
    std::int32_t value = 7;
    EXPECT_EQ(object->getHardwareNames(nullptr), -3);
    EXPECT_EQ(object->getSysTemp(nullptr, &value), -3);
    EXPECT_EQ(object->getSysTemp(&value, nullptr), -3);
    EXPECT_EQ(object->getSysCore(nullptr, &value), -3);
    EXPECT_EQ(object->getCpuUsage(nullptr), -3);
    EXPECT_EQ(object->getGpuUsage(nullptr), -3);
    EXPECT_EQ(object->getRamUsage(nullptr), -3);
    setWindow();
    EXPECT_EQ(object->getKeyboardLanguage(nullptr), -3);
    EXPECT_EQ(value, 7);
}

TEST_F(SysInfo, severalLiveSideBySide)
{
    make({{"temp", "45;60"}});
    std::unique_ptr<SYS_INFO_Base, Destroy> second(new SYS_INFO(sources()));
    EXPECT_NE(second.get(), object.get());
    second->registerStatusNotify(takeStatus);
    EXPECT_TRUE(statuses.next());
    object.reset();
    EXPECT_TRUE(statuses.next());
    EXPECT_TRUE(statuses.next());
}

TEST_F(SysInfo, canBeDestroyedInPlace)
{
    alignas(SYS_INFO) std::byte memory[sizeof(SYS_INFO)];
    auto* const made = new (memory) SYS_INFO(sources());
    EXPECT_EQ(made->destroy(0), static_cast<void*>(static_cast<SYS_INFO_Base*>(made)));
    SYS_INFO_Base* const freed = new SYS_INFO(sources());
    EXPECT_EQ(freed->destroy(3), freed);
}

TEST_F(SysInfo, outlivesTheServices)
{
    make({{"temp", "45;60"}});
    object->registerStatusNotify(takeStatus);
    EXPECT_TRUE(statuses.next());
    manager.releaseAll();
    std::int32_t cpu = 0;
    std::int32_t gpu = 0;
    EXPECT_EQ(object->getSysTemp(&cpu, &gpu), 0);
    object.reset();
}

TEST_F(SysInfo, endsWhileSamplesCome)
{
    make({{"temp", "45;60"}, {"getsysinfo", fifteen}, {"getcorenum", "8;16"}});
    for (int i = 0; i < 50; ++i) {
        object.reset(new SYS_INFO(sources()));
        object->registerStatusNotify(takeStatus);
        object->registerInfoNotify(takeDetails);
        if (i % 2) {
            EXPECT_TRUE(details.next());
        }
        object.reset();
        statuses.clear();
        details.clear();
    }
}
