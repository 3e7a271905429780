#include "simulator/models.h"
#include "simulator/models/strand_hub.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

/// Both models are the same device.
class StrandFirmwareTest : public OnTable<StrandFirmware>, public testing::WithParamInterface<const char*> {
protected:
    StrandFirmwareTest() : OnTable(makeFirmware(GetParam())) {}

    /// A frame whose bytes count up from `first`, in its three reports.
    void frame(const std::string& place, std::uint8_t first)
    {
        EXPECT_EQ(ask("00 09 " + place + " 3C " + counting(first, 59)), "");
        EXPECT_EQ(ask("01 09 " + counting(std::uint8_t(first + 59), 62)), "");
        EXPECT_EQ(ask("82 09 " + counting(std::uint8_t(first + 121), 59)), "");
    }

    /// LEDs whose bytes count up from `first`.
    static std::string colors(std::uint8_t first, std::size_t leds)
    {
        std::string text;
        for (std::size_t i = 0; i < 3 * leds; ++i) {
            if (i > 0 && i % 3 == 0)
                text += ' ';
            text += hexOf(std::uint8_t(first + i));
        }
        return text;
    }
};
INSTANTIATE_TEST_SUITE_P(Models, StrandFirmwareTest, testing::Values("strandhub", "strandhubv2"),
                         [](const auto& model) { return std::string(model.param); });

TEST_P(StrandFirmwareTest, tellsItsIdentity)
{
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.identity().controlInterface, 1);
}

TEST_P(StrandFirmwareTest, keepsTheEffectOfAPlace)
{
    EXPECT_EQ(ask("80 03 01 02 04"), "80 03 03 02 04 00 02 00 FF FF FF");
    EXPECT_EQ(ask("80 03 02 02 04 05 01 0A 11 22 33 0B"), "80 03 03");
    EXPECT_EQ(ask("80 03 01 02 04"), "80 03 03 02 04 05 01 0A 11 22 33 0B");
    EXPECT_EQ(ask("80 03 01 02 02"), "80 03 03 02 02 00 02 00 FF FF FF");
    EXPECT_EQ(ask("80 03 01 04 04"), "80 03 03 04 04 00 02 00 FF FF FF");
    EXPECT_EQ(device.settings().ports[1].zones[3].effect, 5);
}

TEST_P(StrandFirmwareTest, keepsTheParametersOfEachEffect)
{
    EXPECT_EQ(ask("80 03 02 01 01 03 01 0A 11 22 33 0B"), "80 03 03");
    EXPECT_EQ(ask("80 03 02 01 01 09 04 0C 44 55 66 0D"), "80 03 03");
    EXPECT_EQ(ask("80 04 01 01 01 03"), "80 04 03 01 01 03 01 0A 11 22 33 0B");
    EXPECT_EQ(ask("80 04 01 01 01 09"), "80 04 03 01 01 09 04 0C 44 55 66 0D");
    EXPECT_EQ(ask("80 04 01 01 01 08"), "80 04 03 01 01 08 02 00 FF FF FF");
    EXPECT_EQ(ask("80 03 01 01 01"), "80 03 03 01 01 09 04 0C 44 55 66 0D");
}

TEST_P(StrandFirmwareTest, tellsAllEffectsInTwoReports)
{
    for (int effect = 0; effect < 10; ++effect)
        ask("80 03 02 01 02 0" + std::to_string(effect) + " 01 A" + std::to_string(effect) + " 11 22 33 B" +
            std::to_string(effect));
    EXPECT_EQ(ask("80 0C 01 01 02"),
              "80 0C 03 01 02 0A 00 01 A0 11 22 33 B0 00 01 01 A1 11 22 33 B1 00 02 01 A2 11 22 33 B2 00 03 "
              "01 A3 11 "
              "22 33 B3 00 04 01 A4 11 22 33 B4 00 05 01 A5 11 22 33 B5 00 06 01 A6 11 22 33 B6");
    EXPECT_EQ(ask("81 0C 01 01 02"),
              "81 0C 03 01 02 07 01 A7 11 22 33 B7 00 08 01 A8 11 22 33 B8 00 09 01 A9 "
              "11 22 33 B9");
    EXPECT_EQ(ask("81 03 01 01 02"), "");
}

