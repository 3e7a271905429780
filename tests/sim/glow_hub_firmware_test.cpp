#include "simulator/models/glow_hub.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

class GlowHubFirmwareTest : public OnTable<GlowHubFirmware> {
protected:
    using Driver = GlowHubFirmware::Driver;

    /// 144 color bytes from `first` on, in three reports with these heads.
    void paint(const std::string& head, std::uint8_t first)
    {
        const std::size_t room = head.size() == 11 ? 60 : 59; // after four bytes or five
        EXPECT_EQ(ask(head + " " + counting(first, room)), "");
        EXPECT_EQ(ask("01 " + counting(std::uint8_t(first + room), 63)), "");
        EXPECT_EQ(ask("82 " + counting(std::uint8_t(first + room + 63), 144 - 63 - room)), "");
    }

    /// The picture of such a port.
    static std::vector<Light> painted(std::uint8_t first)
    {
        std::vector<Light> leds;
        for (std::size_t i = 0; i < 48; ++i) {
            const std::size_t red = first + 3 * i;
            leds.push_back({std::uint8_t(red), std::uint8_t(red + 1), std::uint8_t(red + 2)});
        }
        return leds;
    }
};

TEST_F(GlowHubFirmwareTest, hasItsIdentity)
{
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.identity().pid, 0x1011);
    EXPECT_EQ(device.identity().product, "GLOW HUB");
    EXPECT_EQ(device.identity().controlInterface, 0);
    EXPECT_EQ(device.identity().collections.size(), 2U);
}

TEST_F(GlowHubFirmwareTest, keepsAnEffectForEachPort)
{
    EXPECT_EQ(ask("80 0B 02 04 03 10 02 80 11 22 33"), "");
    EXPECT_EQ(ask("80 0B 02 01 05 00 04 FF"), "");
    EXPECT_EQ(ask("80 0B 01 04"), "80 0B 03 04 03 10 02 80 11 22 33");
    EXPECT_EQ(ask("80 0B 01 01"), "80 0B 03 01 05 00 04 FF");
    EXPECT_EQ(ask("80 0B 01 08"), "80 0B 03 08 00 00 02 FF FF FF FF");
    EXPECT_EQ(ask("80 20 0A 07"), "");
    EXPECT_EQ(ask("80 0B 01 02"), "80 0B 03 02 07 00 02 FF FF FF FF");
    EXPECT_EQ(ask("80 0B 01 08"), "80 0B 03 08 07 00 02 FF FF FF FF");
    EXPECT_EQ(ask("80 0B 01 01"), "80 0B 03 01 05 00 04 FF");
}

TEST_F(GlowHubFirmwareTest, leavesOutModesThatItDoesNotHave)
{
    ask("80 0B 02 0F 0C 10 01");
    ask("80 20 0F 0C");
    ask("80 04 07 10 01");
    ask("80 21 00 07");
    EXPECT_EQ(device.settings(), GlowHubFirmware::Settings());
    ask("80 0B 02 0F 0B 10 01");
    EXPECT_EQ(device.settings().ports[3].effect[0], 11);
    ask("80 21 00 06");
    EXPECT_EQ(device.settings().strip[0], 6);
}

TEST_F(GlowHubFirmwareTest, refusesToReadOtherThanOnePort)
{
    for (const char* mask : {"00", "03", "0F", "10"}) {
        EXPECT_EQ(ask(std::string("80 0B 01 ") + mask), "80 0B 04 01") << mask;
        EXPECT_EQ(ask(std::string("80 0D 01 ") + mask), "80 0D 04 01") << mask;
    }
    EXPECT_EQ(ask("80 10 01 04 30"), "80 10 04 01");
    EXPECT_EQ(ask("80 10 01 00 2F"), "80 10 04 01");
}

