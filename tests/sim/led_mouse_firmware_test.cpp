#include "simulator/models.h"
#include "simulator/models/led_mouse.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

class RD215FirmwareTest : public OnTable<LedMouseFirmware> {
protected:
    RD215FirmwareTest() : OnTable(makeFirmware("rd215")) {}
};

/// The later effect modes.
class RD110FirmwareTest : public OnTable<LedMouseFirmware> {
protected:
    RD110FirmwareTest() : OnTable(makeFirmware("rd110")) {}
};

TEST_F(RD215FirmwareTest, isTheWiredMouseToo)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 00 00 00 03"), "51");
    EXPECT_EQ(ask("52 00"), "52 00 00 00 03");
    EXPECT_EQ(device.profile(), 3);
    EXPECT_EQ(ask("42 00 00 00 01 00 00 01 01"), "42");
    EXPECT_EQ(ask("42 10 00 00 01 00 00 01 01"), "42 10");
    EXPECT_EQ(device.profileAcknowledgements(), 1);
}

TEST_F(RD215FirmwareTest, keepsItsEffectMode)
{
    EXPECT_EQ(ask("52 28"), "");
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 01");
    for (const char* mode : {"00", "01", "02", "04", "B0", "FE"}) {
        EXPECT_EQ(ask(std::string("51 28 00 00 ") + mode), "51 28");
        EXPECT_EQ(ask("52 28"), mode == std::string("00") ? "52 28" : std::string("52 28 00 00 ") + mode);
    }
    EXPECT_EQ(ask("51 28 00 00 05"), "");
    EXPECT_EQ(ask("51 28 00 00 03"), "");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 FE");
}

TEST_F(RD110FirmwareTest, hasOneModeMore)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 05"), "51 28");
    EXPECT_EQ(ask("51 2B 00 00 05 01 02 03"), "51 2B 00 00 05");
    EXPECT_EQ(ask("51 28 00 00 06"), "");
}

TEST_F(RD215FirmwareTest, keepsTheParametersOfEachEffect)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 2B 00 00 01 3C A0 FF FF 80 11 22 33"), "51 2B 00 00 01");
    EXPECT_EQ(ask("51 2B 00 00 02 32 00 FF FF 40 44 55 66"), "51 2B 00 00 02");
    EXPECT_EQ(ask("52 2B 00 00 01"), "52 2B 00 00 01 3C A0 FF FF 80 11 22 33");
    EXPECT_EQ(ask("52 2B 00 00 02"), "52 2B 00 00 02 32 00 FF FF 40 44 55 66");
    EXPECT_EQ(ask("52 2B 00 00 04"), "52 2B 00 00 04 00 00 FF FF FF FF FF FF");
    EXPECT_EQ(ask("52 2B 00 00 05"), "");
    EXPECT_EQ(ask("51 2B 00 00 05"), "");
}

TEST_F(RD215FirmwareTest, keepsItsCustomColors)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("52 A8"), "52 A8");
    EXPECT_EQ(ask("51 A8 00 00 01 02 03 04 05 06 07"), "51 A8");
    EXPECT_EQ(ask("52 A8"), "52 A8 00 00 01 02 03 04 05 06");
}

TEST_F(RD215FirmwareTest, keepsEffectsByProfile)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 04"), "51 28");
    EXPECT_EQ(ask("51 00 00 00 02"), "51");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 01");
    EXPECT_EQ(ask("51 28 00 00 02"), "51 28");
    EXPECT_EQ(device.effects(0).mode, 4);
    EXPECT_EQ(device.effects(2).mode, 2);
    EXPECT_EQ(device.savedEffects(0).mode, 1);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 55"), "50 55");
    EXPECT_EQ(device.savedEffects(0).mode, 4);
    EXPECT_EQ(ask("50 10 00 00 00"), "50 10"); // profile 2
    EXPECT_EQ(device.effects(2).mode, 1);
    EXPECT_EQ(device.effects(0).mode, 4);
    device.powerOn();
    EXPECT_EQ(device.effects(2).mode, 2);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 10 00 00 FF"), "50 10");
    EXPECT_EQ(device.effects(0).mode, 1);
    EXPECT_EQ(device.savedEffects(2).mode, 1);
}

TEST_F(RD215FirmwareTest, showsTheFramesOfAHost)
{
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_EQ(zone("mouse"), "FFFFFF x2"); // its own effect
    EXPECT_EQ(ask("41 02"), "41 02");
    EXPECT_EQ(device.state(), RD210Firmware::State::live);
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_EQ(zone("mouse"), "010203 x2");
    EXPECT_EQ(ask("C0 01 02 00 01 0A 0B 0C 07 FF FF FF"), ""); // it has no LED 7
    EXPECT_EQ(zone("mouse"), "000000 0A0B0C");
    EXPECT_EQ(ask("C0 01 10 00 00 01 01 01"), "");
    EXPECT_EQ(zone("mouse"), "000000 0A0B0C");
    EXPECT_EQ(ask("C0 01"), "");
    EXPECT_EQ(zone("mouse"), "000000 x2");
    EXPECT_EQ(device.frames(), 3);
    EXPECT_EQ(ask("52 28"), ""); // no configuration meanwhile
    EXPECT_EQ(ask("41 00"), "41");
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(zone("mouse"), "FFFFFF x2");
}

TEST_F(RD215FirmwareTest, showsItsEffectStandingStill)
{
    EXPECT_EQ(device.picture(), (Picture{{"mouse", {{255, 255, 255}, {255, 255, 255}}}}));
    ask("41 80");
    ask("51 2B 00 00 02 32 00 FF FF 80 FF 40 20");
    ask("51 28 00 00 02");
    EXPECT_EQ(zone("mouse"), "802010 x2");
    ask("51 A8 00 00 01 02 03 04 05 06");
    ask("51 28 00 00 B0");
    EXPECT_EQ(zone("mouse"), "010203 040506");
    ask("51 28 00 00 FE");
    EXPECT_EQ(zone("mouse"), "000000 x2");
    EXPECT_EQ(device.picture().size(), 1U);
}

TEST_F(RD215FirmwareTest, tellsWhatItHasDone)
{
    EXPECT_EQ(happen("effect", {176}), "42 20 00 00 00 00 00 01");
    EXPECT_EQ(device.effects(0).mode, 176);
    EXPECT_EQ(happen("brightness", {77}), "42 20 00 00 00 00 00 00 01");
    EXPECT_EQ(device.effects(0).parameters.at(176)[4], 77);
    EXPECT_EQ(happen("switch", {3}), "42 20 00 03 01 00 00 01 01");
    EXPECT_EQ(device.profile(), 3);
    EXPECT_EQ(happen("profile", {1}), "42 20 00 01 01");
    EXPECT_FALSE(device.happen("effect", {5}));
    EXPECT_FALSE(device.happen("effect", {1, 2}));
    EXPECT_FALSE(device.happen("brightness", {256}));
    EXPECT_FALSE(device.happen("switch", {5}));
    EXPECT_EQ(device.events().back(), "switch N");
    EXPECT_EQ(device.events().front(), "dpi LEVEL");
}

} // namespace

} // namespace pyrux::sim