TEST_P(StrandFirmwareTest, takesMasks)
{
    EXPECT_EQ(ask("80 03 02 06 05 04 00 00 01 02 03"), "80 03 03");
    const auto settings = device.settings();
    for (std::size_t port = 0; port < 3; ++port)
        for (std::size_t zone = 0; zone < 6; ++zone)
            EXPECT_EQ(settings.ports[port].zones[zone].effect, port > 0 && (zone == 1 || zone == 3) ? 4 : 0)
                << port << zone;
    EXPECT_EQ(ask("80 03 02 01 00 06"), "80 03 03"); // a port, with all that hangs at it
    EXPECT_EQ(ask("80 03 02 04 FF 07"), "80 03 03");
    const auto after = device.settings();
    for (std::size_t zone = 0; zone < 6; ++zone) {
        EXPECT_EQ(after.ports[0].zones[zone].effect, 6);
        EXPECT_EQ(after.ports[2].zones[zone].effect, 7);
    }
    EXPECT_EQ(ask("80 03 02 FF FF 08"), "80 03 03");
    EXPECT_EQ(ask("80 03 01 FF FF"), "80 03 03 FF FF 08");
}

TEST_P(StrandFirmwareTest, refusesWhatItDoesNotHave)
{
    const auto before = device.settings();
    struct Row {
        const char* command;
        const char* reply;
    };
    for (const Row& row : {
             Row{"80 01 02 02", "80 01 04 05"},       Row{"80 03 02 00 01 01", "80 03 04 01"},
             Row{"80 03 02 08 01 01", "80 03 04 01"}, Row{"80 03 02 01 20 01", "80 03 04 02"},
             Row{"80 03 02 01 01 0A", "80 03 04 03"}, Row{"80 03 01 10 01", "80 03 04 01"},
             Row{"80 03 01 01 40", "80 03 04 02"},    Row{"80 04 01 01 01 0A", "80 04 04 03"},
             Row{"80 0C 01 00 01", "80 0C 04 01"},    Row{"81 0C 01 01 20", "81 0C 04 02"},
             Row{"80 06 02 03 01 04", "80 06 04 01"}, Row{"80 06 02 00 00 04", "80 06 04 04"},
             Row{"80 06 02 00 0B 04", "80 06 04 04"}, Row{"80 06 02 00 01 03", "80 06 04 04"},
             Row{"80 06 02 00 01 3D", "80 06 04 04"}, Row{"80 06 02 00 07 09", "80 06 04 04"},
             Row{"80 06 01 00", "80 06 04 01"},       Row{"80 07 01 08", "80 07 04 01"},
             Row{"80 0D 02 00 01 02", "80 0D 04 01"}, Row{"80 0D 02 01 01 02", "80 0D 04 02"},
             Row{"80 0D 02 01 03 03", "80 0D 04 02"}, Row{"80 0D 02 01 20 20", "80 0D 04 02"},
             Row{"80 B5 02 00 01", "80 B5 04 01"},    Row{"80 0A 02 00 00", "80 0A 04 01"},
             Row{"80 0A 02 01 20", "80 0A 04 02"},    Row{"80 B1 02 03", "80 B1 04 05"},
             Row{"80 0B 02 00 01", "80 0B 04 01"},    Row{"80 0B 02 01 00", "80 0B 04 05"},
             Row{"80 0B 02 01 03", "80 0B 04 05"},    Row{"80 0B 01 08", "80 0B 04 01"},
             Row{"80 B2 02 00", "80 B2 04 01"},       Row{"80 10 02 00 01", "80 10 04 01"},
             Row{"80 10 01 00", "80 10 04 01"},       Row{"80 08 02 00 00 01", "80 08 04 01"},
             Row{"80 08 02 01 20 01", "80 08 04 02"}, Row{"81 08 02 01 00 01", "81 08 04 06"},
             Row{"80 08 01 08 00", "80 08 04 01"},    Row{"80 08 01 01 40", "80 08 04 02"},
             Row{"84 08 01 01 00", "84 08 04 06"},
         })
        EXPECT_EQ(ask(row.command), row.reply) << row.command;
    EXPECT_EQ(device.settings(), before);
    for (const char* unknown :
         {"80 05 01", "80 99 02", "80 B4 02", "80 03 03 01 01", "41 80", "82 0C 01 01 01"})
        EXPECT_EQ(ask(unknown), "") << unknown;
    EXPECT_EQ(device.settings(), before);
}

TEST_P(StrandFirmwareTest, keepsTheSizeOfAStrand)
{
    EXPECT_EQ(ask("80 06 01 02"), "80 06 03 02 02 14");
    EXPECT_EQ(ask("80 06 02 02 05 0C"), "80 06 03");
    EXPECT_EQ(ask("80 06 01 04"), "80 06 03 04 05 0C");
    EXPECT_EQ(ask("80 06 01 02"), "80 06 03 02 02 14");
    EXPECT_EQ(ask("80 06 02 FF 0A 06"), "80 06 03");
    for (const char* port : {"01", "02", "04"})
        EXPECT_EQ(ask(std::string("80 06 01 ") + port), std::string("80 06 03 ") + port + " 0A 06");
}

