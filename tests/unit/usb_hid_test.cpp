// The HID channel: watched and direct writes, reads, closing.

#include "transport/usb_hid.h"

#include "simulator/bus.h"
#include "tests/support/scripted_device.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace pyrux;
using namespace pyrux::test;
using namespace std::chrono_literals;

/// A report of 65 bytes that begins with report id 0 and these.
ByteVector report(std::string_view payload)
{
    ByteVector whole{0};
    const ByteVector head = bytes(payload);
    whole.insert(whole.end(), head.begin(), head.end());
    whole.resize(65);
    return whole;
}

class Channel : public testing::Test {
protected:
    Channel() { EXPECT_TRUE(channel.open(usbHid::Mode::blocking)); }
    ~Channel() override
    {
        // Writes that hang end with the device, and nothing is left of them.
        sim::unplug(path);
        channel.closeChannel();
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while ((sim::openHandles() > 0 || sim::writersInside() > 0) &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_EQ(sim::openHandles(), 0);
        EXPECT_EQ(sim::writersInside(), 0);
        EXPECT_EQ(sim::misuses(), 0);
    }

    void conduct(const sim::Conduct& conduct) const { sim::setConduct(path, conduct); }

    /// The bytes of a read that is given `space` bytes.
    std::string readOnce(std::size_t space = 65)
    {
        std::vector<std::uint8_t> buffer(space);
        const int count = channel.readBlocking(buffer);
        return count < 0 ? std::to_string(count) : hex(std::span(buffer).first(std::size_t(count)));
    }

    std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
    const std::string path = sim::plug(device);
    usbHid channel{path};
};

TEST(ClosedChannel, answersAsSuch)
{
    usbHid channel("nothing");
    const ByteVector out = report("41 80");
    std::array<std::uint8_t, 65> in;
    std::array<std::uint8_t, 5> feature;
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(channel.isOpen());
        EXPECT_EQ(channel.writeWatched(out), -10);
        EXPECT_EQ(channel.writeDirect(out), -10);
        EXPECT_EQ(channel.readBlocking(in), 404);
        EXPECT_EQ(channel.read1000(in), 404);
        EXPECT_EQ(channel.read3000(in), 404);
        EXPECT_EQ(channel.getInputReport(feature), -3);
        EXPECT_FALSE(channel.open(usbHid::Mode::blocking)); // the second round: opening failed
    }
    channel.closeChannel();
    EXPECT_EQ(channel.path(), "nothing");
}

TEST_F(Channel, staysClosed)
{
    EXPECT_TRUE(channel.isOpen());
    channel.closeChannel();
    channel.closeChannel();
    EXPECT_FALSE(channel.isOpen());
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_NOT_OPEN);
    std::array<std::uint8_t, 65> in;
    EXPECT_EQ(channel.readBlocking(in), 404);
    EXPECT_EQ(channel.read1000(in), 404);
    EXPECT_EQ(device->commands("41 80"), 0u);
}

TEST_F(Channel, givesItsHandleBack)
{
    const int open = sim::openHandles();
    channel.closeChannel();
    EXPECT_EQ(sim::openHandles(), open - 2); // one to read with, one to write with
    {
        usbHid other(path);
        EXPECT_TRUE(other.open(usbHid::Mode::blocking));
        EXPECT_EQ(sim::openHandles(), open);
    }
    EXPECT_EQ(sim::openHandles(), open - 2);
}

TEST_F(Channel, opensWithoutTheMarkOfADongle)
{
    for (const char* mark : {"&ISDONGLE", "&isdongle", "&IsDongle"}) {
        usbHid other(path + mark);
        EXPECT_TRUE(other.open(usbHid::Mode::blocking)) << mark;
        EXPECT_EQ(other.path(), path + mark);
    }
}

TEST_F(Channel, writesReportsAsTheyAre)
{
    sim::takeTraffic(path);
    EXPECT_EQ(channel.writeWatched(report("51 00 00 00 04")), E_OK);
    EXPECT_EQ(channel.writeDirect(report("41 80")), E_OK);
    EXPECT_EQ(channel.writeWatched(bytes("07 01 02")), E_OK);
    EXPECT_EQ(sim::takeWritten(path), "51 00 00 00 04 | 41 80 | [07 01 02]");
}

TEST_F(Channel, copiesTheBytesOfAWatchedWrite)
{
    // The caller's buffer may go as soon as the call has returned, also after a time-out.
    conduct({.writeTime = 60s});
    {
        auto out = std::make_unique<ByteVector>(report("51 00 00 00 04"));
        EXPECT_EQ(channel.writeWatched(*out), E_WRITE_TIMEOUT);
        std::ranges::fill(*out, 0xEE);
    }
    device->forget();
    sim::releaseWrites(path);
    EXPECT_TRUE(device->awaitCommands("51 00 00 00 04"));
}

TEST_F(Channel, takesARefusedWatchedWriteForSent)
{
    conduct({.refuseWrites = true});
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_OK);
    EXPECT_EQ(channel.writeDirect(report("41 80")), E_WRITE_TIMEOUT);
    EXPECT_EQ(device->commands("41 80"), 0u);
}

