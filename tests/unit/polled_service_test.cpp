// The thread of a polled service: its period, its end, and subscribers that go away at any moment.

#include "services/polled_service.h"

#include "tests/support/fake_clock.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <future>
#include <mutex>
#include <random>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using platform::ThreadMessages;

using CpuService = PolledService<MSG_CPU_USAGE>;
using RecordService = PolledService<MSG_SYSTEM_INFO>;

} // namespace

TEST(PolledService, samplesAtOnceAndThenEachPeriod)
{
    FakeClock clock;
    std::atomic<int> taken = 0;
    const CpuService service("test", 250ms, clock, [&] { return ++taken; });
    EXPECT_EQ(clock.settle(), 250u);
    EXPECT_EQ(taken, 1);
    clock.advance(249);
    EXPECT_EQ(clock.settle(), 1u);
    EXPECT_EQ(taken, 1);
    clock.advance(1);
    EXPECT_EQ(clock.settle(), 250u);
    EXPECT_EQ(taken, 2);
}

TEST(PolledService, tellsEachSampleToItsSubscribers)
{
    FakeClock clock;
    const auto messages = ThreadMessages::open();
    std::atomic<int> next = 41;
    CpuService service("test", 100ms, clock, [&] { return next++; });
    EXPECT_EQ(clock.settle(), 100u);
    EXPECT_FALSE(messages->wait(0ms)); // the first sample had no subscriber yet
    const Subscription subscription = service.subscribe(platform::currentThreadId());
    clock.advance(100);
    const auto message = messages->wait(10s);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->number, 1035u);
    EXPECT_EQ(payloadOf<MSG_CPU_USAGE>(*message), 42);
    EXPECT_EQ(clock.settle(), 100u);
    EXPECT_FALSE(messages->wait(0ms));
}

TEST(PolledService, tellsNothingWithoutASample)
{
    FakeClock clock;
    const auto messages = ThreadMessages::open();
    std::atomic<bool> some = false;
    CpuService service("test", 100ms, clock, [&] { return some ? std::optional(7) : std::optional<int>(); });
    EXPECT_EQ(clock.settle(), 100u);
    const Subscription subscription = service.subscribe(platform::currentThreadId());
    clock.advance(100);
    EXPECT_EQ(clock.settle(), 100u);
    EXPECT_FALSE(messages->wait(0ms));
    some = true;
    clock.advance(100);
    ASSERT_TRUE(messages->wait(10s));
}

TEST(PolledService, endsAtOnceWhileItSleeps)
{
    EXPECT_LT(milliseconds([] {
                  CpuService service("test", std::chrono::hours(1), Clock::steady(), [] { return 1; });
              }),
              900);
    FakeClock clock;
    {
        CpuService service("test", 250ms, clock, [] { return 1; });
        EXPECT_EQ(clock.settle(), 250u);
    }
}

TEST(PolledService, givesASampleThatHangsOneSecond)
{
    struct Gate {
        std::mutex mutex;
        std::condition_variable changed;
        bool entered = false;
        bool open = false;
        std::promise<void> left;
    };
    const auto gate = std::make_shared<Gate>();
    auto service =
        std::make_unique<CpuService>("test", 100ms, Clock::steady(), [gate]() -> std::optional<int> {
            std::unique_lock lock(gate->mutex);
            gate->entered = true;
            gate->changed.notify_all();
            gate->changed.wait(lock, [&] { return gate->open; });
            return 5;
        });
    const auto messages = ThreadMessages::open();
    Subscription subscription = service->subscribe(platform::currentThreadId());
    {
        std::unique_lock lock(gate->mutex);
        gate->changed.wait(lock, [&] { return gate->entered; });
    }
    const auto time = milliseconds([&] { EXPECT_EQ(service.release()->release(), 0); });
    EXPECT_GE(time, 990);
    EXPECT_LT(time, 9000);
    // The thread ends by itself, with all that it needs, behind the service's back.
    {
        const std::lock_guard lock(gate->mutex);
        gate->open = true;
    }
    gate->changed.notify_all();
    const auto message = messages->wait(10s);
    ASSERT_TRUE(message);
    EXPECT_EQ(payloadOf<MSG_CPU_USAGE>(*message), 5);
}

namespace {

/// PYRUX_SHUTDOWN_ROUNDS sets how often services are shut down, for long runs.
int shutdownRounds()
{
    const char* rounds = std::getenv("PYRUX_SHUTDOWN_ROUNDS");
    return rounds ? std::atoi(rounds) : 1000;
}

/// All cells of a record as one number; no value when they differ, so that it is half written.
std::optional<std::int32_t> wholeRecord(const SysDetailRecord& record)
{
    std::array<std::int32_t, 20> cells;
    std::memcpy(cells.data(), &record, sizeof cells);
    for (const std::int32_t cell : cells)
        if (cell != cells[0])
            return {};
    return cells[0];
}

SysDetailRecord recordOf(std::int32_t number)
{
    std::array<std::int32_t, 20> cells;
    cells.fill(number);
    SysDetailRecord record;
    std::memcpy(&record, cells.data(), sizeof cells);
    return record;
}

/// A device's thread: takes some samples, each of which must be whole and no older than the one before.
void receive(ThreadMessages& messages, int count)
{
    std::int32_t last = 0;
    for (int i = 0; i < count; ++i) {
        const auto message = messages.wait(2ms);
        if (!message || message->number == MSG_QUIT_THREAD)
            return;
        const auto number = wholeRecord(payloadOf<MSG_SYSTEM_INFO>(*message));
        ASSERT_TRUE(number) << "half written";
        ASSERT_GE(*number, last);
        last = *number;
    }
}

} // namespace

TEST(PolledService, canBeShutDownWithSubscribersGoingAwayAtAnyMoment)
{
    std::minstd_rand random(20);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int round = 0; round < shutdownRounds(); ++round) {
        std::int32_t number = 0;
        auto service = std::make_unique<RecordService>("test", 0ms, Clock::steady(),
                                                       [&number] { return recordOf(++number); });
        std::mutex mutex; // of the service's life, as the manager's lock
        std::array<Subscription, 3> left;
        std::array<std::thread, 3> devices;
        for (std::size_t i = 0; i < devices.size(); ++i)
            devices[i] = std::thread([&, i, samples = below(4), waits = below(200), way = below(3)] {
                auto messages = ThreadMessages::open();
                Subscription subscription;
                {
                    const std::lock_guard lock(mutex);
                    if (service)
                        subscription = service->subscribe(platform::currentThreadId());
                }
                if (subscription)
                    receive(*messages, samples);
                std::this_thread::sleep_for(std::chrono::microseconds(waits));
                // In good order; or the queue goes first; or the thread goes and leaves its place behind.
                if (way == 0)
                    subscription.end();
                else if (way == 1)
                    messages.reset();
                else
                    left[i] = std::move(subscription);
            });
        std::this_thread::sleep_for(std::chrono::microseconds(below(300)));
        {
            std::unique_ptr<RecordService> going;
            {
                const std::lock_guard lock(mutex);
                going = std::move(service);
            }
            EXPECT_EQ(going.release()->release(), 0);
        }
        for (std::thread& device : devices)
            device.join();
        if (HasFailure())
            return;
    }
}
