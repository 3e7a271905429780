// Reads on a thread of the host's, whose signals interrupt them.

#include "tests/hidraw/fake_node.h"
#include "transport/usb_hid.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

std::atomic<int> handled{0};

/// Sends SIGUSR1 to this thread until `count` have been handled, and calls `last` then.
class Interrupter {
public:
    template <class Last>
    Interrupter(int count, Last last)
    {
        handled = 0;
        struct sigaction action = {}; // without SA_RESTART
        action.sa_handler = [](int) { ++handled; };
        sigaction(SIGUSR1, &action, &before);
        thread = std::thread([=, host = pthread_self()] {
            // Each signal is a call that comes back: the next one waits until the call has been made anew.
            for (int sent = 0; sent < count; ++sent) {
                const int wakeups = pollWakeups();
                pthread_kill(host, SIGUSR1);
                while (handled <= sent || pollWakeups() == wakeups)
                    std::this_thread::yield();
            }
            last();
        });
    }
    ~Interrupter()
    {
        thread.join();
        sigaction(SIGUSR1, &before, nullptr);
    }
    Interrupter(const Interrupter&) = delete;
    Interrupter& operator=(const Interrupter&) = delete;

private:
    struct sigaction before = {};
    std::thread thread;
};

TEST(Signals, doNotFailAWaitForAReport)
{
    FakeNode node;
    usbHid channel(node.path());
    ASSERT_TRUE(channel.open(usbHid::Mode::blocking));
    std::array<std::uint8_t, 65> report{};
    {
        const Interrupter signals(30, [&] { node.send({0x52, 0x01}); });
        EXPECT_EQ(channel.readBlocking(report), 2);
    }
    EXPECT_EQ(report[0], 0x52);
    {
        const Interrupter signals(30, [&] { node.send({0x53, 0x01}); });
        EXPECT_EQ(channel.read3000(report), 0);
    }
    EXPECT_EQ(report[0], 0x53);
}

TEST(Signals, doNotCutALimitShort)
{
    FakeNode node;
    usbHid channel(node.path());
    ASSERT_TRUE(channel.open(usbHid::Mode::blocking));
    std::array<std::uint8_t, 65> report{};
    const auto start = std::chrono::steady_clock::now();
    {
        const Interrupter signals(5, [] {});
        EXPECT_EQ(channel.read1000(report), nothingRead);
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1000ms);
}

} // namespace
} // namespace pyrux::test
