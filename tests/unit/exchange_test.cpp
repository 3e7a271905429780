// Commands and their replies: matching, waiting, ending.

#include "transport/exchange.h"

#include "simulator/bus.h"
#include "tests/support/debug_capture.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace {

using namespace pyrux;
using namespace pyrux::test;
using namespace std::chrono_literals;

Reply reply(std::string_view text)
{
    return Reply(bytes(text));
}

/// A silent device: the tests deliver the replies themselves.
class Exchanges : public testing::Test {
protected:
    Exchanges()
    {
        device->silence("");
        EXPECT_TRUE(channel.open(usbHid::Mode::blocking));
    }
    ~Exchanges() override { sim::unplug(path); }

    struct Result {
        _error error;
        std::string reply; ///< The first six bytes.
        bool operator==(const Result&) const = default;
        friend void PrintTo(const Result& result, std::ostream* stream)
        {
            *stream << result.error << " " << result.reply;
        }
    };

    /// Starts a command on a thread of its own; returns when its report has been written.
    std::future<Result> start(Exchange& exchange, const Report& command, std::size_t matchLength)
    {
        const std::string head = hex(command.payload().first(8));
        const std::size_t before = device->commands(head);
        auto running = std::async(std::launch::async, [&exchange, command, matchLength] {
            Reply got(bytes("EE EE EE EE EE EE"));
            const _error error = exchange.transact(command, matchLength, got);
            return Result{error, hex(got.bytes().first(6))};
        });
        EXPECT_TRUE(device->awaitCommands(head, before + 1));
        return running;
    }

    std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
    const std::string path = sim::plug(device);
    usbHid channel{path};
};

constexpr Report getProfile{0x52, 0x00, 0x11, 0x22, 0x33};
constexpr Report getMacro{0x52, 0x18, 0x02};

TEST_F(Exchanges, giveTheWholeReply)
{
    Exchange exchange(channel, {});
    auto running = start(exchange, getProfile, 2);
    EXPECT_TRUE(exchange.deliver(reply("52 00 77 88 99 AA")));
    EXPECT_EQ(running.get(), (Result{E_OK, "52 00 77 88 99 AA"}));
    EXPECT_EQ(device->commands("52 00 11 22 33"), 1u);
}

TEST_F(Exchanges, matchAsManyBytesAsAsked)
{
    Exchange exchange(channel, {});
    for (std::size_t length = 1; length <= 5; ++length) {
        auto running = start(exchange, getProfile, length);
        constexpr const char* wrong[]{"51 00 11 22 33", "52 01 11 22 33", "52 00 12 22 33", "52 00 11 23 33",
                                      "52 00 11 22 34"};
        for (std::size_t i = 0; i < length; ++i)
            EXPECT_FALSE(exchange.deliver(reply(wrong[i]))) << length << " " << i;
        const std::string right = length < 5 ? wrong[length] : "52 00 11 22 33";
        EXPECT_TRUE(exchange.deliver(reply(right + " 55"))) << length;
        EXPECT_EQ(running.get(), (Result{E_OK, right + " 55"}));
    }
}

TEST_F(Exchanges, takeAPatternOfTheirOwn)
{
    Exchange exchange(channel, {});
    Reply got;
    const ByteVector pattern = bytes("80 14 03");
    auto running = std::async(std::launch::async, [&] {
        return exchange.transact(Report{0x80, 0x14, 0x01}, pattern, got);
    });
    EXPECT_TRUE(device->awaitCommands("80 14 01"));
    EXPECT_FALSE(exchange.deliver(reply("80 14 01")));
    EXPECT_TRUE(exchange.deliver(reply("80 14 03 09")));
    EXPECT_EQ(running.get(), E_OK);
    EXPECT_EQ(got[3], 9);
}

TEST_F(Exchanges, giveOneReplyToAllThatWaitForIt)
{
    Exchange exchange(channel, {});
    auto first = start(exchange, getProfile, 2);
    auto second = start(exchange, getProfile, 2);
    auto other = start(exchange, getMacro, 3);
    EXPECT_TRUE(exchange.deliver(reply("52 00 00 00 01")));
    EXPECT_EQ(first.get(), (Result{E_OK, "52 00 00 00 01 00"}));
    EXPECT_EQ(second.get(), (Result{E_OK, "52 00 00 00 01 00"}));
    EXPECT_TRUE(exchange.deliver(reply("52 18 02")));
    EXPECT_EQ(other.get(), (Result{E_OK, "52 18 02 00 00 00"}));
    EXPECT_FALSE(exchange.deliver(reply("52 18 02")));
}

TEST_F(Exchanges, keepTheirOwnReply)
{
    Exchange exchange(channel, {});
    for (int round = 0; round < 50; ++round) {
        auto profile = start(exchange, getProfile, 2);
        auto macro = start(exchange, getMacro, 3);
        EXPECT_TRUE(exchange.deliver(reply("52 18 02 00 01")));
        EXPECT_TRUE(exchange.deliver(reply("52 00 00 00 02")));
        EXPECT_EQ(macro.get(), (Result{E_OK, "52 18 02 00 01 00"}));
        EXPECT_EQ(profile.get(), (Result{E_OK, "52 00 00 00 02 00"}));
    }
}