TEST_P(StrandFirmwareTest, knowsTheFansThatItHasLookedAt)
{
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 03 14 10 0C");
    EXPECT_TRUE(device.happen("attach", {1, 24}));
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 03 14 10 0C");
    EXPECT_EQ(ask("80 B2 02 06"), "80 B2 03"); // not at that one
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 03 14 10 0C");
    EXPECT_EQ(ask("80 B2 02 01"), "80 B2 03");
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 04 14 10 0C 18");
    EXPECT_TRUE(device.happen("detach", {1}));
    EXPECT_TRUE(device.happen("detach", {1}));
    device.powerOn();
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 02 14 10");
    EXPECT_EQ(ask("80 07 01 02"), "80 07 03 02");
}

TEST_P(StrandFirmwareTest, takesFansUpToFive)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(device.happen("attach", {3, 10 + i}));
    EXPECT_FALSE(device.happen("attach", {3, 10}));
    EXPECT_FALSE(device.happen("attach", {2, 3}));
    EXPECT_FALSE(device.happen("attach", {2, 61}));
    EXPECT_FALSE(device.happen("attach", {4, 10}));
    EXPECT_FALSE(device.happen("attach", {0, 10}));
    EXPECT_FALSE(device.happen("attach", {1}));
    EXPECT_FALSE(device.happen("detach", {2}));
    EXPECT_FALSE(device.happen("detach", {}));
    EXPECT_FALSE(device.happen("effect", {1}));
    EXPECT_EQ(device.events(), (std::vector<std::string>{"attach PORT LEDS", "detach PORT"}));
    EXPECT_EQ(ask("80 0B 02 04 02"), "80 0B 03");
    EXPECT_EQ(ask("80 B2 02 FF"), "80 B2 03");
    EXPECT_EQ(ask("80 07 01 04"), "80 07 03 04 05 0A 0B 0C 0D 0E");
}

TEST_P(StrandFirmwareTest, givesFansOtherNumbers)
{
    EXPECT_EQ(ask("80 0D 02 01 01 04 04 01 00 00"), "80 0D 03");
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 03 0C 10 14");
    EXPECT_EQ(ask("80 0D 02 01 01 02 02 04 04 01 08 08 10 10"), "80 0D 03");
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 03 14 0C 10");
    EXPECT_TRUE(device.happen("attach", {1, 8}));
    EXPECT_EQ(ask("80 B2 02 01"), "80 B2 03"); // they are counted anew
    EXPECT_EQ(ask("80 07 01 01"), "80 07 03 01 04 14 10 0C 08");
}

TEST_P(StrandFirmwareTest, keepsTheRest)
{
    EXPECT_EQ(ask("80 0B 01 01"), "80 0B 03 01 02");
    EXPECT_EQ(ask("80 0B 01 02"), "80 0B 03 02 01");
    EXPECT_EQ(ask("80 0B 02 06 02"), "80 0B 03");
    EXPECT_EQ(ask("80 0B 01 04"), "80 0B 03 04 02");
    EXPECT_EQ(ask("80 B5 01"), "80 B5 03");
    EXPECT_EQ(
        ask("80 B5 02 01 A1 A2 A3 A4 A5 A6 A7 A8 B1 B2 B3 B4 B5 B6 B7 B8 C1 C2 C3 C4 C5 C6 C7 C8 D1 D2 D3 D4 "
            "D5 D6 D7 D8 FF"),
        "80 B5 03");
    EXPECT_EQ(ask("80 B5 01"),
              "80 B5 03 A1 A2 A3 A4 A5 A6 A7 A8 B1 B2 B3 B4 B5 B6 B7 B8 C1 C2 C3 C4 C5 C6 C7 C8 D1 "
              "D2 D3 D4 D5 D6 D7 D8");
    EXPECT_EQ(ask("80 C0 01"), "80 C0 03");
    EXPECT_EQ(ask("80 C0 02 07"), "80 C0 03");
    EXPECT_EQ(ask("80 C0 01"), "80 C0 03 07");
    EXPECT_EQ(ask("80 11 02 01 32"), "80 11 03");
    EXPECT_EQ(ask("80 11 01"), "80 11 03 01");
    const std::string parameters =
        "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C";
    EXPECT_EQ(ask("80 10 02 02 " + parameters + " EE FF"), "80 10 03");
    EXPECT_EQ(ask("80 10 01 02"), "80 10 03 02 " + parameters + " EE");
    EXPECT_EQ(ask("80 10 01 01"), "80 10 03 01");
    EXPECT_EQ(ask("80 B4 01"), "80 B4 03 05 01");
    EXPECT_EQ(ask("80 0A 02 01 08"), "80 0A 03");
    EXPECT_EQ(device.identified(), (std::array<std::uint8_t, 2>{1, 8}));
}

