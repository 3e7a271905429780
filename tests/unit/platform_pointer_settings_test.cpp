#include "platform/pointer_settings.h"

#include <gtest/gtest.h>

using namespace pyrux::platform;

namespace {

/// Leaves the settings as it found them.
class PlatformPointerSettings : public testing::Test {
protected:
    ~PlatformPointerSettings() override
    {
        setPointerSpeed(*speedBefore);
        setDoubleClickTimeMs(*timeBefore);
    }

    std::optional<int> speedBefore = pointerSpeed();
    std::optional<int> timeBefore = doubleClickTimeMs();
};

} // namespace

TEST_F(PlatformPointerSettings, speedReadsBack)
{
    for (int speed = 1; speed <= 20; ++speed) {
        EXPECT_TRUE(setPointerSpeed(speed));
        EXPECT_EQ(pointerSpeed(), speed);
    }
}

TEST_F(PlatformPointerSettings, speedOutOfRangeIsRefused)
{
    ASSERT_TRUE(setPointerSpeed(4));
    EXPECT_FALSE(setPointerSpeed(0));
    EXPECT_FALSE(setPointerSpeed(21));
    EXPECT_EQ(pointerSpeed(), 4);
}

TEST_F(PlatformPointerSettings, doubleClickTimeReadsBack)
{
    for (const int ms : {900, 550, 200}) {
        EXPECT_TRUE(setDoubleClickTimeMs(ms));
        EXPECT_EQ(doubleClickTimeMs(), ms);
    }
}

TEST_F(PlatformPointerSettings, doubleClickTimeOutOfRangeIsRefused)
{
    ASSERT_TRUE(setDoubleClickTimeMs(340));
    EXPECT_FALSE(setDoubleClickTimeMs(0));
    EXPECT_FALSE(setDoubleClickTimeMs(-1));
    EXPECT_EQ(doubleClickTimeMs(), 340);
}
