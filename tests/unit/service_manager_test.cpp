// Services by name, and how threads subscribe to them.

#include "services/service_manager.h"

#include "services/polled_service.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using platform::ThreadId;
using platform::ThreadMessage;
using platform::ThreadMessages;

constexpr const char* names[]{"audio", "temp", "cmedia", "peakmeter", "cpuusage", "amplitude", "systeminfo"};

std::string nameOf(SERVICE_PROBE& probe)
{
    std::string name = "before";
    EXPECT_EQ(probe.serviceName(name), 0);
    return name;
}

/// The thread of the test as a subscriber.
class Receiver {
public:
    ThreadId id() const { return platform::currentThreadId(); }

    std::vector<std::uint32_t> takeNumbers()
    {
        std::vector<std::uint32_t> numbers;
        while (const auto message = messages->wait(0ms))
            numbers.push_back(message->number);
        return numbers;
    }

    ThreadMessage next() { return messages->wait(10s).value_or(ThreadMessage{}); }

private:
    std::unique_ptr<ThreadMessages> messages = ThreadMessages::open();
};

using Numbers = std::vector<std::uint32_t>;

} // namespace

TEST(ServiceManager, makesEachServiceOnceAndFindsItByName)
{
    const OwnPipes pipes;
    PYRUX_SERVICE manager({Clock::steady(), {200ms, 200ms}});
    std::array<SERVICE_PROBE*, std::size(names)> probes{};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(manager.findService(probes[i], names[i]), -3);
        EXPECT_EQ(probes[i], nullptr);
        EXPECT_EQ(manager.createService(names[i]), 0);
        EXPECT_EQ(manager.findService(probes[i], names[i]), 0);
        ASSERT_NE(probes[i], nullptr);
        EXPECT_EQ(nameOf(*probes[i]), names[i]);
    }
    for (std::size_t i = 0; i < std::size(names); ++i) {
        SERVICE_PROBE* again = nullptr;
        EXPECT_EQ(manager.createService(names[i]), 0);
        EXPECT_EQ(manager.findService(again, names[i]), 0);
        EXPECT_EQ(again, probes[i]) << names[i];
        EXPECT_EQ(std::ranges::count(probes, again), 1);
    }
}

TEST(ServiceManager, knowsNoOtherNames)
{
    PYRUX_SERVICE manager;
    auto* const before = reinterpret_cast<SERVICE_PROBE*>(&manager);
    for (const char* name : {"", "Audio", "audio ", "audi", "audioo", "temperature", "SERVICE_TEMP"}) {
        SERVICE_PROBE* out = before;
        EXPECT_EQ(manager.createService(name), -2) << name;
        EXPECT_EQ(manager.findService(out, name), -3) << name;
        EXPECT_EQ(out, before);
        EXPECT_FALSE(manager.subscribe(name, platform::currentThreadId())) << name;
    }
}

TEST(ServiceManager, subscribingMakesTheService)
{
    PYRUX_SERVICE manager;
    SERVICE_PROBE* probe = nullptr;
    EXPECT_EQ(manager.findService(probe, "audio"), -3);
    const Subscription first = manager.subscribe("audio", platform::currentThreadId());
    EXPECT_TRUE(first);
    ASSERT_EQ(manager.findService(probe, "audio"), 0);
    const Subscription second = manager.subscribe("audio", platform::currentThreadId());
    SERVICE_PROBE* again = nullptr;
    EXPECT_EQ(manager.findService(again, "audio"), 0);
    EXPECT_EQ(again, probe);
}

TEST(ServiceManager, releasesAllAndCanMakeThemAnew)
{
    const OwnPipes pipes;
    PYRUX_SERVICE manager({Clock::steady(), {200ms, 200ms}});
    for (const char* name : names)
        EXPECT_EQ(manager.createService(name), 0);
    manager.releaseAll();
    SERVICE_PROBE* probe = nullptr;
    for (const char* name : names)
        EXPECT_EQ(manager.findService(probe, name), -3);
    EXPECT_EQ(manager.createService("audio"), 0);
    EXPECT_EQ(manager.findService(probe, "audio"), 0);
    manager.releaseAll();
    manager.releaseAll();
}

TEST(ServiceManager, makesOneServiceForThreadsThatAskAtOnce)
{
    for (int round = 0; round < 50; ++round) {
        PYRUX_SERVICE manager;
        std::array<std::future<SERVICE_PROBE*>, 4> asked;
        for (auto& each : asked)
            each = std::async(std::launch::async, [&] {
                SERVICE_PROBE* probe = nullptr;
                const Subscription subscription = manager.subscribe("amplitude", platform::currentThreadId());
                manager.findService(probe, "amplitude");
                return probe;
            });
        SERVICE_PROBE* const first = asked[0].get();
        EXPECT_NE(first, nullptr);
        for (std::size_t i = 1; i < asked.size(); ++i)
            EXPECT_EQ(asked[i].get(), first);
    }
}

TEST(Subscribers, areToldInTheOrderOfTheMessages)
{
    Receiver receiver;
    Subscribers subscribers;
    subscribers.add(receiver.id());
    subscribers.post({1029, 3, 81});
    subscribers.post({1033, 4, 5});
    const ThreadMessage first = receiver.next();
    EXPECT_EQ(first.number, 1029u);
    EXPECT_EQ(first.first, 3u);
    EXPECT_EQ(first.second, 81u);
    EXPECT_EQ(receiver.next().number, 1033u);
    EXPECT_EQ(receiver.takeNumbers(), Numbers{});
}