TEST_F(GlowHubFirmwareTest, keepsTheStripsEffect)
{
    EXPECT_EQ(ask("80 04 02 10 03 40 01 02 03"), "");
    EXPECT_EQ(ask("80 0A 01"), "80 0A 03 02 10 03 40 01 02 03");
    EXPECT_EQ(ask("80 21 00 05"), "");
    EXPECT_EQ(ask("80 0A 01"), "80 0A 03 05 10 03 40 01 02 03");
}

TEST_F(GlowHubFirmwareTest, tellsWhoLightsTheChannels)
{
    const auto state = [&](const std::string& command) {
        EXPECT_EQ(ask(command), "");
        return ask("80 01 05 03");
    };
    EXPECT_EQ(ask("80 01 05 03"), "80 01 05 03");
    EXPECT_EQ(state("80 01 02"), "80 01 05 03 00 01");
    EXPECT_EQ(state("80 01 04 01"), "80 01 05 03 01 01");
    EXPECT_EQ(state("80 01 01"), "80 01 05 03 01");
    EXPECT_EQ(state("80 01 03"), "80 01 05 03");
    EXPECT_EQ(state("80 01 01 02"), "80 01 05 03 00 02");
    EXPECT_EQ(state("80 01 03 02"), "80 01 05 03 02 02");
    EXPECT_EQ(device.portDriver(), Driver::host);
    EXPECT_EQ(device.stripDriver(), Driver::host);
}

TEST_F(GlowHubFirmwareTest, keepsItsOtherSettings)
{
    EXPECT_EQ(ask("80 0D 02 02 03 1E"), "");
    EXPECT_EQ(ask("80 0D 01 02"), "80 0D 03 02 03 1E");
    EXPECT_EQ(ask("80 0D 01 04"), "80 0D 03 04 01 30");
    EXPECT_EQ(ask("80 0C 02 " + counting(1, 32) + " EE"), "");
    EXPECT_EQ(ask("80 0C 01"), "80 0C 03 " + counting(1, 32));
    EXPECT_EQ(ask("80 17 02 09"), "");
    EXPECT_EQ(ask("80 17 01"), "80 17 03 09");
    EXPECT_EQ(ask("80 14 01"), "80 14 03 03 02");
    EXPECT_EQ(ask("80 15 5E 0F"), "");
    EXPECT_EQ(device.identified(), 15);
}

TEST_F(GlowHubFirmwareTest, losesWhatItHasNotSaved)
{
    ask("80 20 0F 05");
    ask("80 12 5A A5");
    ask("80 20 0F 06");
    ask("80 01 02");
    EXPECT_EQ(device.savedSettings().ports[0].effect[0], 5);
    device.powerOn();
    EXPECT_EQ(device.settings().ports[0].effect[0], 5);
    EXPECT_EQ(device.portDriver(), Driver::device);
    ask("80 12 5A 5A"); // another key
    ask("80 20 0F 06");
    device.powerOn();
    EXPECT_EQ(device.settings().ports[0].effect[0], 5);
}

TEST_F(GlowHubFirmwareTest, goesBackToFactorySettings)
{
    ask("80 20 0F 05");
    ask("80 12 5A A5");
    ask("80 13 55 AB 01");
    EXPECT_EQ(device.settings().ports[0].effect[0], 5);
    ask("80 13 55 AA 01");
    EXPECT_EQ(device.settings(), GlowHubFirmware::Settings());
    EXPECT_EQ(device.savedSettings().ports[0].effect[0], 5);
    ask("80 16 56 79");
    EXPECT_EQ(device.savedSettings().ports[0].effect[0], 5);
    ask("80 16 56 78");
    EXPECT_EQ(device.savedSettings(), GlowHubFirmware::Settings());
}

TEST_F(GlowHubFirmwareTest, keepsCustomColorsInThreeParts)
{
    paint("00 10 02 02 30", 1);
    EXPECT_EQ(ask("80 10 01 02 30"), "00 10 03 02 30 " + counting(1, 59) + " | 01 " + counting(60, 63) +
                                         " | 82 " + counting(123, 22));
    ask("80 20 0F 07");
    EXPECT_EQ(device.picture()[2].leds, painted(1));
    EXPECT_EQ(zone("port 2"), "000000 x48");
    EXPECT_EQ(device.frames(), 0);
}

