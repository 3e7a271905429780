// The command queue: lanes, coalescing, pacing, giving up. Time stands still but for what a test adds.

#include "tests/support/bytes.h"
#include "tests/support/debug_log.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scripted_device.h"
#include "transport/cmd_queue.h"
#include "transport/usb_hid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

/// The other end of a queue: keeps what is written, fails as it is told, and can hold a write.
class Wire {
public:
    /// For `CmdQueue::setChannel`.
    CmdQueue::Write end()
    {
        return [this](CmdQueue::Packet packet) { return write(packet); };
    }

    /// Results of the next writes; afterwards every write succeeds, or does as `otherwise` says.
    void results(std::deque<_error> next, _error otherwise = E_OK)
    {
        const std::lock_guard lock(mutex);
        script = std::move(next);
        last = otherwise;
    }

    /// From now on writes throw.
    void throwing(bool on)
    {
        const std::lock_guard lock(mutex);
        throws = on;
    }

    /// Every write waits inside until `release`.
    void hold()
    {
        const std::lock_guard lock(mutex);
        held = true;
    }

    void awaitWriter()
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return inside; }));
    }

    void release()
    {
        {
            const std::lock_guard lock(mutex);
            held = false;
        }
        changed.notify_all();
    }

    /// Waits for `count` packets, then gives and forgets all: payloads without the zeros at their ends.
    std::string written(std::size_t count = 0)
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return packets.size() >= count; }));
        std::vector<std::string> pieces;
        for (const ByteVector& packet : packets)
            pieces.push_back(packet.empty() ? "" : shortened(std::span(packet).subspan(1)));
        packets.clear();
        return joined(pieces);
    }

    /// The same with every byte.
    std::vector<ByteVector> raw()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(packets, {});
    }

    std::size_t count()
    {
        const std::lock_guard lock(mutex);
        return total;
    }

private:
    _error write(CmdQueue::Packet packet)
    {
        std::unique_lock lock(mutex);
        inside = true;
        changed.notify_all();
        changed.wait(lock, [&] { return !held; });
        inside = false;
        packets.emplace_back(packet.begin(), packet.end());
        ++total;
        changed.notify_all();
        if (throws)
            throw std::runtime_error("no write today");
        if (script.empty())
            return last;
        const _error result = script.front();
        script.pop_front();
        return result;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<_error> script;
    _error last = E_OK;
    bool throws = false;
    bool held = false;
    bool inside = false;
    std::size_t total = 0;
    std::vector<ByteVector> packets;
};

/// A queue on a clock that stands, long after its start.
class CmdQueueTest : public testing::Test {
protected:
    CmdQueueTest()
    {
        clock.advance(1000);
        queue.setChannel(wire.end());
        EXPECT_EQ(clock.settle(), idle);
    }

