// RD210: start and end, profiles, reset, save, recording, surface learning.

#include "tests/support/debug_log.h"
#include "tests/support/handles.h"
#include "tests/support/mouse.h"

#include <gtest/gtest.h>

namespace pyrux::test {
namespace {

/// A bank without a combo button, of which the setting at byte 16 is 7.
constexpr const char* bank = "52 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 07";

TEST(RD210End, takesEveryByteButZeroForUnplugged)
{
    Mouse mouse;
    EXPECT_EQ(mouse->exit_device(0x80), E_OK);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210End, closesTheHandle)
{
    const int before = settledHandles();
    Mouse mouse;
    EXPECT_EQ(sim::openHandles(), before + 2);
    mouse->exit_device(0);
    EXPECT_TRUE(awaitHandles(before));
}

TEST(RD210ChangeProfileId, writesTheProfile)
{
    Mouse mouse;
    EXPECT_EQ(mouse->changeProfileId(4), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 51 00 00 00 04"));
    EXPECT_EQ(mouse->changeProfileId(0), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 51 00 00 00 00"));
}

TEST(RD210ChangeProfileId, refusesASixthProfileWithoutAWordToTheDevice)
{
    Mouse mouse;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(mouse->changeProfileId(5), E_INVALID_SET); }),
              (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::changeProfileId, #",
                     "[PYRUX][RD210]PYRUX::PYRUX_RD210::changeProfileId, ret = -2"}));
    EXPECT_EQ(mouse->changeProfileId(255), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210ChangeProfileId, logsTheProfile)
{
    Mouse mouse;
    EXPECT_EQ(
        debugLinesOf([&] { mouse->changeProfileId(3); }),
        (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::changeProfileId, #", "[PYRUX][RD210]change profile id = 3",
               "[PYRUX][RD210]PYRUX::PYRUX_RD210::changeProfileId, ret = 0"}));
}

TEST(RD210GetCurrProfileId, readsTheProfile)
{
    Mouse mouse;
    mouse.device->answer("52 00", "52 00 AA BB 03 CC");
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(
        debugLinesOf([&] { EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK); }),
        (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::getCurrProfileId, #", "[PYRUX][RD210]get profile id = 3",
               "[PYRUX][RD210]PYRUX::PYRUX_RD210::getCurrProfileId, ret = 0"}));
    EXPECT_EQ(profile, 3);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 00"));
}

TEST(RD210GetCurrProfileId, needsAPlaceForIt)
{
    Mouse mouse;
    EXPECT_EQ(mouse->getCurrProfileId(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210ResetProfile, restoresAllProfiles)
{
    Mouse mouse;
    EXPECT_EQ(mouse->resetProfile(1), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 01 | 50 10 00 00 FF | 41 00"));
    EXPECT_EQ(mouse->resetProfile(0x40), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 01 | 50 10 00 00 FF | 41 00"));
}

TEST(RD210ResetProfile, restoresAndSavesTheCurrentProfile)
{
    Mouse mouse;
    EXPECT_EQ(mouse->resetProfile(0), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 01 | 50 10 00 00 00 | 50 55 | 41 00"));
}

TEST(RD210ResetPartial, restoresTheFirstPart)
{
    Mouse mouse;
    EXPECT_EQ(mouse->resetPartial(0), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 51 98 02 00 00 00"));
}

TEST(RD210ResetPartial, restoresTheKeysAndTheWheel)
{
    Mouse mouse;
    EXPECT_EQ(mouse->resetPartial(1), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 51 98 04 00 00 00 | 51 22 00 00 C0 C0"));
}

/// What part 2 writes after the wheel bytes: a report of FF with its report id, the setting, the bank with
/// its combo button, zeros and the value 3.
std::string partTwo(const std::string& wheel)
{
    std::string filled = "[FF 51 9B 00 00";
    for (int i = 5; i < 65; ++i)
        filled += " FF";
    return "41 80 | 52 22 | 51 98 10 | 51 22 00 00 " + wheel + " | " + filled +
           "] | 51 F0 00 00 01 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 03";
}

TEST(RD210ResetPartial, restoresThePerformance)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    mouse.device->answers("52 22", {"52 22 00 00 10 C0", "52 22 00 00 C0 20", "52 22 00 00 20 10"});
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(mouse.written(), wire(partTwo("10 C0")));
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(mouse.written(), wire(partTwo("C0 10")));
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(mouse.written(), wire(partTwo("10 10")));
}

TEST(RD210ResetPartial, takesAnUnknownWheelStateForOn)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    mouse.device->answers("52 22", {"52 22 00 00 10 30", "52 22 00 00 00 10"});
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(mouse.written(), wire(partTwo("C0 C0")));
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(mouse.written(), wire(partTwo("C0 C0")));
}

TEST(RD210ResetPartial, keepsTheComboButton)
{
    Mouse mouse;
    mouse.device->answer("52 10", "52 10 AA AA AA AA AA AA AA AA AA AA 05 AA AA AA 07 AA");
    mouse.device->answer("52 22", "52 22 00 00 10 10");
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_TRUE(mouse.written().ends_with("| 51 10 00 00 00 00 00 00 00 00 00 00 05 00 00 00 03"));
}

TEST(RD210ResetPartial, refusesAFourthPart)
{
    Mouse mouse;
    EXPECT_EQ(mouse->resetPartial(3), E_INVALID_SET);
    EXPECT_EQ(mouse->resetPartial(255), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210StartRecordMacro, opensTheRecording)
{
    Mouse mouse;
    EXPECT_EQ(mouse->startRecordMacro(), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 01 | 51 22 00 00 C0 C0"));
}

TEST(RD210StopRecordMacro, goesBackToConfiguration)
{
    Mouse mouse;
    EXPECT_EQ(mouse->stopRecordMacro(), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80"));
}

TEST(RD210SaveConfig, storesTheWorkingMemory)
{
    Mouse mouse;
    EXPECT_EQ(mouse->saveConfig(), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 01 | 50 55 | 41 00"));
}

TEST(RD210SurfaceLearning, startsAndStops)
{
    Mouse mouse;
    EXPECT_EQ(mouse->startSurfaceLearning(), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 80 01 00 00 01"));
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK);
    EXPECT_EQ(mouse.written(), wire("80 01"));
}

TEST(RD210SurfaceLearning, tellsItsState)
{
    Mouse mouse;
    mouse.device->answer("80 00", "80 00 11 22 5A 33");
    std::uint8_t status = 0xEE;
    EXPECT_EQ(mouse->getSurfaceLearningStatus(&status), E_OK);
    EXPECT_EQ(status, 0x5A);
    EXPECT_EQ(mouse.written(), wire("41 80 | 80 00"));
    EXPECT_EQ(mouse->getSurfaceLearningStatus(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

} // namespace
} // namespace pyrux::test