TEST_F(Channel, takesAWriteToADeviceThatHasGoneForSent)
{
    sim::unplug(path);
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_OK);
    EXPECT_EQ(channel.writeDirect(report("41 80")), E_WRITE_TIMEOUT);
}

TEST_F(Channel, givesAStalledWriteOneSecond)
{
    conduct({.writeTime = 60s});
    const auto time =
        milliseconds([&] { EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT); });
    EXPECT_GE(time, 995);
    EXPECT_LT(time, 1990);
}

TEST_F(Channel, waitsForASlowWrite)
{
    conduct({.writeTime = 300ms});
    const auto time = milliseconds([&] { EXPECT_EQ(channel.writeWatched(report("41 80")), E_OK); });
    EXPECT_GE(time, 295);
    EXPECT_LT(time, 990);
    EXPECT_EQ(device->commands("41 80"), 1u);
}

TEST_F(Channel, isLockedWhileAWriteStalls)
{
    conduct({.writeTime = 60s});
    auto first = std::async(std::launch::async, [&] { return channel.writeWatched(report("41 80")); });
    EXPECT_TRUE(sim::awaitWritersInside(1));
    // The second waits until the first has given up, then for its own second.
    _error second = E_OK;
    const auto time = milliseconds([&] { second = channel.writeWatched(report("41 01")); });
    EXPECT_EQ(first.get(), E_WRITE_TIMEOUT);
    EXPECT_EQ(second, E_WRITE_TIMEOUT);
    EXPECT_GE(time, 1800);
    EXPECT_LT(time, 3900);
}

TEST_F(Channel, boundsTheWritersThatHang)
{
    // One write after the other stalls: threads that hang do not become more and more.
    conduct({.writeTime = 60s});
    std::vector<std::future<_error>> writes;
    const auto time = milliseconds([&] {
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT);
    });
    EXPECT_LT(time, 6900);
    EXPECT_LE(sim::writersInside(), 4);
    const int inside = sim::writersInside();
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT);
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT);
    EXPECT_LE(sim::writersInside(), std::max(inside, 4));
}

TEST_F(Channel, closesThoughAWriteHangs)
{
    conduct({.writeTime = 60s});
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT);
    EXPECT_LT(milliseconds([&] { channel.closeChannel(); }), 900);
    EXPECT_EQ(sim::openHandles(), 2); // the write that hangs keeps its device
    EXPECT_EQ(sim::writersInside(), 1);
    sim::releaseWrites(path);
}

TEST_F(Channel, recoversFromAStall)
{
    conduct({.writeTime = 60s});
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_WRITE_TIMEOUT);
    conduct({});
    sim::releaseWrites(path);
    EXPECT_TRUE(device->awaitCommands("41 80"));
    EXPECT_EQ(channel.writeWatched(report("41 01")), E_OK);
    EXPECT_EQ(device->commands("41 01"), 1u);
}

TEST_F(Channel, doesNotLoseAWriteThatWaitsForAnother)
{
    // hidapi has failed before, which has made it careful; the write that hangs then holds the next one up.
    conduct({.refuseWrites = true});
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_OK);
    conduct({.writeTime = 60s});
    EXPECT_EQ(channel.writeWatched(report("41 01")), E_WRITE_TIMEOUT);
    EXPECT_EQ(channel.writeWatched(report("41 02")), E_WRITE_TIMEOUT);
    EXPECT_EQ(channel.writeWatched(report("41 03")), E_WRITE_TIMEOUT);
    sim::takeTraffic(path);
    conduct({});
    sim::releaseWrites(path);
    EXPECT_TRUE(device->awaitCommands("41 03"));
    EXPECT_EQ(sim::takeWritten(path), "41 01 | 41 02 | 41 03");
}

TEST_F(Channel, writesOneReportAtATime)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 100; ++n)
                EXPECT_EQ(channel.writeWatched(report("51 01 02 03")), E_OK);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(device->commands("51 01 02 03"), 400u);
}

TEST_F(Channel, writesDirectlyPastTheLock)
{
    conduct({.writeTime = 60s});
    auto watched = std::async(std::launch::async, [&] { return channel.writeWatched(report("41 80")); });
    EXPECT_TRUE(sim::awaitWritersInside(1));
    auto direct = std::async(std::launch::async, [&] { return channel.writeDirect(report("41 01")); });
    EXPECT_TRUE(sim::awaitWritersInside(2)); // the lock of the watched write does not hold it
    sim::releaseWrites(path);
    EXPECT_EQ(watched.get(), E_OK);
    sim::releaseWrites(path);
    EXPECT_EQ(direct.get(), E_OK);
}

TEST_F(Channel, readsWhatComes)
{
    device->send("52 00 00 00 03");
    EXPECT_EQ(readOnce().substr(0, 14), "52 00 00 00 03");
    sim::inject(path, bytes("AA BB CC"));
    EXPECT_EQ(readOnce(), "AA BB CC");
    sim::inject(path, bytes("AA BB CC"));
    EXPECT_EQ(readOnce(2), "AA BB");
}