    void awaitEnd()
    {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (!queue.ended() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        ASSERT_TRUE(queue.ended());
    }

    /// The thread stands inside the write of a group, 00 EE, and has been there so long that the next round
    /// is not paced.
    void holdThread(std::size_t lane)
    {
        wire.hold();
        queue.push(lane, Report{0x00, 0xEE});
        wire.awaitWriter();
        clock.advance(100);
    }

    /// Lets the thread have its six failures, on single packets of lane 7, beginning with 10 01.
    void exhaust()
    {
        wire.results({}, E_WRITE_TIMEOUT);
        std::vector<Report> group;
        for (std::uint8_t i = 1; i <= 6; ++i)
            group.push_back({0x10, i});
        queue.push(7, group);
        awaitEnd();
        wire.results({});
    }

    FakeClock clock;
    Wire wire;
    CmdQueue queue{clock};
};

TEST_F(CmdQueueTest, hasTheDescribedSettingsAtItsStart)
{
    EXPECT_EQ(queue.paceDelayMs, 10);
    EXPECT_EQ(queue.paceWindowMs, 10);
    EXPECT_FALSE(queue.forcePacing);
    EXPECT_EQ(queue.minGapMs, 0U);
    EXPECT_EQ(queue.packetSize, 65U);
    EXPECT_EQ(CmdQueue::laneCount, 21U);
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, sendsTheReportsOfAGroupInTheirOrder)
{
    queue.push(3, std::vector<Report>{{0x01, 0x02}, {0x03}, {0x04, 0x05, 0x06}});
    EXPECT_EQ(wire.written(3), "01 02 | 03 | 04 05 06");
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, sendsWholeReports)
{
    queue.push(0, Report::filled(0xA5).at(64, 0x5A));
    EXPECT_EQ(clock.settle(), idle);
    const std::vector<ByteVector> packets = wire.raw();
    ASSERT_EQ(packets.size(), 1U);
    ByteVector expected(65, 0xA5);
    expected.back() = 0x5A;
    EXPECT_EQ(packets[0], expected);
}

TEST_F(CmdQueueTest, keepsACopyOfWhatItIsGiven)
{
    wire.hold();
    queue.push(20, Report{0xEE});
    wire.awaitWriter();
    std::vector<Report> group{{0x01}};
    queue.push(0, group);
    group[0] = Report{0x02};
    wire.release();
    EXPECT_EQ(wire.written(2), "EE | 01");
}

TEST_F(CmdQueueTest, sendsLanesInTheirOrderLaneNullFirst)
{
    holdThread(20);
    for (const std::size_t lane : {20, 1, 13, 0, 5})
        queue.push(lane, Report{std::uint8_t(lane + 1)});
    wire.release();
    EXPECT_EQ(wire.written(6), "00 EE | 01 | 02 | 06 | 0E | 15");
}

TEST_F(CmdQueueTest, ignoresALaneThatDoesNotExist)
{
    queue.push(21, Report{0x01});
    queue.push(std::size_t(-1), Report{0x02});
    EXPECT_EQ(queue.queuedCount(), 0);
    queue.push(20, Report{0x03});
    EXPECT_EQ(wire.written(1), "03");
}

TEST_F(CmdQueueTest, sendsOnlyTheLastOfThreeQuickPushes)
{
    holdThread(4);
    queue.push(4, Report{0x01});
    queue.push(4, Report{0x02});
    queue.push(4, Report{0x03});
    wire.release();
    EXPECT_EQ(wire.written(2), "00 EE | 03");
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, sendsWhatALaneHeldAtTheStartOfTheRoundThenTheNewest)
{
    // Lane 9 has its group when the round begins; the two that come while lane 4 is written belong to the
    // next.
    wire.hold();
    queue.setChannel(CmdQueue::Write());
    queue.push(4, Report{0x40});
    queue.push(9, Report{0x90});
    queue.setChannel(wire.end());
    wire.awaitWriter();
    queue.push(9, Report{0x91});
    queue.push(9, Report{0x92});
    EXPECT_EQ(queue.queuedCount(), 3);
    wire.release();
    EXPECT_EQ(wire.written(3), "40 | 90 | 92");
    EXPECT_EQ(clock.settle(), 10U); // the second round came quickly
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, takesTheFirstGroupOfALaneThatFillsDuringTheRound)
{
    holdThread(4);
    queue.push(9, Report{0x90});
    queue.push(9, Report{0x91});
    queue.push(9, Report{0x92});
    wire.release();
    EXPECT_EQ(wire.written(3), "00 EE | 90 | 92");
}

TEST_F(CmdQueueTest, leavesALaneWhoseTurnIsOverToTheNextRound)
{
    holdThread(4);
    queue.push(3, Report{0x30});
    queue.push(4, Report{0x40});
    queue.push(5, Report{0x50});
    wire.release();
    EXPECT_EQ(wire.written(4), "00 EE | 50 | 30 | 40");
}

TEST_F(CmdQueueTest, replacesWholeGroups)
{
    holdThread(4);
    queue.push(4, std::vector<Report>{{0x01}, {0x02}, {0x03}});
    queue.push(4, std::vector<Report>{{0x04}, {0x05}});
    wire.release();
    EXPECT_EQ(wire.written(3), "00 EE | 04 | 05");
}

TEST_F(CmdQueueTest, countsAnEmptyGroupAsOne)
{
    holdThread(4);
    queue.push(4, Report{0x01});
    queue.push(4, std::span<const Report>());
    queue.forcePacing = true;
    wire.release();
    EXPECT_EQ(clock.settle(), 10U); // it has its pause as any other
    EXPECT_EQ(wire.written(), "00 EE");
}

TEST_F(CmdQueueTest, keepsTheSizeOfPacketsThatTheDeviceHasSet)
{
    queue.packetSize = 4;
    const ByteVector tooLong = bytes("01 02 03 04 05 06");
    const ByteVector tooShort = bytes("07");
    queue.push(0, std::vector<CmdQueue::Packet>{tooLong, tooShort});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.raw(), (std::vector<ByteVector>{bytes("01 02 03 04"), bytes("07 00 00 00")}));
    queue.push(0, Report{0x09, 0x08, 0x07, 0x06});
    EXPECT_EQ(clock.settle(), 10U);
    EXPECT_EQ(wire.raw(), (std::vector<ByteVector>{bytes("00 09 08 07")}));
    clock.advance(10);
    EXPECT_EQ(clock.settle(), idle);
    queue.packetSize = 70;
    clock.advance(100);
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    ByteVector filled(70, 0x00);
    filled[1] = 0x01;
    EXPECT_EQ(wire.raw(), std::vector<ByteVector>{filled});
}