TEST_P(StrandFirmwareTest, savesAndForgets)
{
    const auto factory = device.settings();
    EXPECT_EQ(ask("80 03 02 02 00 05 01 0A 11 22 33 0B"), "80 03 03");
    EXPECT_EQ(ask("80 C0 02 01"), "80 C0 03");
    EXPECT_EQ(device.savedSettings().ports[1].zones[0].effect, 0);
    EXPECT_EQ(ask("80 B0 02"), "80 B0 03");
    EXPECT_EQ(device.savedSettings(), device.settings());
    EXPECT_EQ(ask("80 03 02 02 00 06"), "80 03 03");
    device.powerOn();
    EXPECT_EQ(ask("80 03 01 02 00"), "80 03 03 02 00 05 01 0A 11 22 33 0B");
    EXPECT_EQ(ask("80 C0 01"), "80 C0 03 01");
    EXPECT_EQ(ask("80 B6 02"), "80 B6 03");
    device.powerOn();
    EXPECT_EQ(device.settings(), factory);
}

TEST_P(StrandFirmwareTest, restoresParts)
{
    const auto factory = device.settings();
    const auto change = [&] {
        ask("80 03 02 02 00 05");
        ask("80 06 02 01 03 04");
        ask("80 C0 02 01");
    };
    change();
    EXPECT_EQ(ask("80 B1 02 01"), "80 B1 03");
    EXPECT_EQ(device.settings().ports[1].zones, factory.ports[1].zones);
    EXPECT_EQ(device.settings().ports[1].leds, 4);
    change();
    EXPECT_EQ(ask("80 B1 02 02"), "80 B1 03");
    EXPECT_EQ(device.settings().ports[1].zones[0].effect, 5);
    EXPECT_EQ(device.settings().ports[1].leds, 20);
    EXPECT_EQ(device.settings().multilayer, 1);
    change();
    EXPECT_EQ(ask("80 B1 02 00"), "80 B1 03");
    EXPECT_EQ(device.settings(), factory);
    change();
    EXPECT_EQ(ask("80 B0 02"), "80 B0 03");
    EXPECT_EQ(ask("80 B1 02 00"), "80 B1 03");
    EXPECT_EQ(device.savedSettings().multilayer, 1); // only live
}

TEST_P(StrandFirmwareTest, keepsCustomColors)
{
    const std::string first = counting(1, 59), second = counting(60, 59), third = counting(119, 62);
    EXPECT_EQ(ask("00 08 02 02 00 " + first), "00 08 03 02");
    EXPECT_EQ(ask("80 08 01 02 00"), "80 08 03 02"); // the last part is missing
    EXPECT_EQ(ask("81 08 02 02 00 " + second), "81 08 03 02");
    EXPECT_EQ(ask("00 08 01 02 00"), "00 08 03 02 00 " + first);
    EXPECT_EQ(ask("81 08 01 02 00"), "81 08 03 02 00 " + second);
    EXPECT_EQ(ask("82 08 01 02 00"), "82 08 03 02");
    EXPECT_EQ(ask("80 08 01 02 01"), "80 08 03 02 01 " + first); // its fans have them too
    EXPECT_EQ(ask("80 08 01 04 00"), "80 08 03 04");
    EXPECT_EQ(ask("80 03 02 02 00 09"), "80 03 03");
    EXPECT_EQ(zone("port 2").substr(0, 27), "010203 040506 070809 0A0B0C");
    EXPECT_EQ(zone("port 2"), colors(1, 39) + " 760000");
    // All 60 LEDs take four reports, the last with three bytes.
    for (const char* head : {"00", "01", "02"})
        EXPECT_EQ(ask(std::string(head) + " 08 02 01 04 " + third.substr(0, 176)),
                  std::string(head) + " 08 03 01 04");
    EXPECT_EQ(ask("83 08 02 01 04 AA BB CC DD"), "83 08 03 01 04");
    EXPECT_EQ(ask("83 08 01 01 04"), "83 08 03 01 04 AA BB CC");
}