TEST_F(Exchanges, endByTheirLimit)
{
    DebugCapture capture;
    Exchange exchange(channel, {.wait = 200ms, .timeoutText = "cannot receive", .logCategory = 26});
    const auto begin = std::chrono::steady_clock::now();
    auto running = start(exchange, getProfile, 2);
    EXPECT_FALSE(exchange.deliver(reply("52 01")));
    EXPECT_EQ(running.get(), (Result{E_INVALID_GET, "EE EE EE EE EE EE"}));
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(time, 199ms);
    EXPECT_LT(time, 1900ms);
    EXPECT_EQ(capture.texts(), (std::vector<std::string>{"[PYRUX][RD210]cannot receive"}));
    EXPECT_FALSE(exchange.deliver(reply("52 00"))); // nobody waits any more
}

TEST_F(Exchanges, logNothingWithoutAText)
{
    DebugCapture capture;
    Exchange exchange(channel, {.wait = 50ms, .logCategory = 26});
    EXPECT_EQ(start(exchange, getProfile, 2).get().error, E_INVALID_GET);
    EXPECT_EQ(capture.texts(), std::vector<std::string>{});
}

TEST_F(Exchanges, leaveALateReplyToNobody)
{
    Exchange exchange(channel, {.wait = 50ms});
    EXPECT_EQ(start(exchange, getProfile, 2).get().error, E_INVALID_GET);
    EXPECT_FALSE(exchange.deliver(reply("52 00 00 00 01")));
    auto running = start(exchange, getMacro, 3);
    EXPECT_FALSE(exchange.deliver(reply("52 00 00 00 01")));
    EXPECT_TRUE(exchange.deliver(reply("52 18 02 00 07")));
    EXPECT_EQ(running.get(), (Result{E_OK, "52 18 02 00 07 00"}));
}

TEST_F(Exchanges, needAnOpenChannel)
{
    Exchange exchange(channel, {});
    channel.closeChannel();
    Reply got;
    EXPECT_EQ(exchange.transact(getProfile, 2, got), E_NOT_OPEN);
}

TEST_F(Exchanges, tellThatTheChannelWasClosedMeanwhile)
{
    Exchange exchange(channel, {.wait = 2s});
    auto running = start(exchange, getProfile, 2);
    channel.closeChannel();
    EXPECT_EQ(running.get().error, E_NOT_OPEN);
}

TEST_F(Exchanges, ignoreARefusedWrite)
{
    sim::setConduct(path, {.refuseWrites = true});
    Exchange exchange(channel, {.wait = 100ms});
    Reply got;
    EXPECT_EQ(exchange.transact(getProfile, 2, got), E_INVALID_GET);
}

TEST_F(Exchanges, canBeAborted)
{
    Exchange exchange(channel, {.wait = 20s});
    auto first = start(exchange, getProfile, 2);
    auto second = start(exchange, getMacro, 3);
    EXPECT_FALSE(exchange.aborted());
    exchange.abort();
    EXPECT_TRUE(exchange.aborted());
    EXPECT_EQ(first.get().error, E_NOT_OPEN);
    EXPECT_EQ(second.get().error, E_NOT_OPEN);
    Reply got;
    EXPECT_EQ(exchange.transact(getProfile, 2, got), E_NOT_OPEN);
    exchange.resume();
    EXPECT_FALSE(exchange.aborted());
    auto third = start(exchange, getProfile, 2);
    EXPECT_TRUE(exchange.deliver(reply("52 00 00 00 03")));
    EXPECT_EQ(third.get(), (Result{E_OK, "52 00 00 00 03 00"}));
}

TEST_F(Exchanges, compareAfreshForEachCommand)
{
    Exchange exchange(channel, {.wait = 20s});
    // The reply's first byte fits the first command, its second the second: that is no match.
    auto first = start(exchange, Report{0x52, 0x01}, 2);
    auto second = start(exchange, Report{0x51, 0x00}, 2);
    EXPECT_FALSE(exchange.deliver(reply("52 00")));
    exchange.abort();
    EXPECT_EQ(first.get().error, E_NOT_OPEN);
    EXPECT_EQ(second.get().error, E_NOT_OPEN);
}

TEST_F(Exchanges, canKeepOneCountForAllCommands)
{
    Exchange exchange(channel, {.wait = 20s, .runningMatchCount = true});
    // One equal byte of the first command and one of the second make two.
    auto first = start(exchange, Report{0x52, 0x01}, 2);
    auto second = start(exchange, Report{0x51, 0x00}, 2);
    EXPECT_TRUE(exchange.deliver(reply("52 00 00 00 09")));
    EXPECT_EQ(second.get(), (Result{E_OK, "52 00 00 00 09 00"}));
    exchange.abort();
    EXPECT_EQ(first.get().error, E_NOT_OPEN);
    exchange.resume();
    // Alone, a command is compared as ever.
    auto alone = start(exchange, getProfile, 2);
    EXPECT_FALSE(exchange.deliver(reply("52 01")));
    EXPECT_TRUE(exchange.deliver(reply("52 00 00 00 08")));
    EXPECT_EQ(alone.get(), (Result{E_OK, "52 00 00 00 08 00"}));
}

