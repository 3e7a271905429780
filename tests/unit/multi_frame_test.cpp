// Streams of bytes over several frames.

#include "transport/multi_frame.h"

#include "tests/support/bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <vector>

namespace pyrux::test {
namespace {

std::vector<std::uint8_t> counting(std::size_t count)
{
    std::vector<std::uint8_t> values(count);
    std::iota(values.begin(), values.end(), std::uint8_t{1});
    return values;
}

TEST(MultiFrame, countsItsFrames)
{
    constexpr FrameShape shape{.firstData = 6, .nextData = 2}; // room for 59 bytes, then for 63
    EXPECT_EQ(shape.frames(0), 1U);
    EXPECT_EQ(shape.frames(59), 1U);
    EXPECT_EQ(shape.frames(60), 2U);
    EXPECT_EQ(shape.frames(122), 2U);
    EXPECT_EQ(shape.frames(123), 3U);
    EXPECT_EQ(frameNumber(0, 1), 0x80);
    EXPECT_EQ(frameNumber(0, 3), 0x00);
    EXPECT_EQ(frameNumber(1, 3), 0x01);
    EXPECT_EQ(frameNumber(2, 3), 0x82);
}

TEST(MultiFrame, fillsAFrameBeforeTheNext)
{
    std::array<Report, 3> frames{Report{0xEE, 0x10, 0x02, 0x33, 0x30}, Report{0xEE}, Report{0xEE}};
    cutStream({.firstData = 6, .nextData = 2}, counting(144), frames);
    EXPECT_EQ(hex(frames[0].bytes().first(8)), "00 00 10 02 33 30 01 02");
    EXPECT_EQ(hex(frames[0].bytes().last(2)), "3A 3B");
    EXPECT_EQ(hex(frames[1].bytes().first(4)), "00 01 3C 3D");
    EXPECT_EQ(hex(frames[1].bytes().last(2)), "79 7A");
    EXPECT_EQ(hex(frames[2].bytes().first(4)), "00 82 7B 7C");
    EXPECT_EQ(hex(frames[2].bytes().subspan(22, 4)), "8F 90 00 00");
}

TEST(MultiFrame, comesTogetherAgain)
{
    constexpr FrameShape shape{.firstData = 6, .nextData = 2};
    const std::vector<std::uint8_t> sent = counting(144);
    std::array<Report, 3> frames;
    cutStream(shape, sent, frames);
    std::array<Reply, 3> replies;
    for (std::size_t i = 0; i < frames.size(); ++i)
        replies[i] = Reply(frames[i].payload());
    std::vector<std::uint8_t> got(144);
    joinStream(shape, replies, got);
    EXPECT_EQ(got, sent);
}

} // namespace
} // namespace pyrux::test
