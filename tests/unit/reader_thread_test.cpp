// The thread that reads a channel.

#include "transport/reader_thread.h"

#include "simulator/bus.h"
#include "tests/support/debug_capture.h"
#include "tests/support/scripted_device.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace pyrux;
using namespace pyrux::test;
using namespace std::chrono_literals;

/// Collects what the reader hands on.
class Taken {
public:
    void add(const Reply& reply)
    {
        const std::lock_guard lock(mutex);
        replies.push_back(hex(reply.bytes().first(4)));
        arrived.notify_all();
    }
    std::vector<std::string> await(std::size_t count)
    {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, patience, [&] { return replies.size() >= count; });
        return replies;
    }

private:
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<std::string> replies;
};

using Replies = std::vector<std::string>;

class Reader : public testing::Test {
protected:
    Reader() { EXPECT_TRUE(channel.open(usbHid::Mode::blocking)); }
    ~Reader() override { sim::unplug(path); }

    auto taking()
    {
        return [this](const Reply& reply) { taken.add(reply); };
    }

    std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
    const std::string path = sim::plug(device);
    usbHid channel{path};
    Taken taken;
};

constexpr auto failed = "[PYRUX][RD210]RD210 USB fail";

TEST_F(Reader, handsReportsOnInTheirOrder)
{
    ReaderThread reader(channel, {});
    EXPECT_TRUE(reader.ended());
    reader.start(taking());
    EXPECT_FALSE(reader.ended());
    for (const char* report : {"01 02", "03 04 05 06 07", "FF"})
        sim::inject(path, bytes(report));
    EXPECT_EQ(taken.await(3), (Replies{"01 02 00 00", "03 04 05 06", "FF 00 00 00"}));
    reader.stop();
    EXPECT_TRUE(reader.ended());
}

TEST_F(Reader, stopsWhileNothingComes)
{
    const auto round = [&] {
        usbHid other(path);
        EXPECT_TRUE(other.open(usbHid::Mode::blocking));
        ReaderThread reader(other, {});
        reader.start(taking());
        const auto time = milliseconds([&] { reader.stop(); });
        reader.stop();
        return time;
    };
    EXPECT_LT(fastestOf(5, round), 150);
}

TEST_F(Reader, givesUpAtTheFailureBehindTheLastThatItSurvives)
{
    DebugCapture capture;
    ReaderThread reader(
        channel,
        {.survivedFailures = 3, .failurePause = 1ms, .failureText = "RD210 USB fail", .logCategory = 26});
    reader.start(taking());
    sim::setConduct(path, {.readFailures = 3});
    sim::inject(path, bytes("01"));
    EXPECT_EQ(taken.await(1), Replies{"01 00 00 00"});
    EXPECT_FALSE(reader.ended());
    EXPECT_EQ(capture.texts(), Replies{});
    // A report in between does not begin the count afresh.
    sim::setConduct(path, {.readFailures = 1});
    EXPECT_TRUE(capture.waitFor(failed));
    while (!reader.ended())
        std::this_thread::yield();
    sim::inject(path, bytes("02"));
    EXPECT_EQ(capture.texts(), Replies{failed});
    reader.stop();
    EXPECT_EQ(taken.await(0), Replies{"01 00 00 00"});
}

TEST_F(Reader, survivesThirtyByDefault)
{
    DebugCapture capture;
    ReaderThread reader(channel, {.failurePause = 0ms, .failureText = "RD210 USB fail", .logCategory = 26});
    reader.start(taking());
    sim::setConduct(path, {.readFailures = 30});
    sim::inject(path, bytes("01"));
    taken.await(1);
    EXPECT_FALSE(reader.ended());
    sim::setConduct(path, {.readFailures = 1});
    EXPECT_TRUE(capture.waitFor(failed));
}

TEST_F(Reader, stopsWithoutWaitingForItsPause)
{
    ReaderThread reader(channel, {.failurePause = 20s});
    reader.start(taking());
    const int before = sim::readWakeups(path);
    sim::setConduct(path, {.failReads = true});
    while (sim::readWakeups(path) == before)
        std::this_thread::yield();
    const auto begin = std::chrono::steady_clock::now();
    reader.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST_F(Reader, endsWhenTheChannelIsClosed)
{
    ReaderThread reader(channel, {});
    reader.start(taking());
    channel.closeChannel();
    while (!reader.ended())
        std::this_thread::yield();
    reader.stop();
}

TEST_F(Reader, doesNotWaitForItselfNorForALongCallback)
{
    ReaderThread reader(channel, {});
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false;
    bool release = false;
    bool stoppedInside = true;
    reader.start([&](const Reply&) {
        stoppedInside = reader.stopWithin(10s); // on the thread itself: at once
        std::unique_lock lock(mutex);
        inside = true;
        changed.notify_all();
        changed.wait(lock, [&] { return release; });
    });
    sim::inject(path, bytes("01"));
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return inside; }));
    }
    EXPECT_FALSE(stoppedInside);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(reader.stopWithin(100ms));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
    {
        const std::lock_guard lock(mutex);
        release = true;
        changed.notify_all();
    }
    EXPECT_TRUE(reader.stopWithin(10s));
    EXPECT_TRUE(reader.ended());
}

TEST_F(Reader, keepsAsManyBytesAsItAsksFor)
{
    ReaderThread reader(channel, {.reportSize = 2});
    reader.start(taking());
    sim::inject(path, bytes("01 02 03 04"));
    EXPECT_EQ(taken.await(1), Replies{"01 02 00 00"});
    reader.stop();
}

TEST_F(Reader, pollsAPolledChannel)
{
    usbHid polled(path);
    ASSERT_TRUE(polled.open(usbHid::Mode::polled));
    ReaderThread reader(polled, {.polledPause = 5ms});
    reader.start(taking());
    sim::inject(path, bytes("01 02"));
    EXPECT_EQ(taken.await(1), Replies{"01 02 00 00"});
    sim::inject(path, bytes("03"));
    EXPECT_EQ(taken.await(2), (Replies{"01 02 00 00", "03 00 00 00"}));
    reader.stop();
}

} // namespace
