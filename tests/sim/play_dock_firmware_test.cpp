#include "simulator/models/play_dock.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

using PlayDockFirmwareTest = OnTable<PlayDockFirmware>;

TEST_F(PlayDockFirmwareTest, hasItsIdentity)
{
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.identity().pid, 0x0153);
    EXPECT_EQ(device.identity().product, "PLAY DOCK");
    EXPECT_EQ(device.identity().controlInterface, 0);
}

TEST_F(PlayDockFirmwareTest, keepsTheSettingsOfEachEffect)
{
    const std::string settings = "02 0A 0B 0C 04 " + counting(0x40, 21);
    EXPECT_EQ(ask("80 03 02 FF 08 " + settings), "80 03 03");
    EXPECT_EQ(ask("80 03 02 FF 00 07 01 02 03 02"), "80 03 03");
    EXPECT_EQ(ask("80 03 01 FF"), "80 03 03 00 07 01 02 03 02");
    EXPECT_EQ(ask("80 04 01 FF 08"), "80 04 03 08 " + settings);
    EXPECT_EQ(ask("80 06 02 FF 08"), "80 06 03");
    EXPECT_EQ(ask("80 03 01 FF"), "80 03 03 08 " + settings);
    EXPECT_EQ(ask("80 04 01 FF 05"), "80 04 03 05 01 FF FF FF 01");
}

TEST_F(PlayDockFirmwareTest, refusesWhatItDoesNotHave)
{
    EXPECT_EQ(ask("80 01 02 02"), "80 01 04 01");
    EXPECT_EQ(ask("80 03 02 FF 09"), "80 03 04 01");
    EXPECT_EQ(ask("80 03 02 FF 01 04"), "80 03 04 01");
    EXPECT_EQ(ask("80 03 02 FF 00 08"), "80 03 04 01");
    EXPECT_EQ(ask("80 04 01 FF 09"), "80 04 04 01");
    EXPECT_EQ(ask("80 06 02 FF 09"), "80 06 04 01");
    EXPECT_EQ(ask("80 07 02 FF"), "");
    EXPECT_EQ(ask("41 80"), "");
    EXPECT_EQ(device.settings(), PlayDockFirmware::Settings());
}

TEST_F(PlayDockFirmwareTest, keepsTheBottomsColor)
{
    EXPECT_EQ(ask("80 11 01 FF"), "80 11 03 FF FF FF");
    EXPECT_EQ(ask("80 11 02 FF 01 02 03"), "80 11 03");
    EXPECT_EQ(ask("80 11 01 FF"), "80 11 03 01 02 03");
    EXPECT_EQ(zone("bottom"), "010203");
}

TEST_F(PlayDockFirmwareTest, savesAndResets)
{
    EXPECT_EQ(ask("80 B4 01"), "80 B4 03 07 01");
    ask("80 06 02 FF 05");
    EXPECT_EQ(ask("80 B0 02"), "80 B0 03");
    ask("80 06 02 FF 06");
    EXPECT_EQ(ask("80 B1 02"), "80 B1 03");
    EXPECT_EQ(device.settings().effect, 5);
    ask("80 06 02 FF 06");
    device.powerOn();
    EXPECT_EQ(device.settings().effect, 5);
    EXPECT_EQ(ask("80 B6 02"), "80 B6 03");
    EXPECT_EQ(device.settings(), PlayDockFirmware::Settings());
    EXPECT_EQ(device.savedSettings(), PlayDockFirmware::Settings());
}

TEST_F(PlayDockFirmwareTest, showsTheFramesOfAHost)
{
    EXPECT_EQ(ask("80 09 01 01 01 02 03"), "");
    EXPECT_EQ(device.frames(), 0);
    EXPECT_EQ(ask("80 01 02 01"), "80 01 03");
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(zone("zone 1"), "000000");
    EXPECT_EQ(ask("80 09 01 01 01 02 03"), "");
    EXPECT_EQ(device.flag(), 1);
    EXPECT_EQ(ask("80 09 03 00 04 05 06"), "");
    EXPECT_EQ(device.flag(), 0);
    EXPECT_EQ(ask("80 09 00 01 FF FF FF"), "");
    EXPECT_EQ(ask("80 09 04 01 FF FF FF"), "");
    EXPECT_EQ(device.frames(), 2);
    EXPECT_EQ(device.picture(), (Picture{{"zone 1", {{1, 2, 3}}},
                                         {"zone 2", {{}}},
                                         {"zone 3", {{4, 5, 6}}},
                                         {"bottom", {{255, 255, 255}}}}));
    EXPECT_EQ(ask("80 01 02"), "80 01 03");
    EXPECT_FALSE(device.driven());
    ask("80 03 02 FF 02 00 07 08 09");
    EXPECT_EQ(zone("zone 3"), "070809");
}

TEST_F(PlayDockFirmwareTest, tellsWhatItHasDone)
{
    const std::string settings = "02 0A 0B 0C 04 " + counting(0x40, 21);
    ask("80 03 02 FF 08 " + settings);
    EXPECT_EQ(happen("effect", {8}), "80 10 03 FF 08 " + settings);
    EXPECT_EQ(happen("speed", {3}), "80 10 03 FF 08 03 0A 0B 0C 04 " + counting(0x40, 21));
    EXPECT_EQ(happen("bottom", {1, 2, 3}), "80 12 03 FF 01 02 03");
    EXPECT_EQ(zone("bottom"), "010203");
    EXPECT_FALSE(device.happen("speed", {4}));
    EXPECT_EQ(happen("effect", {0}).substr(0, 17), "80 10 03 FF 00 01");
    EXPECT_EQ(happen("speed", {7}).substr(0, 17), "80 10 03 FF 00 07");
    EXPECT_FALSE(device.happen("speed", {8}));
    EXPECT_FALSE(device.happen("effect", {9}));
    EXPECT_FALSE(device.happen("effect", {-1}));
    EXPECT_FALSE(device.happen("bottom", {1, 2, 256}));
    EXPECT_FALSE(device.happen("bottom", {1, 2}));
    EXPECT_FALSE(device.happen("dpi", {1}));
    EXPECT_EQ(device.events(),
              (std::vector<std::string>{"effect MODE", "speed VALUE", "bottom RED GREEN BLUE"}));
}

} // namespace

} // namespace pyrux::sim