// Pacing.

TEST_F(CmdQueueTest, doesNotPaceASlowProducer)
{
    for (std::uint8_t i = 1; i <= 5; ++i) {
        clock.advance(10);
        queue.push(0, Report{i});
        EXPECT_EQ(clock.settle(), idle);
    }
    EXPECT_EQ(clock.slept(), 0U);
    EXPECT_EQ(wire.written(), "01 | 02 | 03 | 04 | 05");
}

TEST_F(CmdQueueTest, pacesARoundThatComesLessThanTheWindowBehindTheLast)
{
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(9);
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 10U);
    EXPECT_EQ(wire.written(), "01 | 02");
    clock.advance(9);
    EXPECT_EQ(clock.settle(), 1U);
    queue.push(0, Report{0x03});
    EXPECT_EQ(clock.settle(), 1U);
    EXPECT_EQ(wire.written(), "");
    clock.advance(1);
    EXPECT_EQ(clock.settle(), idle); // ten ms after the last: not paced any more
    EXPECT_EQ(wire.written(), "03");
}

TEST_F(CmdQueueTest, measuresFromEveryRoundAlsoFromOneThatFoundNothing)
{
    queue.push(0, Report{0x01});
    wire.written(1);
    // The thread looks once more at the lanes, finds them empty and waits.
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(8);
    queue.clearLanes();
    queue.push(0, std::span<const Report>());
    EXPECT_EQ(clock.settle(), 10U);
    clock.advance(10);
    EXPECT_EQ(clock.settle(), idle); // an empty round, at this moment
    clock.advance(9);
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 10U);
}

TEST_F(CmdQueueTest, pausesBehindEachGroupOfAPacedRound)
{
    queue.forcePacing = true;
    queue.paceDelayMs = 100;
    holdThread(20);
    queue.push(1, std::vector<Report>{{0x01}, {0x02}});
    queue.push(2, Report{0x03});
    wire.release();
    EXPECT_EQ(clock.settle(), 100U);
    EXPECT_EQ(wire.written(), "00 EE");
    clock.advance(100);
    EXPECT_EQ(clock.settle(), 100U);
    EXPECT_EQ(wire.written(), "01 | 02"); // the reports of a group stay together
    clock.advance(99);
    EXPECT_EQ(clock.settle(), 1U);
    EXPECT_EQ(wire.written(), "");
    clock.advance(1);
    EXPECT_EQ(clock.settle(), 100U);
    EXPECT_EQ(wire.written(), "03");
    clock.advance(100);
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(clock.slept(), 300U);
}

TEST_F(CmdQueueTest, obeysTheWindowThatIsSet)
{
    queue.paceWindowMs = 50;
    queue.paceDelayMs = 7;
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(49);
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 7U);
    clock.advance(7);
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(50);
    queue.push(0, Report{0x03});
    EXPECT_EQ(clock.settle(), idle);
    queue.paceWindowMs = 0;
    queue.push(0, Report{0x04});
    EXPECT_EQ(clock.settle(), idle);
}