TEST_F(Channel, readsAsLongAsItTakes)
{
    auto reading = std::async(std::launch::async, [&] { return readOnce(); });
    EXPECT_EQ(reading.wait_for(400ms), std::future_status::timeout);
    sim::inject(path, bytes("01"));
    EXPECT_EQ(reading.get(), "01");
}

TEST_F(Channel, tellsOfAFailedRead)
{
    conduct({.readFailures = 2});
    EXPECT_EQ(readOnce(), "-1");
    EXPECT_EQ(readOnce(), "-1");
    sim::inject(path, bytes("01"));
    EXPECT_EQ(readOnce(), "01");
    sim::unplug(path);
    EXPECT_EQ(readOnce(), "-1");
}

TEST_F(Channel, readsWithALimit)
{
    std::array<std::uint8_t, 65> in{};
    sim::inject(path, bytes("52 00 07"));
    EXPECT_EQ(channel.read1000(in), 0);
    EXPECT_EQ(hex(std::span(in).first(3)), "52 00 07");
    sim::inject(path, bytes("53 00 08"));
    std::array<std::uint8_t, 2> two{};
    EXPECT_EQ(channel.read3000(two), 0);
    EXPECT_EQ(hex(two), "53 00");
    const auto time = milliseconds([&] { EXPECT_EQ(channel.read1000(in), 404); });
    EXPECT_GE(time, 995);
    EXPECT_LT(time, 1990);
    const auto longer = milliseconds([&] { EXPECT_EQ(channel.read3000(in), 404); });
    EXPECT_GE(longer, 2995);
    EXPECT_LT(longer, 4900);
    conduct({.failReads = true});
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(channel.read1000(in), 404);
                  EXPECT_EQ(channel.read3000(in), 404);
              }),
              900);
}

TEST_F(Channel, asksForAnInputReport)
{
    std::array<std::uint8_t, 5> in{0x09};
    sim::inject(path, bytes("0A 0B 0C 0D 0E 0F"));
    EXPECT_EQ(channel.getInputReport(in), 0);
    EXPECT_EQ(hex(in), "09 0A 0B 0C 0D");
    conduct({.failReads = true});
    EXPECT_EQ(channel.getInputReport(in), -3);
}

TEST_F(Channel, looksWithoutWaitingWhenItIsPolled)
{
    usbHid polled(path);
    ASSERT_TRUE(polled.open(usbHid::Mode::polled));
    std::array<std::uint8_t, 65> in{};
    EXPECT_LT(fastestOf(5, [&] { return milliseconds([&] { EXPECT_EQ(polled.readBlocking(in), 0); }); }), 90);
    sim::inject(path, bytes("52 00 07"));
    EXPECT_EQ(polled.readBlocking(in), 3);
    EXPECT_EQ(hex(std::span(in).first(3)), "52 00 07");
}

/// Opens a channel, begins to read on it, and measures until the read has come back from being ended.
template <class Read, class End>
std::int64_t timeToEnd(const std::string& path, Read read, End end)
{
    usbHid other(path);
    EXPECT_TRUE(other.open(usbHid::Mode::blocking));
    const int wakeups = sim::readWakeups(path);
    auto reading = std::async(std::launch::async, [&] { return read(other); });
    while (sim::readWakeups(path) == wakeups)
        std::this_thread::yield();
    return milliseconds([&] {
        end(other);
        EXPECT_EQ(reading.get(), 404);
    });
}

constexpr auto close = [](usbHid& channel) { channel.closeChannel(); };

TEST_F(Channel, closesWhileAReadWaits)
{
    std::array<std::uint8_t, 65> in{};
    const auto read = [&](usbHid& other) { return other.readBlocking(in); };
    EXPECT_LT(fastestOf(5, [&] { return timeToEnd(path, read, close); }), 150);
}

TEST_F(Channel, closesWhileLimitedReadsWait)
{
    std::array<std::uint8_t, 65> in{};
    const auto read = [&](usbHid& other) { return other.read3000(in); };
    EXPECT_LT(fastestOf(5, [&] { return timeToEnd(path, read, close); }), 150);
}

TEST_F(Channel, endsItsReadsOnDemand)
{
    std::array<std::uint8_t, 65> in{};
    const auto read = [&](usbHid& other) { return other.readBlocking(in); };
    const auto end = [](usbHid& other) { other.endReads(); };
    EXPECT_LT(fastestOf(5, [&] { return timeToEnd(path, read, end); }), 150);
    channel.endReads();
    EXPECT_EQ(channel.readBlocking(in), 404);
    EXPECT_EQ(channel.writeWatched(report("41 80")), E_OK); // it is still open
}

TEST_F(Channel, wakesAtMostTenTimesASecondWhileNothingComes)
{
    std::array<std::uint8_t, 65> in{};
    auto reading = std::async(std::launch::async, [&] { return channel.readBlocking(in); });
    const int before = sim::readWakeups(path);
    EXPECT_EQ(reading.wait_for(1s), std::future_status::timeout);
    EXPECT_LE(sim::readWakeups(path) - before, 11);
    channel.closeChannel();
}

} // namespace