TEST_P(StrandFirmwareTest, takesCustomColorsInOrder)
{
    const auto before = device.settings();
    EXPECT_EQ(ask("00 08 02 02 00 01"), "00 08 03 02");
    EXPECT_EQ(ask("82 08 02 02 00 01"), "82 08 04 06");
    EXPECT_EQ(ask("81 08 02 02 00 01"), "81 08 04 06");
    EXPECT_EQ(ask("00 08 02 02 00 01"), "00 08 03 02");
    EXPECT_EQ(ask("81 08 02 04 00 01"), "81 08 04 06"); // of another place
    EXPECT_EQ(device.settings(), before);
}

TEST_P(StrandFirmwareTest, showsItsEffects)
{
    EXPECT_EQ(zone("port 1 fan 1").substr(0, 6), "FF0000"); // a rainbow
    EXPECT_EQ(zone("port 3").size(), 30U * 7 - 1);
    EXPECT_EQ(ask("80 03 02 02 00 03 00 00 0A 0B 0C"), "80 03 03");
    EXPECT_EQ(zone("port 2"), "0A0B0C x40");
    EXPECT_EQ(ask("80 03 02 01 02 04 00 00 0D 0E 0F"), "80 03 03");
    EXPECT_EQ(zone("port 1 fan 2"), "0D0E0F x16");
    EXPECT_EQ(zone("port 1 fan 3").substr(0, 6), "FF0000");
    EXPECT_EQ(device.picture().size(), 5U);
    EXPECT_EQ(ask("80 0B 02 01 01"), "80 0B 03");
    EXPECT_EQ(device.picture().size(), 3U);
    EXPECT_EQ(ask("80 0B 02 02 02"), "80 0B 03"); // no fan there
    EXPECT_EQ(device.picture().size(), 2U);
}

TEST_P(StrandFirmwareTest, showsTheFramesOfAHost)
{
    EXPECT_EQ(ask("80 01 02 01"), "80 01 03");
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(zone("port 2"), "000000 x40");
    frame("02 00", 1);
    EXPECT_EQ(zone("port 2"), colors(1, 40));
    EXPECT_EQ(zone("port 3"), "000000 x30");
    frame("01 02", 9);
    EXPECT_EQ(zone("port 1 fan 2"), colors(9, 16));
    EXPECT_EQ(zone("port 1 fan 1"), "000000 x20");
    frame("01 00", 7); // through the whole chain
    EXPECT_EQ(zone("port 1 fan 1"), colors(7, 20));
    EXPECT_EQ(zone("port 1 fan 2"), colors(67, 16));
    EXPECT_EQ(zone("port 1 fan 3"), colors(115, 12));
    frame("FF FF", 3);
    EXPECT_EQ(zone("port 1 fan 3"), colors(3, 12));
    EXPECT_EQ(zone("port 3"), colors(3, 30));
    frame("05 15", 5);
    EXPECT_EQ(zone("port 1 fan 1"), colors(5, 20));
    EXPECT_EQ(zone("port 1 fan 2"), colors(3, 16));
    EXPECT_EQ(zone("port 2"), colors(3, 40));
    EXPECT_EQ(device.frames(), 5);
    EXPECT_EQ(ask("80 01 02"), "80 01 03");
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(zone("port 3").substr(0, 6), "FF0000");
    frame("FF FF", 3);
    EXPECT_EQ(device.frames(), 5);
    device.powerOn();
    EXPECT_EQ(device.frames(), 0);
}

TEST_P(StrandFirmwareTest, showsOnlyWholeFrames)
{
    ask("80 01 02 01");
    const std::string head = "00 09 02 00 3C 11", middle = "01 09 22", end = "82 09 33";
    using Reports = std::vector<std::string>;
    for (const Reports& reports :
         {Reports{head, middle}, Reports{middle, end}, Reports{head, end}, Reports{head, middle, middle, end},
          Reports{head, "02 09 22", end}, Reports{"00 09 02 00 3B 11", middle, end},
          Reports{"00 09 08 00 3C 11", middle, end}, Reports{"00 09 02 20 3C 11", middle, end}}) {
        for (const std::string& report : reports)
            EXPECT_EQ(ask(report), "");
        EXPECT_EQ(device.frames(), 0);
        ask("80 01 02 01");
    }
    for (const std::string& report : {head, head, middle, end}) // begun anew
        ask(report);
    EXPECT_EQ(device.frames(), 1);
    EXPECT_EQ(zone("port 2").substr(0, 6), "110000");
}

} // namespace

} // namespace pyrux::sim