TEST_F(CmdQueueTest, computesPacingOnceARound)
{
    holdThread(0);
    queue.push(1, Report{0x01});
    queue.forcePacing = true;
    wire.release();
    EXPECT_EQ(wire.written(2), "00 EE | 01"); // the round began without
    EXPECT_EQ(clock.settle(), idle);
    holdThread(0);
    queue.push(1, Report{0x02});
    queue.forcePacing = false;
    wire.release();
    EXPECT_EQ(clock.settle(), 10U); // and this one with
    clock.advance(10);
    EXPECT_EQ(clock.settle(), 10U);
    clock.advance(10);
    EXPECT_EQ(clock.settle(), idle);
}

TEST_F(CmdQueueTest, forcedPacingLeavesTheTimeOfTheLastRoundAlone)
{
    queue.paceDelayMs = 6;
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(5);
    queue.forcePacing = true;
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 6U);
    queue.push(0, Report{0x03});
    queue.forcePacing = false;
    clock.advance(6); // eleven ms after the first round, six after the forced one
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "01 | 02 | 03");
}

TEST_F(CmdQueueTest, countsTheTimeFromItsConstructionForTheFirstRound)
{
    FakeClock young;
    Wire end;
    CmdQueue fresh(young);
    fresh.setChannel(end.end());
    young.advance(9);
    fresh.push(0, Report{0x01});
    EXPECT_EQ(young.settle(), 10U);
}

TEST_F(CmdQueueTest, livesThroughTheTicksWrappingAround)
{
    FakeClock old(0xFFFFFFFB);
    Wire end;
    CmdQueue late(old);
    late.setChannel(end.end());
    late.minGapMs = 20;
    old.advance(10);
    late.push(0, Report{0x01});
    EXPECT_EQ(old.settle(), 15U); // since the tick 0, which stands for "never": deliberate
    old.advance(15);
    EXPECT_EQ(old.settle(), idle);
    old.advance(0xFFFFFFFF - 25);
    late.push(0, Report{0x02});
    EXPECT_EQ(old.settle(), idle);
    old.advance(12);
    late.push(0, Report{0x03});
    EXPECT_EQ(old.settle(), 8U);
    old.advance(8);
    EXPECT_EQ(old.settle(), idle);
    EXPECT_EQ(end.written(), "01 | 02 | 03");
}

// The minimum gap.

TEST_F(CmdQueueTest, keepsTheMinimumGapBetweenRounds)
{
    queue.minGapMs = 32;
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(12);
    queue.push(1, Report{0x02});
    EXPECT_EQ(clock.settle(), 20U);
    EXPECT_EQ(wire.written(), "01");
    clock.advance(20);
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "02");
    clock.advance(32);
    queue.push(1, Report{0x03});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "03");
}

TEST_F(CmdQueueTest, countsTheGapFromTheEndOfTheRound)
{
    queue.minGapMs = 32;
    holdThread(0);
    clock.advance(30);
    queue.push(1, Report{0x01});
    wire.release();
    EXPECT_EQ(wire.written(2), "00 EE | 01");
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(11);
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 21U);
}

TEST_F(CmdQueueTest, remembersNoRoundThatWasSentWithoutAGap)
{
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(15);
    queue.minGapMs = 32;
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "01 | 02");
}

TEST_F(CmdQueueTest, sendsWhatWasChosenBeforeTheGapAndThenTheNewest)
{
    queue.minGapMs = 32;
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(12);
    queue.push(0, Report{0x02});
    EXPECT_EQ(clock.settle(), 20U);
    queue.push(0, Report{0x03});
    queue.push(0, Report{0x04});
    clock.advance(20);
    EXPECT_EQ(clock.settle(), 32U);
    EXPECT_EQ(wire.written(), "01 | 02");
    clock.advance(32);
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "04");
}

// The channel.