TEST(Subscribers, areNotCheckedForDuplicates)
{
    Receiver receiver;
    Subscribers subscribers;
    subscribers.add(receiver.id());
    subscribers.add(receiver.id());
    subscribers.post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033, 1033}));
    subscribers.remove(receiver.id());
    subscribers.post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033}));
    subscribers.remove(receiver.id());
    subscribers.remove(receiver.id());
    subscribers.post({1033});
    EXPECT_EQ(receiver.takeNumbers(), Numbers{});
}

TEST(Subscribers, doesNotFloodAThreadThatTakesNothing)
{
    Receiver receiver;
    Subscribers subscribers;
    subscribers.add(receiver.id());
    for (int i = 0; i < 20'000; ++i) {
        subscribers.post({1035});
        subscribers.post({1036});
    }
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1035, 1036}));
}

TEST(Subscribers, losesWhatEndedThreadsAreTold)
{
    Receiver receiver;
    Subscribers subscribers;
    std::thread([&] {
        const auto queue = ThreadMessages::open();
        subscribers.add(platform::currentThreadId());
    }).join();
    subscribers.add(receiver.id());
    subscribers.post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033}));
}

TEST(Subscription, endsOnce)
{
    Receiver receiver;
    const auto subscribers = std::make_shared<Subscribers>();
    Subscription first(subscribers, receiver.id());
    const Subscription second(subscribers, receiver.id());
    first.end();
    first.end(); // not the second's place
    subscribers->post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033}));
}

TEST(Subscription, movesWithItsPlace)
{
    Receiver receiver;
    const auto subscribers = std::make_shared<Subscribers>();
    Subscription kept;
    EXPECT_FALSE(kept);
    {
        Subscription made(subscribers, receiver.id());
        kept = std::move(made);
    }
    EXPECT_TRUE(kept);
    subscribers->post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033}));
    kept = Subscription();
    subscribers->post({1033});
    EXPECT_EQ(receiver.takeNumbers(), Numbers{});
}

TEST(Subscription, keepsTheBlocksOfAServiceThatHasGone)
{
    Receiver receiver;
    auto outlet = std::make_shared<Outlet<MSG_AMPLITUDE>>();
    Subscription subscription(outlet, receiver.id());
    outlet->post({1.0F, 2.0F});
    outlet.reset();
    EXPECT_EQ(payloadOf<MSG_AMPLITUDE>(receiver.next()), (std::vector<float>{1.0F, 2.0F}));
    subscription.end();
}

TEST(Outlet, aLateReaderGetsTheNewestSampleUnderAnOlderMessage)
{
    Receiver receiver;
    const auto outlet = std::make_shared<Outlet<MSG_TEMPERATURE>>();
    const Subscription subscription(outlet, receiver.id());
    outlet->post({40, 50});
    outlet->post({41, 51});
    const ThreadMessage first = receiver.next();
    EXPECT_EQ(first.number, 1032u);
    EXPECT_EQ(first.second, 0u);
    EXPECT_EQ(payloadOf<MSG_TEMPERATURE>(first).cpu, 41);
    EXPECT_EQ(payloadOf<MSG_TEMPERATURE>(first).gpu, 51);
    EXPECT_EQ(receiver.takeNumbers(), Numbers{}); // the second one has taken its place
    outlet->post({42, 52});
    EXPECT_EQ(receiver.next().first, first.first); // one block for all messages
    EXPECT_EQ(payloadOf<MSG_TEMPERATURE>(first).cpu, 42);
}

TEST(RemoveSubscriber, takesAThreadFromItsService)
{
    class Told final : public Service {
    public:
        explicit Told(const std::shared_ptr<Subscribers>& list) : Service("told", list) {}
    };
    Receiver receiver;
    const auto subscribers = std::make_shared<Subscribers>();
    Told service(subscribers);
    const Subscription subscription = service.subscribe(receiver.id());
    EXPECT_EQ(service.removeSubscriber(0x7FFFFFFF), 0);
    subscribers->post({1033});
    EXPECT_EQ(service.removeSubscriber(receiver.id()), 0);
    subscribers->post({1033});
    EXPECT_EQ(receiver.takeNumbers(), (Numbers{1033}));
}

TEST(ServiceMessages, haveTheirNumbers)
{
    EXPECT_EQ(MSG_RENDER_VOLUME, 1025u);
    EXPECT_EQ(MSG_CAPTURE_VOLUME, 1026u);
    EXPECT_EQ(MSG_HOOK_EVENT, 1029u);
    EXPECT_EQ(MSG_QUIT_THREAD, 1031u);
    EXPECT_EQ(MSG_TEMPERATURE, 1032u);
    EXPECT_EQ(MSG_AUDIO_DEVICE_CHANGED, 1033u);
    EXPECT_EQ(MSG_AUDIO_DEVICE_STATE, 1034u);
    EXPECT_EQ(MSG_CPU_USAGE, 1035u);
    EXPECT_EQ(MSG_AMPLITUDE, 1036u);
    EXPECT_EQ(MSG_SYSTEM_INFO, 1037u);
}