TEST_F(Exchanges, canKeepAGapBehindAWrite)
{
    FakeClock clock;
    Exchange exchange(channel, {.wait = 20s, .gap = 32ms}, clock);
    const auto send = [&] {
        return std::async(std::launch::async, [&] {
            Reply got;
            return exchange.transact(getProfile, 2, got);
        });
    };
    const auto answered = [&](std::future<_error> running, std::size_t commands) {
        EXPECT_TRUE(device->awaitCommands("52 00", commands));
        EXPECT_TRUE(exchange.deliver(reply("52 00")));
        return running.get() == E_OK;
    };
    EXPECT_TRUE(answered(send(), 1)); // at once
    clock.advance(10);
    auto second = send();
    EXPECT_EQ(clock.settle(), 22U);
    clock.advance(21);
    EXPECT_EQ(clock.settle(), 1U);
    EXPECT_EQ(device->commands("52 00"), 1U);
    EXPECT_FALSE(exchange.deliver(reply("52 00"))); // it does not wait for a reply yet
    clock.advance(1);
    EXPECT_TRUE(answered(std::move(second), 2));
    clock.advance(32);
    EXPECT_TRUE(answered(send(), 3)); // at once again
    EXPECT_EQ(clock.slept(), 22U);
}

/// A clock whose limits are over at once.
class ImpatientClock final : public Clock {
public:
    std::uint32_t now() override { return 0; }
    void sleep(std::unique_lock<std::mutex>&, std::condition_variable&, std::chrono::milliseconds,
               const std::function<bool()>&) override
    {
    }
    void wait(std::unique_lock<std::mutex>&, std::condition_variable&, const std::function<bool()>&) override
    {
    }
    bool awaitDevice(Owed owed, std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                     std::chrono::milliseconds limit, const std::function<bool()>& done) override
    {
        EXPECT_TRUE(lock.owns_lock());
        if (owed != Owed::reply)
            return Clock::awaitDevice(owed, lock, changed, limit, done);
        ++awaited;
        return false;
    }

    std::atomic<int> awaited{0};
};

TEST_F(Exchanges, waitForRepliesByTheirClock)
{
    ImpatientClock clock;
    Exchange exchange(channel, {.wait = 1h}, clock);
    Reply got;
    EXPECT_EQ(exchange.transact(getProfile, 2, got), E_INVALID_GET);
    EXPECT_GE(clock.awaited, 1);
}

TEST_F(Exchanges, haveTheClockOfTheWorldUnlessAnotherStandsInItsPlace)
{
    EXPECT_EQ(&Clock::current(), &Clock::steady());
    ImpatientClock clock;
    Clock::replace(clock);
    EXPECT_EQ(&Clock::current(), &clock);
    {
        Exchange exchange(channel, {.wait = 1h});
        Reply got;
        EXPECT_EQ(exchange.transact(getProfile, 2, got), E_INVALID_GET);
    }
    Clock::replace(Clock::steady());
    EXPECT_EQ(&Clock::current(), &Clock::steady());
}

TEST_F(Exchanges, standRepliesOfAnyLength)
{
    Exchange exchange(channel, {.wait = 20s});
    auto running = start(exchange, getMacro, 3);
    EXPECT_FALSE(exchange.deliver(Reply()));
    EXPECT_FALSE(exchange.deliver(reply("52")));
    EXPECT_FALSE(exchange.deliver(reply("52 18")));
    EXPECT_FALSE(exchange.deliver(Reply(ByteVector(200, 0x52))));
    EXPECT_TRUE(exchange.deliver(reply("52 18 02")));
    EXPECT_EQ(running.get().error, E_OK);
}

TEST_F(Exchanges, workForManyThreads)
{
    Exchange exchange(channel, {});
    std::atomic<bool> running{true};
    std::thread delivering([&] {
        while (running) {
            exchange.deliver(reply("52 00 00 00 01"));
            exchange.deliver(reply("52 18 02 00 02"));
        }
    });
    std::vector<std::future<void>> hosts;
    for (int i = 0; i < 4; ++i)
        hosts.push_back(std::async(std::launch::async, [&, i] {
            for (int round = 0; round < 50; ++round) {
                Reply got;
                EXPECT_EQ(exchange.transact(i % 2 ? getProfile : getMacro, i % 2 ? 2 : 3, got), E_OK);
                EXPECT_EQ(got[4], i % 2 ? 1 : 2);
            }
        }));
    for (auto& host : hosts)
        host.get();
    running = false;
    delivering.join();
}

} // namespace
