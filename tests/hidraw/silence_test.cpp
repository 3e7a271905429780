// What a silent device costs, and how soon it is let go and heard again.

#include "tests/hidraw/fake_node.h"
#include "transport/reader_thread.h"
#include "transport/usb_hid.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// First bytes of the reports.
class Heard {
public:
    void put(int byte)
    {
        const std::lock_guard lock(mutex);
        bytes.push_back(byte);
        changed.notify_all();
    }

    /// -1: none has come.
    int next()
    {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, 20s, [&] { return !bytes.empty(); }))
            return -1;
        const int first = bytes.front();
        bytes.pop_front();
        return first;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<int> bytes;
};

class Silence : public testing::TestWithParam<usbHid::Mode> {
protected:
    Silence()
    {
        EXPECT_TRUE(channel.open(GetParam()));
        EXPECT_TRUE(reader.start([this](const Reply& report) { heard.put(report[0]); }));
        awaitSilence();
    }
    ~Silence() override { reader.stop(); }

    void awaitSilence() const
    {
        while (!node.isAwaited())
            std::this_thread::yield();
    }

    FakeNode node;
    usbHid channel{node.path()};
    Heard heard;
    ReaderThread reader{channel, {.survivedFailures = 0, .polledPause = 5ms}};
};

TEST_P(Silence, takesTwoWakeUpsASecondAtMost)
{
    const int before = pollWakeups();
    std::this_thread::sleep_for(2s); // the time is what is measured in
    EXPECT_LE(pollWakeups() - before, 4);
}

TEST_P(Silence, endsWithAReportEachTime)
{
    for (const int byte : {0x52, 0x53, 0x54}) {
        node.send({std::uint8_t(byte), 0x01});
        EXPECT_EQ(heard.next(), byte);
        awaitSilence();
    }
}

/// Neither the reports of a busy time, which also wait on the descriptor that is only waited with, nor one
/// that comes at any moment on the way to silence is told of late.
TEST_P(Silence, losesNoReportOnTheWay)
{
    for (int i = 0; i < 200; ++i)
        node.send({std::uint8_t(i)});
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(heard.next(), i);
    int late = 0;
    for (int i = 0; i < 20; ++i) {
        std::this_thread::sleep_for(99ms + i * 100us); // to around the end of the first slice
        const auto sent = Clock::now();
        node.send({std::uint8_t(i)});
        EXPECT_EQ(heard.next(), i);
        late += Clock::now() - sent > 900ms;
    }
    EXPECT_LE(late, 2); // a busy machine's own
}

TEST_P(Silence, isLeftAtOnceByClosing)
{
    const auto start = Clock::now();
    channel.closeChannel();
    EXPECT_TRUE(reader.stopWithin(20s));
    EXPECT_LT(Clock::now() - start, 150ms);
}

TEST_P(Silence, isLeftAtOnceByStopping)
{
    const auto start = Clock::now();
    reader.stop();
    EXPECT_LT(Clock::now() - start, 150ms);
    EXPECT_TRUE(channel.isOpen());
}

TEST_P(Silence, endsWithTheDevice)
{
    node.unplug();
    while (!reader.ended())
        std::this_thread::yield();
}

INSTANTIATE_TEST_SUITE_P(Modes, Silence, testing::Values(usbHid::Mode::blocking, usbHid::Mode::polled));

} // namespace
} // namespace pyrux::test
