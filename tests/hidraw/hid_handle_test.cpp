// The channel on the real hidapi.

#include "transport/hid_handle.h"

#include "tests/hidraw/fake_node.h"

#include <gtest/gtest.h>

#include <array>
#include <barrier>
#include <chrono>
#include <functional>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::array<std::uint8_t, 4> command{0x00, 0x41, 0x80, 0x07};

TEST(RealHidapi, readsAndWrites)
{
    FakeNode node;
    const auto handle = HidHandle::open(node.path(), false);
    ASSERT_TRUE(handle);
    EXPECT_EQ(handle->write(command), 4);
    EXPECT_EQ(handle->writeAside(command), 4);
    EXPECT_EQ(node.takeWritten(), (std::vector<Bytes>{{0x00, 0x41, 0x80, 0x07}, {0x00, 0x41, 0x80, 0x07}}));
    node.send({0x52, 0x00, 0x03});
    std::array<std::uint8_t, 65> report{};
    EXPECT_EQ(handle->readTimeout(report, 20000), 3);
    EXPECT_EQ(report[0], 0x52);
    EXPECT_EQ(report[2], 0x03);
    EXPECT_EQ(handle->readTimeout(report, 0), 0); // it is there once
    node.refuseWrites(true);
    EXPECT_EQ(handle->write(command), -1);
    node.unplug();
    EXPECT_EQ(handle->readTimeout(report, 20000), -1);
}

TEST(RealHidapi, leavesNothingOpen)
{
    FakeNode node;
    {
        const auto handle = HidHandle::open(node.path(), true);
        ASSERT_TRUE(handle);
        EXPECT_EQ(node.openDescriptors(), 3); // to read, to write, and to wait for input with
        handle->writeAside(command);
        EXPECT_EQ(node.openDescriptors(), 4);
    }
    EXPECT_EQ(node.openDescriptors(), 0);
    EXPECT_FALSE(HidHandle::open("/dev/hidraw899999", false));
}

#ifdef PYRUX_UNSANITIZED
/// hidapi frees a device's error text at the start of a read and at the end of a write. In each round all
/// three calls begin at once, and find the text of the round before.
TEST(RealHidapi, freesAnErrorTextOnce)
{
    constexpr int rounds = 20;
    FakeNode node;
    node.refuseWrites(true);
    const auto handle = HidHandle::open(node.path(), false);
    ASSERT_TRUE(handle);
    const SlowRelease slow(3ms);
    std::barrier begin(3);
    const auto inEachRound = [&](const std::function<void()>& call) {
        for (int i = 0; i < rounds; ++i) {
            begin.arrive_and_wait();
            call();
        }
    };
    std::thread writing([&] { inEachRound([&] { EXPECT_EQ(handle->write(command), -1); }); });
    std::thread writingAside([&] { inEachRound([&] { EXPECT_EQ(handle->writeAside(command), -1); }); });
    std::array<std::uint8_t, 65> report{};
    inEachRound([&] { EXPECT_EQ(handle->readTimeout(report, 10), 0); });
    writing.join();
    writingAside.join();
    EXPECT_EQ(SlowRelease::releases(), 2 * (rounds - 1)); // of each writer, all texts but the last
    EXPECT_EQ(SlowRelease::doubleReleases(), 0);
}
#endif

} // namespace
} // namespace pyrux::test
