#include "simulator/models/glow_hub2.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

using GlowHub2FirmwareTest = OnTable<GlowHub2Firmware>;

TEST_F(GlowHub2FirmwareTest, hasItsIdentity)
{
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.identity().pid, 0x1007);
    EXPECT_EQ(device.identity().product, "GLOW HUB II");
    EXPECT_EQ(device.identity().controlInterface, 0);
}

TEST_F(GlowHub2FirmwareTest, keepsTheEffectOfThePorts)
{
    EXPECT_EQ(ask("80 0B 01 0F"), "80 0B 03 0F 00 00 02 00 03");
    EXPECT_EQ(ask("80 0B 02 0F 08 07 04 01 00"), "80 0B 03");
    EXPECT_EQ(ask("80 0B 01 0F"), "80 0B 03 0F 08 07 04 01");
    EXPECT_EQ(ask("80 0B 02 0F 03 FF 00 00 03"), "80 0B 03");
    EXPECT_EQ(ask("80 0B 01 0F"), "80 0B 03 0F 03 FF 00 00 03");
}

TEST_F(GlowHub2FirmwareTest, refusesEffectsThatItDoesNotHave)
{
    for (const char* effect :
         {"09 00 00 00 00", "00 08 00 00 00", "00 00 05 00 00", "00 00 00 02 00", "00 00 00 00 04"})
        EXPECT_EQ(ask(std::string("80 0B 02 0F ") + effect), "80 0B 04 01") << effect;
    for (const char* effect : {"07 00 00", "00 05 00", "01 08 00", "01 00 05"})
        EXPECT_EQ(ask(std::string("80 0A 02 ") + effect), "80 0A 04 01") << effect;
    EXPECT_EQ(device.settings(), GlowHub2Firmware::Settings());
}

TEST_F(GlowHub2FirmwareTest, keepsTheEffectOfTheStrip)
{
    EXPECT_EQ(ask("80 0A 02 06 07 04"), "80 0A 03");
    EXPECT_EQ(ask("80 0A 01"), "80 0A 03 06 07 04");
    EXPECT_EQ(ask("80 0A 02 00 04 00"), "80 0A 03");
    EXPECT_EQ(ask("80 0A 01"), "80 0A 03 00 04");
}

TEST_F(GlowHub2FirmwareTest, keepsColors)
{
    EXPECT_EQ(ask("80 10 02 0F 0C " + counting(1, 36) + " EE"), "");
    EXPECT_EQ(ask("80 10 01 0F 0C"), "80 10 03 0F 0C " + counting(1, 36));
    EXPECT_EQ(ask("80 10 01 0F 0B"), "");
    EXPECT_EQ(ask("80 11 02 0A 0B 0C 0D"), "");
    EXPECT_EQ(ask("80 11 01"), "80 11 03 0A 0B 0C");
}

TEST_F(GlowHub2FirmwareTest, keepsLayerAndFollowing)
{
    EXPECT_EQ(ask("80 17 05"), "");
    EXPECT_EQ(device.settings().layer, 5);
    EXPECT_EQ(ask("80 18 02 01 01 04"), "");
    EXPECT_EQ(ask("80 18 01"), "80 18 03 01 01 04");
}

TEST_F(GlowHub2FirmwareTest, showsTheFramesOfAHost)
{
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(ask("80 16 02 02 03 01 02 03"), "");
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(zone("port 4"), "010203 x12");
    EXPECT_EQ(zone("port 1"), "000000 x12");
    EXPECT_EQ(zone("strip"), "000000");
    ask("80 16 02 01 00 04 05 06");
    EXPECT_EQ(zone("strip"), "040506");
    ask("80 16 02 02 04 07 08 09"); // no such port
    ask("80 16 02 03 00 07 08 09"); // no such kind
    ask("80 16 01 02 00 07 08 09"); // no write
    EXPECT_EQ(zone("port 1"), "000000 x12");
    EXPECT_EQ(device.frames(), 2);
    EXPECT_EQ(ask("80 16 02 04"), "");
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(zone("strip"), "FF0000");
}

TEST_F(GlowHub2FirmwareTest, showsItsEffectsStandingStill)
{
    EXPECT_EQ(device.picture().size(), 5U);
    EXPECT_EQ(zone("port 1").substr(0, 20), "FF0000 FF7F00 FFFF00");
    ask("80 0B 02 0F 01 05 00 00 01");
    EXPECT_EQ(zone("port 3"), "00007F x12");
    ask("80 10 02 0F 0C " + counting(1, 36));
    ask("80 0B 02 0F 08 00 00 00 00");
    EXPECT_EQ(zone("port 2").substr(0, 13), "010203 040506");
    ask("80 0A 02 01 03");
    EXPECT_EQ(zone("strip"), "00FF00");
    ask("80 11 02 0A 0B 0C");
    ask("80 0A 02 04");
    EXPECT_EQ(zone("strip"), "0A0B0C");
}

TEST_F(GlowHub2FirmwareTest, keepsWhatIsSetWithoutPower)
{
    ask("80 0B 02 0F 08 07 04 01 00");
    ask("80 16 02 02 03 01 02 03");
    device.powerOn();
    EXPECT_EQ(device.settings().effect[0], 8);
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(device.frames(), 0);
}

TEST_F(GlowHub2FirmwareTest, tellsWhatItHasDone)
{
    EXPECT_EQ(happen("effect", {8}), "80 0B 03 0F 08 00 02 00 03");
    EXPECT_EQ(happen("rgb", {6}), "80 0A 03 06 00 02");
    EXPECT_EQ(device.settings().effect[0], 8);
    EXPECT_EQ(device.settings().strip[0], 6);
    EXPECT_FALSE(device.happen("effect", {9}));
    EXPECT_FALSE(device.happen("rgb", {7}));
    EXPECT_FALSE(device.happen("rgb", {-1}));
    EXPECT_FALSE(device.happen("rgb", {1, 2}));
    EXPECT_FALSE(device.happen("dpi", {1}));
    EXPECT_EQ(device.events(), (std::vector<std::string>{"effect MODE", "rgb MODE"}));
}

} // namespace

} // namespace pyrux::sim
