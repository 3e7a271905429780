// The system's pointer speed and double-click time as the indices of a performance record.

#include "devices/mice/system_pointer.h"

#include "platform/pointer_settings.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace pyrux;

/// Leaves the settings as they were: on Windows they are the desktop's.
class SystemPointer : public testing::Test {
protected:
    ~SystemPointer() override
    {
        platform::setPointerSpeed(speed.value_or(10));
        platform::setDoubleClickTimeMs(time.value_or(550));
    }
    const std::optional<int> speed = platform::pointerSpeed();
    const std::optional<int> time = platform::doubleClickTimeMs();
};

constexpr std::array<int, 12> speeds{10, 1, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20};
constexpr std::array<int, 12> times{550, 900, 830, 760, 690, 620, 550, 480, 410, 340, 270, 200};

TEST_F(SystemPointer, isSetByIndex)
{
    for (std::size_t index = 0; index < 12; ++index) {
        EXPECT_TRUE(setSystemPointer(std::uint8_t(index), std::uint8_t(11 - index)));
        EXPECT_EQ(platform::pointerSpeed(), speeds[index]) << index;
        EXPECT_EQ(platform::doubleClickTimeMs(), times[11 - index]) << index;
    }
}

TEST_F(SystemPointer, takesTheMiddleForUnknownIndices)
{
    for (const int index : {0, 12, 13, 100, 255}) {
        EXPECT_TRUE(setSystemPointer(1, 1));
        EXPECT_TRUE(setSystemPointer(std::uint8_t(index), std::uint8_t(index)));
        EXPECT_EQ(platform::pointerSpeed(), 10) << index;
        EXPECT_EQ(platform::doubleClickTimeMs(), 550) << index;
    }
}

TEST_F(SystemPointer, readsASpeedBetweenTwoRowsAsTheLower)
{
    constexpr std::array<int, 21> indices{0, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10, 10, 11};
    for (int value = 1; value <= 20; ++value) {
        ASSERT_TRUE(platform::setPointerSpeed(value));
        EXPECT_EQ(systemPointerSpeed(), indices[std::size_t(value)]) << value;
    }
}

TEST_F(SystemPointer, readsTheDoubleClickTimeByRanges)
{
    struct Range {
        int from, to, index;
    };
    for (const Range& range :
         {Range{900, 1000, 1}, Range{830, 899, 2}, Range{760, 829, 3}, Range{690, 759, 4}, Range{620, 689, 5},
          Range{550, 619, 6}, Range{480, 549, 7}, Range{410, 479, 8}, Range{340, 409, 9}, Range{270, 339, 10},
          Range{100, 269, 11}})
        for (const int value : {range.from, (range.from + range.to) / 2, range.to}) {
            ASSERT_TRUE(platform::setDoubleClickTimeMs(value));
            EXPECT_EQ(systemDoubleClickSpeed(), range.index) << value;
        }
}

} // namespace