TEST_F(GlowHubFirmwareTest, leavesOutPartsThatAreOutOfOrder)
{
    ask("00 10 02 00 30 " + counting(1, 59));
    ask("82 " + counting(1, 22));
    ask("01 " + counting(1, 63));
    ask("82 " + counting(1, 22));
    ask("00 10 02 04 30 " + counting(1, 59)); // no such port
    ask("01 " + counting(1, 63));
    ask("82 " + counting(1, 22));
    ask("00 10 02 00 2F " + counting(1, 59)); // another count of LEDs
    ask("01 " + counting(1, 63));
    ask("82 " + counting(1, 22));
    EXPECT_EQ(device.settings(), GlowHubFirmware::Settings());
    ask("00 10 02 00 30 " + counting(1, 59));
    ask("80 20 01 05"); // other commands may come between
    ask("01 " + counting(60, 63));
    ask("82 " + counting(123, 22));
    EXPECT_EQ(device.settings().ports[0].custom[143], 144);
}

TEST_F(GlowHubFirmwareTest, showsTheFramesOfAHost)
{
    paint("00 07 01 30", 1);
    ask("80 05 01 02 03");
    EXPECT_EQ(device.frames(), 0); // its own effects are on
    ask("80 01 01 02");
    ask("80 01 03 02");
    EXPECT_EQ(zone("port 1"), "000000 x48");
    EXPECT_EQ(zone("strip"), "000000");
    paint("00 07 01 30", 7);
    EXPECT_EQ(device.picture()[1].leds, painted(7));
    EXPECT_EQ(zone("port 1"), "000000 x48");
    ask("80 05 01 02 03");
    EXPECT_EQ(zone("strip"), "010203");
    EXPECT_EQ(device.frames(), 2);
    ask("80 01 01");
    ask("80 01 03");
    EXPECT_NE(device.picture()[1].leds, painted(7));
    EXPECT_NE(zone("strip"), "010203");
}

TEST_F(GlowHubFirmwareTest, showsItsEffectsStandingStill)
{
    EXPECT_EQ(device.picture().size(), 5U);
    EXPECT_EQ(zone("port 1").substr(0, 27), "FF0000 FF1F00 FF3F00 FF5F00");
    EXPECT_EQ(zone("strip"), "FF0000");
    ask("80 0B 02 02 00 10 00 80 FF 40 20");
    EXPECT_EQ(zone("port 2"), "802010 x48");
    ask("80 04 00 10 00 40 FF 80 40");
    EXPECT_EQ(zone("strip"), "402010");
    ask("80 01 02");
    ask("80 01 04 01");
    EXPECT_EQ(zone("port 2"), "000000 x48");
    EXPECT_EQ(zone("strip"), "000000");
}

TEST_F(GlowHubFirmwareTest, tellsWhatItHasDone)
{
    ask("80 0B 02 01 00 10 04 80 01 02 03");
    EXPECT_EQ(happen("effect", {11}), "80 0B 03 03 0B 10 04 80 01 02 03");
    EXPECT_EQ(device.settings().ports[3].effect[0], 11);
    EXPECT_EQ(happen("rgb", {6}), "80 0A 02 06 00 02 FF FF FF FF");
    EXPECT_EQ(device.settings().strip[0], 6);
    EXPECT_FALSE(device.happen("effect", {12}));
    EXPECT_FALSE(device.happen("effect", {-1}));
    EXPECT_FALSE(device.happen("effect", {}));
    EXPECT_FALSE(device.happen("rgb", {7}));
    EXPECT_FALSE(device.happen("dpi", {1}));
    EXPECT_EQ(device.events(), (std::vector<std::string>{"effect MODE", "rgb MODE"}));
}

} // namespace

} // namespace pyrux::sim
