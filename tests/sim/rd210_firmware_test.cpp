#include "simulator/models/rd210.h"
#include "tests/sim/hex.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace pyrux::sim {

namespace {

/// The model on the table, without a bus.
class RD210FirmwareTest : public testing::Test {
protected:
    RD210FirmwareTest()
    {
        mouse.connect([this](Bytes report) {
            EXPECT_EQ(report.size(), 64U);
            reports.push_back(textOf(report));
        });
    }

    /// What the device says to a payload, without the zeros at the end; empty: nothing.
    std::string ask(const std::string& payload)
    {
        reports.clear();
        mouse.output(bytesOf(payload));
        EXPECT_LE(reports.size(), 1U);
        return reports.empty() ? "" : reports.front();
    }

    /// What the device sends by itself.
    std::string happen(const std::string& event, const std::vector<int>& values)
    {
        reports.clear();
        EXPECT_TRUE(mouse.happen(event, values)) << event;
        return reports.empty() ? "" : reports.front();
    }

    void configure() { ASSERT_EQ(ask("41 80"), "41 80"); }
    void maintain() { ASSERT_EQ(ask("41 01"), "41 01"); }

    RD210Firmware mouse;
    std::vector<std::string> reports;
};

TEST_F(RD210FirmwareTest, tellsItsIdentity)
{
    const Identity& identity = mouse.identity();
    EXPECT_EQ(identity.vid, 0x3A7E);
    EXPECT_EQ(identity.pid, 0x012F);
    EXPECT_EQ(identity.controlInterface, 1);
    ASSERT_EQ(identity.collections.size(), 2U);
    EXPECT_EQ(identity.collections[0].interface, 0);
    EXPECT_EQ(identity.collections[0].usagePage, 0x0001);
    EXPECT_EQ(identity.collections[0].usage, 0x0002);
    EXPECT_EQ(identity.collections[1].interface, 1);
    EXPECT_EQ(identity.collections[1].usagePage, 0xFF00);
}

TEST_F(RD210FirmwareTest, entersItsStates)
{
    EXPECT_EQ(mouse.state(), RD210Firmware::State::off);
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_TRUE(mouse.configurable());
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(mouse.state(), RD210Firmware::State::maintenance);
    EXPECT_EQ(ask("41 00"), "41");
    EXPECT_EQ(mouse.state(), RD210Firmware::State::off);
    EXPECT_EQ(ask("41 02"), "");
    EXPECT_EQ(mouse.state(), RD210Firmware::State::off);
}

TEST_F(RD210FirmwareTest, answersTheStartUpInAnyState)
{
    EXPECT_EQ(ask("42 00 00 00 01 00 00 01"), "42");
    EXPECT_EQ(ask("42 10 00 00 01 00 00 01"), "42 10");
    EXPECT_EQ(ask("42 00 40 00 01"), "42 00 40");
    EXPECT_EQ(ask("42 10 40 00 01"), "42 10 40");
    EXPECT_EQ(ask("43 00 00 00 01"), "43");
    EXPECT_EQ(mouse.profileAcknowledgements(), 1);
    EXPECT_EQ(mouse.dpiAcknowledgements(), 1);
    EXPECT_EQ(mouse.state(), RD210Firmware::State::off);
}

TEST_F(RD210FirmwareTest, isSilentInTheWrongState)
{
    const std::string configuration[]{
        "51 00 00 00 01",
        "51 10",
        "51 18 02 00 B2 3C",
        "51 19 02 00 41",
        "51 20 B0 00 01 02",
        "51 40",
        "51 98 02",
        "51 9B",
        "51 F0 00 00 02",
        "52 00",
        "52 10",
        "52 18 02",
        "52 19 02",
        "52 20 B0",
        "52 22",
        "52 40",
        "52 9B",
        "52 F0",
        "53 00 01",
        "53 01 01",
        "53 10 01",
        "53 11 01",
        "80 00",
        "80 01 00 00 01",
    };
    const auto untouched = mouse.settings(0);
    for (const char* state : {"41 00", "41 01"}) {
        ask(state);
        for (const std::string& command : configuration)
            EXPECT_EQ(ask(command), "") << state << ": " << command;
    }
    ask("41 00");
    EXPECT_EQ(ask("51 22 00 00 10 10"), "");
    for (const char* state : {"41 00", "41 80"}) {
        ask(state);
        EXPECT_EQ(ask("50 10 00 00 FF"), "") << state;
        EXPECT_EQ(ask("50 55"), "") << state;
    }
    EXPECT_EQ(mouse.settings(0), untouched);
    EXPECT_EQ(mouse.profile(), 0);
    EXPECT_EQ(mouse.saves(), 0);
    EXPECT_FALSE(mouse.learning());
}

TEST_F(RD210FirmwareTest, isSilentOnWhatItDoesNotKnow)
{
    configure();
    for (const char* command : {"", "00", "41", "40 80", "42 20 40 00 01", "51 01", "51 99", "52 98", "52 55",
                                "53 02 01", "53 20 01", "54", "80 02", "FF FF"})
        EXPECT_EQ(ask(command), command == std::string("41") ? "41" : "") << command;
}

TEST_F(RD210FirmwareTest, changesTheProfile)
{
    configure();
    EXPECT_EQ(ask("51 00 00 00 04"), "51");
    EXPECT_EQ(mouse.profile(), 4);
    EXPECT_EQ(ask("52 00"), "52 00 00 00 04");
    EXPECT_EQ(ask("51 00 00 00 05"), "");
    EXPECT_EQ(mouse.profile(), 4);
}

TEST_F(RD210FirmwareTest, keepsSettingsForEachProfile)
{
    configure();
    ask("51 F0 00 00 07");
    ask("51 20 B3 00 34 12");
    ask("51 00 00 00 02");
    EXPECT_EQ(ask("52 F0"), "52 F0 00 00 01");
    EXPECT_EQ(ask("52 20 B3"), "52 20 B3 00 FF");
    ask("51 00 00 00 00");
    EXPECT_EQ(ask("52 F0"), "52 F0 00 00 07");
    EXPECT_EQ(ask("52 20 B3"), "52 20 B3 00 34 12");
    EXPECT_EQ(mouse.settings(2), RD210Firmware().settings(2));
}

TEST_F(RD210FirmwareTest, hasFactorySettings)
{
    configure();
    EXPECT_EQ(ask("52 9B"), "52 9B 00 00 FF FF FF FF FF FF FF");
    EXPECT_EQ(ask("52 40"),
              "52 40 00 00 01 07 03 07 0F 1F 3F 77 9F 03 07 0F 1F 3F 77 9F 00 00 00 00 00 00 00 "
              "01 02 0A 10");
    EXPECT_EQ(ask("52 F0"), "52 F0 00 00 01");
    EXPECT_EQ(ask("52 10"), "52 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 03");
    EXPECT_EQ(ask("52 22"), "52 22 00 00 C0 C0");
    EXPECT_EQ(ask("52 20 BE"), "52 20 BE 00 FF");
    EXPECT_EQ(ask("52 20 B4 01"), "52 20 B4 01 FF");
    EXPECT_EQ(ask("52 20 D8"), "52 20 D8 00 EA 01");
    EXPECT_EQ(ask("52 18 0C"), "52 18 0C 00 FF 3F");
    EXPECT_EQ(ask("52 19 0C"), "52 19 0C");
    EXPECT_EQ(mouse.level(), 1);
}

TEST_F(RD210FirmwareTest, keepsOrderAndPerformanceAsToldByTheHost)
{
    configure();
    // Levels 2, 4 and 6 enabled, 4 current; 16100 is kept halved with its multiplier.
    EXPECT_EQ(ask("51 9B 00 00 02 04 06 00 01 03 05"), "51 9B");
    const std::string block =
        "01 03 04 0F 50 00 00 00 00 05 10 9E 00 00 00 00 00 10 11 00 00 00 00 02 03 0B 11";
    EXPECT_EQ(ask("51 40 00 00 " + block), "51 40");
    EXPECT_EQ(ask("52 9B"), "52 9B 00 00 02 04 06 00 01 03 05");
    EXPECT_EQ(ask("52 40"), "52 40 00 00 " + block);
    EXPECT_EQ(mouse.level(), 4);
}

TEST_F(RD210FirmwareTest, takesThePerformanceBlockBackWithAnotherPlace)
{
    configure();
    std::string block = ask("52 40");
    block.replace(0, 2, "51");
    block.replace(3 * 4, 2, "05");
    EXPECT_EQ(ask(block), "51 40");
    EXPECT_EQ(mouse.level(), 5);
    EXPECT_EQ(ask("52 40").substr(0, 3 * 8), "52 40 00 00 05 07 03 07 ");
}

TEST_F(RD210FirmwareTest, forgetsTheOrderWhenItBeginsWithFF)
{
    configure();
    ask("51 9B 00 00 06 05 04 03 02 01 00");
    EXPECT_EQ(mouse.level(), 5);
    std::string report = "51 9B 00 00";
    for (int i = 4; i < 64; ++i)
        report += " FF";
    EXPECT_EQ(ask(report), "51 9B");
    EXPECT_EQ(ask("52 9B"), "52 9B 00 00 FF FF FF FF FF FF FF");
    EXPECT_EQ(mouse.level(), 1);
}

TEST_F(RD210FirmwareTest, keepsTheWholeBank)
{
    configure();
    EXPECT_EQ(ask("51 10 00 00 01 02 03 04 05 06 07 08 05 0A 0B 0C 08 0E"), "51 10");
    EXPECT_EQ(ask("52 10"), "52 10 00 00 01 02 03 04 05 06 07 08 05 0A 0B 0C 08 0E");
    EXPECT_EQ(ask("51 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 02"), "51 10");
    EXPECT_EQ(ask("52 10"), "52 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 02");
}

TEST_F(RD210FirmwareTest, keepsTheWheelBytesWhereTheyStand)
{
    configure();
    EXPECT_EQ(ask("51 22 00 00 10 C0"), "51 22");
    EXPECT_EQ(ask("52 22"), "52 22 00 00 10 C0");
    EXPECT_EQ(ask("51 22 00 00 C0 20"), "51 22");
    EXPECT_EQ(ask("52 22"), "52 22 00 00 C0 20");
    EXPECT_FALSE(mouse.recording());
}

TEST_F(RD210FirmwareTest, keepsCodesByAddressAndPage)
{
    configure();
    EXPECT_EQ(ask("51 20 B0 00 01 02"), "51 20 B0");
    EXPECT_EQ(ask("51 20 B0 01 E3 01"), "51 20 B0 01");
    EXPECT_EQ(ask("51 20 BE 00 29 04"), "51 20 BE");
    EXPECT_EQ(ask("52 20 B0"), "52 20 B0 00 01 02");
    EXPECT_EQ(ask("52 20 B0 01"), "52 20 B0 01 E3 01");
    EXPECT_EQ(ask("52 20 BE"), "52 20 BE 00 29 04");
    EXPECT_EQ(mouse.key(0), 0x0201);
    EXPECT_EQ(mouse.key(8), 0x01E3);
    EXPECT_EQ(mouse.key(6), 0x0429);
    EXPECT_EQ(mouse.key(7), 0x00FF);
    EXPECT_EQ(ask("51 20 D8 00 11 22"), "51 20 D8");
    EXPECT_EQ(ask("52 20 D8"), "52 20 D8 00 11 22");
    for (const char* nowhere :
         {"51 20 A0 00 01 02", "51 20 B0 02 01 02", "51 20 D8 01 01 02", "52 20 C0", "52 20"})
        EXPECT_EQ(ask(nowhere), "") << nowhere;
}

TEST_F(RD210FirmwareTest, keepsAssignmentsAndNames)
{
    configure();
    EXPECT_EQ(ask("51 18 06 00 BE 5C"), "51 18 06");
    EXPECT_EQ(ask("52 18 06"), "52 18 06 00 BE 5C");
    EXPECT_EQ(ask("51 18 0C 00 B4 7D"), "51 18 0C");
    EXPECT_EQ(ask("52 18 0C"), "52 18 0C 00 B4 7D");
    EXPECT_EQ(ask("51 18 0C 00 FF 3F"), "51 18 0C");
    EXPECT_EQ(ask("52 18 0C"), "52 18 0C 00 FF 3F");
    std::string name = " 4D";
    for (int i = 1; i < 40; ++i)
        name += " 61";
    EXPECT_EQ(ask("51 19 0C 00" + name), "51 19 0C");
    EXPECT_EQ(ask("52 19 0C"), "52 19 0C 00" + name);
    EXPECT_EQ(ask("52 19 0B"), "52 19 0B");
    for (const char* nowhere : {"51 18 0D 00 B5 3D", "52 18 0D", "51 19 0D 00 41", "52 19 0D", "52 19 FF"})
        EXPECT_EQ(ask(nowhere), "") << nowhere;
}

/// `count` events that differ from one another, as they stand in a report.
std::string events(int from, int count)
{
    std::string text;
    for (int i = from; i < from + count; ++i) {
        char event[16];
        std::snprintf(event, sizeof event, " %02X 5C %02X 01", i, 255 - i);
        text += event;
    }
    return text;
}

TEST_F(RD210FirmwareTest, writesAndReadsMacrosInChunks)
{
    configure();
    ask("51 18 03 00 B3 3C");
    EXPECT_EQ(ask("53 00 0F 00" + events(1, 15)), "53 00 0F");
    EXPECT_EQ(ask("53 01 0F 00" + events(16, 15)), "53 01 0F");
    EXPECT_EQ(ask("53 01 03 00" + events(31, 2) + " 00 FC FF FF"), "53 01 03");
    ask("51 18 03 00 B3 3C");
    EXPECT_EQ(ask("53 10 0F"), "53 10 0F 00" + events(1, 15));
    EXPECT_EQ(ask("53 11 0F"), "53 11 0F 00" + events(16, 15));
    EXPECT_EQ(ask("53 11 03"), "53 11 03 00" + events(31, 2) + " 00 FC FF FF");
    // Back to the beginning.
    EXPECT_EQ(ask("53 10 02"), "53 10 02 00" + events(1, 2));
    EXPECT_EQ(ask("53 11 01"), "53 11 01 00" + events(3, 1));
    const auto area = mouse.macro(3);
    EXPECT_EQ(textOf(Bytes(area).first(8)), events(1, 2).substr(1));
}

TEST_F(RD210FirmwareTest, holdsTwoHundredEvents)
{
    configure();
    ask("51 18 0C 00 B4 3D");
    for (int chunk = 0; chunk < 13; ++chunk)
        EXPECT_NE(ask((chunk == 0 ? "53 00 0F 00" : "53 01 0F 00") + events(15 * chunk + 1, 15)), "")
            << chunk;
    EXPECT_EQ(ask("53 01 06 00" + events(196, 6)), "");
    EXPECT_EQ(ask("53 01 05 00" + events(196, 5)), "53 01 05");
    EXPECT_EQ(ask("53 01 01 00" + events(201, 1)), "");
    for (int chunk = 0; chunk < 13; ++chunk)
        EXPECT_EQ(ask(chunk == 0 ? "53 10 0F" : "53 11 0F").substr(12), events(15 * chunk + 1, 15).substr(1));
    EXPECT_EQ(ask("53 11 05"), "53 11 05 00" + events(196, 5));
    EXPECT_EQ(ask("53 11 02"), "53 11 02 00 00 FC 00 00 00 FC");
}

TEST_F(RD210FirmwareTest, keepsMacrosApart)
{
    configure();
    const std::pair<const char*, const char*> areas[]{{"00", "B0 3C"}, {"05", "B5 5C"}, {"06", "BE 7C"},
                                                      {"07", "BF 3C"}, {"08", "B0 3D"}, {"0C", "B4 5D"}};
    int value = 1;
    for (const auto& [button, area] : areas) {
        ask(std::string("51 18 ") + button + " 00 " + area);
        ask("53 00 02 00" + events(value++, 1) + " 00 FC");
    }
    value = 1;
    for (const auto& [button, area] : areas) {
        // Reading an assignment points at its macro, as writing it does.
        EXPECT_EQ(ask(std::string("52 18 ") + button), std::string("52 18 ") + button + " 00 " + area);
        EXPECT_EQ(ask("53 10 02"), "53 10 02 00" + events(value++, 1) + " 00 FC");
    }
}

TEST_F(RD210FirmwareTest, wipesTheAreaWithItsFirstChunk)
{
    configure();
    ask("51 18 01 00 B1 3C");
    ask("53 00 03 00" + events(1, 3));
    ask("53 00 01 00" + events(9, 1));
    EXPECT_EQ(ask("53 10 03"), "53 10 03 00" + events(9, 1) + " 00 FC 00 00 00 FC");
}

TEST_F(RD210FirmwareTest, keepsStepSequences)
{
    configure();
    ask("51 18 02 00 B2 5C");
    EXPECT_EQ(ask("53 00 02 00 FF 9E 80 00 00 FC"), "53 00 02");
    EXPECT_EQ(ask("52 18 02"), "52 18 02 00 B2 5C");
    EXPECT_EQ(ask("53 10 02"), "53 10 02 00 FF 9E 80 00 00 FC");
}

TEST_F(RD210FirmwareTest, hasNoMacroWhereTheCursorPointsNowhere)
{
    configure();
    EXPECT_EQ(ask("53 10 0F"), "");
    ask("51 18 02 00 B2 3C");
    EXPECT_EQ(ask("53 00 00"), "");
    EXPECT_EQ(ask("53 00 10 00" + events(1, 15)), "");
    EXPECT_EQ(ask("53 10 10"), "");
    EXPECT_EQ(ask("53 10 01"), "53 10 01 00 00 FC");
    ask("51 18 02 00 B2 3E"); // a page without areas
    EXPECT_EQ(ask("53 10 01"), "");
    ask("51 18 02 00 FF 3F");
    EXPECT_EQ(ask("53 00 01 00" + events(1, 1)), "");
    EXPECT_EQ(ask("53 10 01"), "");
}

TEST_F(RD210FirmwareTest, resetsTheCurrentProfileInWorkingMemory)
{
    configure();
    ask("51 F0 00 00 07");
    ask("51 00 00 00 02");
    ask("51 F0 00 00 08");
    maintain();
    EXPECT_EQ(ask("50 55"), "50 55");
    EXPECT_EQ(ask("50 10 00 00 00"), "50 10");
    EXPECT_EQ(mouse.profile(), 2);
    EXPECT_EQ(mouse.settings(2), RD210Firmware().settings(2));
    EXPECT_EQ(mouse.settings(0).settingF0[0], 0x07);
    EXPECT_EQ(mouse.savedSettings(2).settingF0[0], 0x08);
    EXPECT_EQ(ask("50 10 00 00 01"), "");
}

TEST_F(RD210FirmwareTest, resetsEverythingWithTheStoredCopy)
{
    configure();
    ask("51 F0 00 00 07");
    ask("51 00 00 00 02");
    maintain();
    ask("50 55");
    EXPECT_EQ(ask("50 10 00 00 FF"), "50 10");
    EXPECT_EQ(mouse.profile(), 0);
    EXPECT_EQ(mouse.savedProfile(), 0);
    EXPECT_EQ(mouse.settings(0), RD210Firmware().settings(0));
    EXPECT_EQ(mouse.savedSettings(0), RD210Firmware().settings(0));
}

TEST_F(RD210FirmwareTest, beginsWithWhatWasSaved)
{
    configure();
    ask("51 00 00 00 03");
    ask("51 F0 00 00 07");
    maintain();
    ask("50 55");
    EXPECT_EQ(mouse.saves(), 1);
    EXPECT_EQ(mouse.savedProfile(), 3);
    configure();
    ask("51 F0 00 00 09");
    ask("51 00 00 00 01");
    mouse.powerOn();
    EXPECT_EQ(mouse.state(), RD210Firmware::State::off);
    EXPECT_EQ(mouse.profile(), 3);
    configure();
    EXPECT_EQ(ask("52 F0"), "52 F0 00 00 07");
}

TEST_F(RD210FirmwareTest, resetsPartsOfTheCurrentProfile)
{
    const auto factory = RD210Firmware().settings(0);
    const auto change = [this] {
        configure();
        for (const char* command :
             {"51 18 02 00 B2 3C", "51 19 02 00 41", "51 20 B1 00 01 02", "51 20 D8 00 01 02",
              "51 22 00 00 10 20", "51 10 00 00 00 00 00 00 00 00 00 00 05 00 00 00 08",
              "51 9B 00 00 06 05 04 03 02 01 00", "51 40 00 00 02 03", "51 F0 00 00 05"})
            ASSERT_NE(ask(command), "") << command;
        ASSERT_NE(ask("53 00 01 00 04 5C"), "");
    };
    change();
    const auto changed = mouse.settings(0);

    EXPECT_EQ(ask("51 98 02"), "51 98 02");
    auto now = mouse.settings(0);
    EXPECT_EQ(now.macros, factory.macros);
    EXPECT_EQ(now.names, factory.names);
    EXPECT_EQ(now.assignments, factory.assignments);
    EXPECT_EQ(now.keys, changed.keys);
    EXPECT_EQ(now.bank, changed.bank);
    EXPECT_EQ(now.wheel, changed.wheel);
    EXPECT_EQ(now.performance, changed.performance);

    change();
    EXPECT_EQ(ask("51 98 04"), "51 98 04");
    now = mouse.settings(0);
    EXPECT_EQ(now.keys, factory.keys);
    EXPECT_EQ(now.shiftKey, factory.shiftKey);
    EXPECT_EQ(now.assignments, factory.assignments);
    EXPECT_EQ(now.wheel, factory.wheel);
    EXPECT_EQ(ask("52 10"), "52 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 08");
    EXPECT_EQ(now.macros, changed.macros);
    EXPECT_EQ(now.names, changed.names);
    EXPECT_EQ(now.performance, changed.performance);
    EXPECT_EQ(now.order, changed.order);
    EXPECT_EQ(now.settingF0, changed.settingF0);

    change();
    EXPECT_EQ(ask("51 98 10"), "51 98 10");
    now = mouse.settings(0);
    EXPECT_EQ(now.performance, factory.performance);
    EXPECT_EQ(now.order, factory.order);
    EXPECT_EQ(now.settingF0, factory.settingF0);
    EXPECT_EQ(now.wheel, factory.wheel);
    EXPECT_EQ(ask("52 10"), "52 10 00 00 00 00 00 00 00 00 00 00 05 00 00 00 03");
    EXPECT_EQ(now.keys, changed.keys);
    EXPECT_EQ(now.assignments, changed.assignments);
    EXPECT_EQ(now.macros, changed.macros);

    change();
    EXPECT_EQ(ask("51 98 09 01 00 00"), "51 98 09 01");
    EXPECT_EQ(mouse.settings(0), changed);
}

TEST_F(RD210FirmwareTest, learnsTheSurface)
{
    configure();
    EXPECT_EQ(ask("80 00"), "80");
    EXPECT_FALSE(mouse.happen("surface", {20, 30}));
    EXPECT_EQ(ask("80 01 00 00 01"), "80 01");
    EXPECT_TRUE(mouse.learning());
    EXPECT_EQ(ask("80 00"), "80 00 00 00 01");
    EXPECT_EQ(happen("surface", {20, 30}), "");
    EXPECT_EQ(ask("80 00"), "80");
    EXPECT_EQ(ask("52 40").substr(3 * 29), "14 1E");

    ask("80 01 00 00 01");
    // The end is taken in any state: the host sends it as it stands.
    ask("41 00");
    EXPECT_EQ(ask("80 01 00 00 01"), "");
    EXPECT_TRUE(mouse.learning());
    EXPECT_EQ(ask("80 01"), "80 01");
    EXPECT_FALSE(mouse.learning());
    configure();
    EXPECT_EQ(ask("80 01 00 00 02"), "");
    EXPECT_EQ(ask("52 40").substr(3 * 29), "14 1E");
}

TEST_F(RD210FirmwareTest, recordsKeysInTheMaintenanceState)
{
    maintain();
    EXPECT_EQ(ask("51 22 00 00 C0 C0"), "51 22");
    EXPECT_TRUE(mouse.recording());
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_FALSE(mouse.recording());
}

TEST_F(RD210FirmwareTest, changesItsLevelByItsButton)
{
    EXPECT_EQ(happen("dpi", {3}), "42 20 40 03 01");
    EXPECT_EQ(mouse.level(), 3);
    configure();
    EXPECT_EQ(ask("52 40").substr(0, 3 * 5), "52 40 00 00 03 ");
    ask("51 9B 00 00 02 04 06 00 01 03 05");
    ask("51 40 00 00 01 03");
    EXPECT_EQ(happen("dpi", {6}), "42 20 40 06 01");
    EXPECT_EQ(mouse.level(), 6);
    EXPECT_EQ(ask("52 40"), "52 40 00 00 02 03");
    EXPECT_FALSE(mouse.happen("dpi", {0})); // not enabled
    EXPECT_FALSE(mouse.happen("dpi", {7}));
    EXPECT_EQ(mouse.level(), 6);
}

TEST_F(RD210FirmwareTest, changesItsProfileByItsButton)
{
    EXPECT_EQ(happen("profile", {4}), "42 20 00 04 01");
    EXPECT_EQ(mouse.profile(), 4);
    EXPECT_FALSE(mouse.happen("profile", {5}));
    EXPECT_FALSE(mouse.happen("profile", {-1}));
    EXPECT_EQ(mouse.profile(), 4);
}

TEST_F(RD210FirmwareTest, reportsItsKeys)
{
    EXPECT_EQ(happen("key", {2, 1}), "43 01 00 00 02 C0");
    EXPECT_EQ(happen("key", {2, 0}), "43 01 00 00 02 40");
    EXPECT_EQ(happen("key", {24, 0xC0}), "43 01 00 00 18 C0");
    EXPECT_EQ(happen("key", {9, 0x55}), "43 01 00 00 09 55");
    EXPECT_FALSE(mouse.happen("key", {256, 1}));
    EXPECT_FALSE(mouse.happen("key", {1, 256}));
}

TEST_F(RD210FirmwareTest, knowsItsEvents)
{
    EXPECT_EQ(mouse.events(),
              (std::vector<std::string>{"dpi LEVEL", "profile N", "key NUMBER STATE", "surface A B"}));
    EXPECT_FALSE(mouse.happen("dpi", {}));
    EXPECT_FALSE(mouse.happen("dpi", {1, 2}));
    EXPECT_FALSE(mouse.happen("wheel", {1}));
    EXPECT_FALSE(mouse.happen("", {}));
}

TEST_F(RD210FirmwareTest, countsAcknowledgements)
{
    EXPECT_EQ(ask("42 10 40 00 01"), "42 10 40");
    EXPECT_EQ(ask("42 10 40 00 01"), "42 10 40");
    EXPECT_EQ(ask("42 10 00 00 01 00 00 01"), "42 10");
    EXPECT_EQ(ask("42 10 00 00 00"), "42 10");
    EXPECT_EQ(ask("42 10 20 00 01"), "42 10 20");
    EXPECT_EQ(mouse.dpiAcknowledgements(), 2);
    EXPECT_EQ(mouse.profileAcknowledgements(), 1);
    mouse.powerOn();
    EXPECT_EQ(mouse.dpiAcknowledgements(), 0);
}

} // namespace

} // namespace pyrux::sim