TEST_F(CmdQueueTest, writesNothingBeforeItHasAChannel)
{
    queue.setChannel(CmdQueue::Write());
    EXPECT_EQ(clock.settle(), idle);
    queue.push(2, Report{0x01});
    queue.push(2, Report{0x02});
    queue.push(3, Report{0x03});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "");
    EXPECT_EQ(queue.queuedCount(), 3);
    queue.setChannel(wire.end());
    EXPECT_EQ(wire.written(2), "02 | 03");
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, throwsAwayWhatHasItsTurnWithoutAChannel)
{
    holdThread(0);
    queue.push(1, Report{0x01});
    queue.push(2, Report{0x02});
    queue.setChannel(CmdQueue::Write());
    wire.release();
    EXPECT_EQ(wire.written(1), "00 EE");
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 0);
    queue.setChannel(wire.end());
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "");
}

TEST_F(CmdQueueTest, clearsItsLanesAndLeavesTheCount)
{
    holdThread(0);
    queue.push(0, Report{0x01});
    queue.push(1, Report{0x02});
    queue.push(20, Report{0x03});
    queue.push(20, Report{0x04});
    EXPECT_EQ(queue.queuedCount(), 4);
    queue.clearLanes();
    EXPECT_EQ(queue.queuedBytes(), 0U);
    EXPECT_EQ(queue.queuedCount(), 4);
    wire.release();
    EXPECT_EQ(wire.written(1), "00 EE");
    EXPECT_EQ(clock.settle(), idle);
    clock.advance(100);
    queue.push(5, Report{0x05});
    EXPECT_EQ(wire.written(1), "05");
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 4);
}

TEST_F(CmdQueueTest, neverMissesAPacketBehindAClear)
{
    forgetDebugOutput();
    for (std::uint8_t i = 0; i < 100; ++i) {
        queue.push(i % 21, Report{i});
        queue.push(i % 21, Report{i});
        queue.clearLanes();
        queue.push(i % 21, Report{i});
        clock.advance(50);
        wire.written(1);
        EXPECT_EQ(clock.settle().value_or(0) % 10, 0U);
    }
    EXPECT_EQ(debugLines(), Lines{});
}

// Giving up, and coming back.

TEST_F(CmdQueueTest, writesToADevicesChannel)
{
    usbHid closed("nowhere");
    queue.setChannel(&closed);
    forgetDebugOutput();
    queue.push(0, Report{0x41, 0x80});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(debugLines(),
              (Lines{"[PYRUX]command queue tx buffer Fail", "[PYRUX]tx buffer Fail = 65 0 65 128 0 0 0 0"}));
    queue.setChannel(static_cast<usbHid*>(nullptr));
    queue.push(0, Report{0x41, 0x80});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(queue.queuedCount(), 1);
}

TEST_F(CmdQueueTest, tellsOfEachFailedWrite)
{
    wire.results({E_WRITE_TIMEOUT});
    forgetDebugOutput();
    queue.push(0, Report{0x01, 0x02, 0xFF, 0x04, 0x05, 0x06, 0x07, 0x08});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(debugLines(),
              (Lines{"[PYRUX]command queue tx buffer Fail", "[PYRUX]tx buffer Fail = 65 0 1 2 255 4 5 6"}));
}

TEST_F(CmdQueueTest, tellsOfAShortPacketAllThatItHas)
{
    wire.results({E_NOT_OPEN});
    queue.packetSize = 3;
    forgetDebugOutput();
    queue.push(0, Report{0x81, 0x02});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(debugLines(),
              (Lines{"[PYRUX]command queue tx buffer Fail", "[PYRUX]tx buffer Fail = 3 0 129 2"}));
}

TEST_F(CmdQueueTest, doesNotRepeatAFailedWrite)
{
    wire.results({E_WRITE_TIMEOUT, E_OK, E_NOT_OPEN});
    queue.push(0, std::vector<Report>{{0x01}, {0x02}, {0x03}, {0x04}});
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(wire.written(), "01 | 02 | 03 | 04");
}

