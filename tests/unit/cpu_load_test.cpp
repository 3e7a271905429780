#include "services/cpu_load.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using pyrux::CpuLoad;
using pyrux::platform::CpuTimes;

TEST(CpuLoad, measuresFromOneCallToTheNext)
{
    CpuLoad load;
    EXPECT_EQ(load.percent(CpuTimes{.total = 1000, .idle = 750}), 25); // since the start of the system
    EXPECT_EQ(load.percent(CpuTimes{.total = 1100, .idle = 760}), 90);
    EXPECT_EQ(load.percent(CpuTimes{.total = 1200, .idle = 760}), 100);
    EXPECT_EQ(load.percent(CpuTimes{.total = 1300, .idle = 860}), 0);
}

TEST(CpuLoad, isCutToAWholeNumber)
{
    CpuLoad load;
    EXPECT_EQ(load.percent(CpuTimes{.total = 1000, .idle = 1}), 99);
    EXPECT_EQ(load.percent(CpuTimes{.total = 2000, .idle = 992}), 0);
    EXPECT_EQ(load.percent(CpuTimes{.total = 3000, .idle = 1981}), 1);
    EXPECT_EQ(load.percent(CpuTimes{.total = 3003, .idle = 1982}), 66);
}

/// Deliberate: no exact share, but the one of 32-bit floats.
TEST(CpuLoad, isCountedInFloats)
{
    struct {
        std::uint64_t idle;
        std::uint64_t total;
        int percent;
    } constexpr shares[]{
        {6, 10, 39},   {8, 10, 19},   {7, 10, 30},   {3, 5, 39},
        {17, 20, 14},  {33, 100, 66}, {34, 100, 66}, {46, 100, 53},
        {66, 200, 66}, {99, 100, 0},  {98, 100, 1},  {990, 1000, 0},
        {1, 1000, 99}, {0, 5, 100},   {5, 5, 0},     {70'000'001, 100'000'000, 30}, // 29 in whole numbers
    };
    for (const auto& share : shares) {
        CpuLoad load;
        EXPECT_EQ(load.percent(CpuTimes{.total = share.total, .idle = share.idle}), share.percent)
            << share.idle << " of " << share.total;
    }
}

TEST(CpuLoad, isFullWhenNoTimeWasCounted)
{
    CpuLoad load;
    EXPECT_EQ(load.percent(CpuTimes{}), 100);
    EXPECT_EQ(load.percent(CpuTimes{.total = 10, .idle = 10}), 0);
    EXPECT_EQ(load.percent(CpuTimes{.total = 10, .idle = 10}), 100);
}

TEST(CpuLoad, isNeverBelowZero)
{
    CpuLoad load;
    EXPECT_EQ(load.percent(CpuTimes{.total = 100, .idle = 120}), 0);
}

TEST(CpuLoad, isZeroWithoutCountersAndKeepsTheLast)
{
    CpuLoad load;
    EXPECT_EQ(load.percent({}), 0);
    EXPECT_EQ(load.percent(CpuTimes{.total = 1000, .idle = 500}), 50);
    EXPECT_EQ(load.percent({}), 0);
    EXPECT_EQ(load.percent(CpuTimes{.total = 1100, .idle = 570}), 30);
}

TEST(CpuLoad, takesTimesOfAnyLength)
{
    CpuLoad load;
    constexpr std::uint64_t longest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(load.percent(CpuTimes{.total = longest, .idle = longest / 4}), 75);
}

TEST(CpuLoad, isSharedByTheProcess)
{
    EXPECT_EQ(&CpuLoad::shared(), &CpuLoad::shared());
}

} // namespace