TEST_F(CmdQueueTest, survivesFiveFailuresInARow)
{
    wire.results({E_NOT_OPEN, E_WRITE_TIMEOUT, E_NOT_OPEN, E_WRITE_TIMEOUT, E_NOT_OPEN, E_OK, E_WRITE_TIMEOUT,
                  E_NOT_OPEN, E_WRITE_TIMEOUT, E_NOT_OPEN, E_WRITE_TIMEOUT});
    for (std::uint8_t i = 1; i <= 12; ++i) {
        clock.advance(10);
        queue.push(0, Report{i});
        EXPECT_EQ(clock.settle(), idle);
    }
    EXPECT_FALSE(queue.ended());
    EXPECT_EQ(wire.written(), "01 | 02 | 03 | 04 | 05 | 06 | 07 | 08 | 09 | 0A | 0B | 0C");
}

TEST_F(CmdQueueTest, endsAtTheSixthFailureInARow)
{
    wire.results({}, E_WRITE_TIMEOUT);
    for (std::uint8_t i = 1; i <= 5; ++i) {
        clock.advance(10);
        queue.push(0, Report{i});
        EXPECT_EQ(clock.settle(), idle);
    }
    EXPECT_FALSE(queue.ended());
    queue.push(0, std::vector<Report>{{0x06}, {0x07}, {0x08}});
    awaitEnd();
    EXPECT_EQ(wire.written(), "01 | 02 | 03 | 04 | 05 | 06"); // the rest of the group is not tried
}

TEST_F(CmdQueueTest, countsOnlyClosedChannelsAndTimeoutsAsFailures)
{
    wire.results({}, E_FAIL);
    forgetDebugOutput();
    queue.push(0, std::vector<Report>(10, Report{0x01}));
    EXPECT_EQ(clock.settle(), idle);
    wire.results({}, E_INVALID_GET);
    queue.push(0, std::vector<Report>(10, Report{0x01}));
    EXPECT_EQ(clock.settle(), 10U);
    EXPECT_FALSE(queue.ended());
    EXPECT_EQ(debugLines(), Lines{});
}

TEST_F(CmdQueueTest, countsACrashInTheWriteAsAFailure)
{
    wire.throwing(true);
    forgetDebugOutput();
    queue.push(0, std::vector<Report>(5, Report{0x01}));
    EXPECT_EQ(clock.settle(), idle);
    EXPECT_EQ(debugLines(), Lines(5, "[PYRUX]crash occur!!!"));
    EXPECT_FALSE(queue.ended());
    forgetDebugOutput();
    queue.push(0, std::vector<Report>(3, Report{0x01}));
    awaitEnd();
    EXPECT_EQ(debugLines(), Lines(1, "[PYRUX]crash occur!!!"));
    EXPECT_EQ(wire.count(), 6U);
}

TEST_F(CmdQueueTest, isRevivedByAPushWhichLosesItsPackets)
{
    exhaust();
    EXPECT_EQ(wire.written(), "10 01 | 10 02 | 10 03 | 10 04 | 10 05 | 10 06");
    forgetDebugOutput();
    queue.push(0, Report{0x01});
    EXPECT_EQ(debugLines(), Lines{"[PYRUX]cmdQueueThread is not running!"});
    EXPECT_FALSE(queue.ended());
    EXPECT_EQ(clock.settle(), idle);
    forgetDebugOutput();
    EXPECT_EQ(wire.written(), "");
    queue.push(0, Report{0x02});
    EXPECT_EQ(wire.written(1), "02");
    EXPECT_EQ(debugLines(), Lines{});
}

TEST_F(CmdQueueTest, sendsWhatWasLeftInTheLanesOnceItIsRevived)
{
    wire.results({}, E_NOT_OPEN);
    wire.hold();
    queue.push(7, std::vector<Report>(6, Report{0x10}));
    wire.awaitWriter();
    queue.push(7, Report{0x71});
    queue.push(7, Report{0x72});
    queue.push(8, Report{0x80});
    queue.push(1, Report{0x11});
    wire.release();
    awaitEnd();
    clock.advance(100);
    wire.results({});
    EXPECT_EQ(wire.written(), "10 | 10 | 10 | 10 | 10 | 10");
    EXPECT_EQ(queue.queuedCount(), 4);
    queue.push(8, Report{0xFF});
    EXPECT_EQ(wire.written(3), "11 | 72 | 80");
    EXPECT_EQ(queue.queuedCount(), 0);
}

TEST_F(CmdQueueTest, countsFailuresAnewOnceItIsRevived)
{
    exhaust();
    queue.push(0, Report{0x01}); // lost
    wire.written();
    wire.results({}, E_WRITE_TIMEOUT);
    queue.push(0, std::vector<Report>(5, Report{0x02}));
    wire.written(5);
    EXPECT_FALSE(queue.ended());
    clock.settle();
    clock.advance(10);
    queue.push(0, Report{0x03});
    awaitEnd();
    EXPECT_EQ(wire.written(1), "03");
}

TEST_F(CmdQueueTest, canBeRevivedAgainAndAgain)
{
    for (int i = 0; i < 5; ++i) {
        exhaust();
        wire.written();
        queue.push(3, Report{0x01});
        EXPECT_EQ(clock.settle(), idle);
        queue.push(3, Report{0x02});
        EXPECT_EQ(wire.written(1), "02");
        while (clock.settle() != idle)
            clock.advance(10);
        clock.advance(100);
    }
}

// Bounds and ends.

TEST_F(CmdQueueTest, doesNotGrowBehindAWriteThatHangs)
{
    holdThread(0);
    for (int i = 0; i < 10'000; ++i)
        queue.push(std::size_t(i % 21), Report{std::uint8_t(i)});
    EXPECT_EQ(queue.queuedCount(), 10'000);
    EXPECT_LE(queue.queuedBytes(), 2U * 21 * 65);
    wire.release();
}

TEST_F(CmdQueueTest, doesNotGrowWithoutAChannel)
{
    queue.setChannel(CmdQueue::Write());
    for (int i = 0; i < 10'000; ++i)
        queue.push(std::size_t(i % 21), Report{std::uint8_t(i)});
    EXPECT_LE(queue.queuedBytes(), 2U * 21 * 65);
}

TEST_F(CmdQueueTest, doesNotGrowUnderADeadDevice)
{
    wire.results({}, E_WRITE_TIMEOUT);
    std::size_t most = 0;
    for (int i = 0; i < 10'000; ++i) {
        queue.push(std::size_t(i % 21), Report{std::uint8_t(i)});
        most = std::max(most, queue.queuedBytes());
    }
    EXPECT_LE(most, 2U * 21 * 65);
}

TEST_F(CmdQueueTest, leavesAPauseWhenItEnds)
{
    FakeClock own;
    Wire end;
    {
        CmdQueue shortLived(own);
        shortLived.setChannel(end.end());
        shortLived.forcePacing = true;
        shortLived.paceDelayMs = 1'000'000;
        shortLived.push(0, Report{0x01});
        EXPECT_EQ(own.settle(), 1'000'000U);
        shortLived.push(0, Report{0x02});
    }
    EXPECT_EQ(end.written(), "01"); // what was queued is dropped
}

TEST_F(CmdQueueTest, waitsForTheThreadToBeOutOfAWrite)
{
    FakeClock own;
    Wire end;
    std::atomic<bool> gone{false};
    auto dying = std::make_unique<CmdQueue>(own);
    dying->setChannel(end.end());
    end.hold();
    dying->push(0, std::vector<Report>{{0x01}, {0x02}});
    end.awaitWriter();
    EXPECT_FALSE(dying->stopWithin(1ms));
    std::thread destroyer([&] {
        dying.reset();
        gone = true;
    });
    EXPECT_FALSE(gone);
    end.release();
    destroyer.join();
    EXPECT_TRUE(gone);
    EXPECT_EQ(end.written(), "01"); // the rest of the group is dropped
}

TEST_F(CmdQueueTest, stopsForGood)
{
    queue.push(0, Report{0x01});
    EXPECT_EQ(clock.settle(), idle);
    forgetDebugOutput();
    EXPECT_TRUE(queue.stopWithin(patience));
    EXPECT_TRUE(queue.ended());
    EXPECT_TRUE(queue.stopWithin(0ms));
    queue.push(0, Report{0x02});
    queue.push(0, Report{0x03});
    EXPECT_TRUE(queue.ended());
    EXPECT_EQ(wire.written(), "01");
    EXPECT_EQ(debugLines(), Lines{});
}

TEST_F(CmdQueueTest, stopsAfterItHasGivenUp)
{
    exhaust();
    EXPECT_TRUE(queue.stopWithin(0ms));
}

// On the clock of the world.

TEST(CmdQueueOnRealTime, sendsTheNewestOfEachLaneUnderManyProducers)
{
    constexpr int perLane = 2000;
    std::mutex mutex;
    std::condition_variable changed;
    std::array<int, CmdQueue::laneCount> newest{};
    int writes = 0;
    bool inOrder = true;
    CmdQueue queue;
    queue.paceDelayMs = 0;
    queue.setChannel([&](CmdQueue::Packet packet) {
        const std::lock_guard lock(mutex);
        const int value = packet[2] | packet[3] << 8;
        inOrder = inOrder && value > newest[packet[1]];
        newest[packet[1]] = value;
        ++writes;
        changed.notify_all();
        return E_OK;
    });
    std::vector<std::thread> producers;
    for (std::uint8_t lane = 0; lane < CmdQueue::laneCount; ++lane)
        producers.emplace_back([&queue, lane] {
            for (int i = 1; i <= perLane; ++i)
                queue.push(lane, Report{lane, std::uint8_t(i), std::uint8_t(i >> 8)});
        });
    for (std::thread& producer : producers)
        producer.join();
    std::unique_lock lock(mutex);
    EXPECT_TRUE(changed.wait_for(lock, patience, [&] {
        return std::ranges::all_of(newest, [](int value) { return value == perLane; });
    }));
    EXPECT_TRUE(inOrder);
    EXPECT_LE(writes, int(CmdQueue::laneCount) * perLane);
}

TEST(CmdQueueOnRealTime, dropsFramesForASlowDeviceAndNeverTheLast)
{
    constexpr std::uint8_t frames = 200;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::uint8_t> sent;
    CmdQueue queue;
    queue.forcePacing = true;
    queue.paceDelayMs = 20; // a tenth of what the producer wants
    queue.setChannel([&](CmdQueue::Packet packet) {
        const std::lock_guard lock(mutex);
        sent.push_back(packet[1]);
        changed.notify_all();
        return E_OK;
    });
    std::mutex beat;
    std::condition_variable never;
    for (std::uint8_t i = 1; i <= frames; ++i) {
        queue.push(0, Report{i});
        std::unique_lock lock(beat);
        never.wait_for(lock, 2ms);
    }
    std::unique_lock lock(mutex);
    EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return !sent.empty() && sent.back() == frames; }));
    EXPECT_TRUE(std::ranges::is_sorted(sent));
    EXPECT_LT(sent.size(), std::size_t(frames) / 2);
}

TEST(CmdQueueOnRealTime, takesItsPauses)
{
    Wire end;
    CmdQueue queue;
    queue.forcePacing = true;
    queue.paceDelayMs = 20;
    const auto start = std::chrono::steady_clock::now();
    for (std::uint8_t lane = 0; lane < 4; ++lane)
        queue.push(lane, Report{lane});
    queue.setChannel(end.end());
    end.written(4);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 60ms);
}

TEST(CmdQueueOnRealTime, isRevivedByOneOfSeveralThreads)
{
    forgetDebugOutput();
    std::atomic<int> left{6};
    CmdQueue queue;
    queue.paceDelayMs = 0;
    queue.setChannel([&](CmdQueue::Packet) { return left-- > 0 ? E_NOT_OPEN : E_OK; });
    queue.push(0, std::vector<Report>(6, Report{0x01}));
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!queue.ended() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    ASSERT_TRUE(queue.ended());
    std::vector<std::thread> threads;
    for (std::uint8_t lane = 0; lane < 8; ++lane)
        threads.emplace_back([&queue, lane] { queue.push(lane, Report{lane}); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(queue.ended());
    const Lines lines = debugLines();
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX]cmdQueueThread is not running!"), 1);
}

} // namespace
} // namespace pyrux::test
