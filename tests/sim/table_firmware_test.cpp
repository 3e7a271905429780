// What a firmware model is written in: the tables of commands and events.

#include "simulator/models/table_firmware.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace pyrux::sim {

namespace {

enum Lamp : States { dark = 1, lit = 2 };

class Trial : public TableFirmware {
public:
    explicit Trial(const Form& form = echoForm)
        : TableFirmware(identityOf("TRIAL LAMP", 0x0303, 0x0100,
                                   {{.interface = 0},
                                    {.interface = 3, .reports = {{.id = 5, .output = 8, .input = 8}}}},
                                   0),
                        form)
    {
        takes({
            {"41 00", done([this] { setState(dark); })},
            {"41 01", done([this] { setState(lit); })},
            {"51 07", lit, [](auto& c) { return told(c[4], c[5]); }},
            {"51 07", [] { return refused(9); }},
            {"51/52 10 0. .8", [] { return told(1); }},
            {"53", [](auto& c) { return told(c.bytes(1, 2)); }},
            {"54", [] {}},
            {"55",
             [] {
                 return Answer{.kind = Answer::Kind::reports, .reports = {{1, 2}, {3}}};
             }},
            {Head::text("[M.]"), [](auto& c) { return report(joined(c[2])); }},
            {"C0", lit, [this] { countFrame(); }},
        });
        takes({3, 5}, {{"56", [] { return told(0x33); }}, {"57", [] {
                                                               return reportOn({0, 0}, {0x57, 0x99});
                                                           }}});
        does({
            {"turn",
             {{"DEGREES", -90, 90}, {"SPEED", 1, 3}},
             [](auto& values) {
                 return values[1] == 2 ? refused() : report(joined(0x42, values[0], values[1]));
             }},
            {"rest", {}, [] {}},
            {"blink",
             {},
             [] {
                 return reportOn({3, 5}, {0x43});
             }},
        });
    }

    void restart() override { setState(dark); }

    using TableFirmware::takes;
};

class TableFirmwareTest : public OnTable<Trial> {};

TEST_F(TableFirmwareTest, tellsOfItself)
{
    EXPECT_EQ(device.identity().product, "TRIAL LAMP");
    EXPECT_EQ(device.identity().serial, "TRIALLAMP-000001");
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.events(), (std::vector<std::string>{"turn DEGREES SPEED", "rest", "blink"}));
    EXPECT_TRUE(device.picture().empty());
}

TEST_F(TableFirmwareTest, takesTheFirstRowThatFitsItsState)
{
    EXPECT_EQ(ask("51 07 00 00 AA BB"), ""); // refused, which this form is silent about
    EXPECT_EQ(ask("41 01 22 33 44"), "41 01 22 33");
    EXPECT_EQ(ask("51 07 00 00 AA BB CC"), "51 07 00 00 AA BB");
    device.powerOn();
    EXPECT_EQ(ask("51 07 00 00 AA BB"), "");
}

TEST_F(TableFirmwareTest, matchesDigitsAndAlternatives)
{
    EXPECT_EQ(ask("51 10 0F A8"), "51 10 0F A8 01");
    EXPECT_EQ(ask("52 10 00 08"), "52 10 00 08 01");
    EXPECT_EQ(ask("53 10 00 08"), "53 10 00 08 10"); // the row of 53
    EXPECT_EQ(ask("51 10 10 08"), "");
    EXPECT_EQ(ask("51 10 00 09"), "");
    EXPECT_EQ(ask("50 10 00 08"), "");
}

TEST_F(TableFirmwareTest, countsMissingBytesAsZeros)
{
    EXPECT_EQ(ask("41"), "41");
    EXPECT_EQ(ask("53"), "53");
    EXPECT_EQ(ask("51 10"), ""); // 00 is no .8
}

TEST_F(TableFirmwareTest, isSilentOrSaysSeveralThings)
{
    EXPECT_EQ(ask("54"), "");
    EXPECT_EQ(ask("55"), "01 02 | 03");
    EXPECT_EQ(ask("99"), "");
}

TEST_F(TableFirmwareTest, takesTextsThatEndThere)
{
    EXPECT_EQ(ask("5B 4D 31 5D"), "31");  // [M1]
    EXPECT_EQ(ask("5B 4D 31 5D 20"), ""); // [M1] and a blank
    EXPECT_EQ(ask("5B 4D 31 32 5D"), ""); // [M12]
}

TEST_F(TableFirmwareTest, countsFramesUntilPowerGoes)
{
    ask("C0");
    EXPECT_EQ(device.frames(), 0);
    ask("41 01");
    ask("C0");
    ask("C0 01");
    EXPECT_EQ(device.frames(), 2);
    device.powerOn();
    EXPECT_EQ(device.frames(), 0);
}

TEST_F(TableFirmwareTest, letsALaterTableComeFirst)
{
    device.takes({{"51 07", [] { return told(0x77); }}});
    EXPECT_EQ(ask("51 07"), "51 07 00 00 77");
    EXPECT_EQ(ask("51 10 00 08"), "51 10 00 08 01");
}

TEST_F(TableFirmwareTest, checksTheValuesOfAnEvent)
{
    EXPECT_EQ(happen("turn", {90, 1}), "42 5A 01");
    EXPECT_EQ(happen("turn", {-90, 3}), "42 A6 03");
    EXPECT_EQ(happen("rest", {}), "");
    said.clear();
    EXPECT_FALSE(device.happen("turn", {91, 1}));
    EXPECT_FALSE(device.happen("turn", {-91, 1}));
    EXPECT_FALSE(device.happen("turn", {0, 0}));
    EXPECT_FALSE(device.happen("turn", {0, 2})); // cannot happen now
    EXPECT_FALSE(device.happen("turn", {0}));
    EXPECT_FALSE(device.happen("turn", {0, 1, 1}));
    EXPECT_FALSE(device.happen("rest", {1}));
    EXPECT_FALSE(device.happen("fall", {}));
    EXPECT_EQ(said, "");
}

TEST_F(TableFirmwareTest, answersWhereItWasAsked)
{
    std::vector<std::pair<Channel, std::vector<std::uint8_t>>> heard;
    device.connect(Firmware::Sink([&](const Channel& from, Bytes bytes) {
        heard.push_back({from, {bytes.begin(), bytes.end()}});
    }));
    device.outputOn({3, 5}, bytesOf("53 01 02"));
    device.output(bytesOf("53 03 04"));
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].first, (Channel{3, 5}));
    EXPECT_EQ(heard[0].second, bytesOf("53 01 02 00 01 02 00 00"));
    EXPECT_EQ(heard[1].first, (Channel{0, 0}));
    EXPECT_EQ(heard[1].second.size(), 64U);
}

TEST_F(TableFirmwareTest, keepsTheCommandsOfAnInterfaceThere)
{
    std::vector<std::pair<Channel, std::string>> heard;
    device.connect(Firmware::Sink([&](const Channel& from, Bytes bytes) {
        heard.push_back({from, textOf(bytes)});
    }));
    device.output(bytesOf("56"));
    EXPECT_TRUE(heard.empty());
    device.outputOn({3, 5}, bytesOf("56"));
    device.outputOn({3, 5}, bytesOf("57")); // answered elsewhere
    EXPECT_TRUE(device.happen("blink", {}));
    const std::vector<std::pair<Channel, std::string>> expected{
        {{3, 5}, "56 00 00 00 33"}, {{0, 0}, "57 99"}, {{3, 5}, "43"}};
    EXPECT_EQ(heard, expected);
}

std::string asked(TableFirmware& device, const std::string& command)
{
    std::string said;
    device.connect([&](Bytes report) { said = textOf(report); });
    device.output(bytesOf(command));
    device.connect({});
    return said;
}

TEST(AnswerForm, ofHubsHasSuccessAndRefusal)
{
    Trial hub(hubForm);
    EXPECT_EQ(asked(hub, "51 07 00 00 AA"), "51 07 04 09");
    EXPECT_EQ(asked(hub, "41 01"), "41 01 03");
    EXPECT_EQ(asked(hub, "51 07 00 00 AA BB"), "51 07 03 AA BB");
}

TEST(AnswerForm, mayAddToTheFirstByte)
{
    Trial wireless({.echoed = 3, .added = 1, .dataFrom = 3});
    EXPECT_EQ(asked(wireless, "53 81 02"), "54 81 02 81 02");
}

TEST(Transfers, takePartsInOrder)
{
    Transfer transfer;
    EXPECT_FALSE(transfer.add(0, bytesOf("01"))); // not begun
    transfer.begin(5);
    EXPECT_TRUE(transfer.add(0, bytesOf("01 02 03")));
    EXPECT_FALSE(transfer.whole());
    EXPECT_TRUE(transfer.add(1, bytesOf("04 05 06 07"))); // more than there is room for
    EXPECT_TRUE(transfer.whole());
    EXPECT_EQ(transfer.data, bytesOf("01 02 03 04 05"));
    transfer.begin(5);
    EXPECT_TRUE(transfer.add(0, bytesOf("01")));
    EXPECT_FALSE(transfer.add(2, bytesOf("02")));
    EXPECT_FALSE(transfer.add(1, bytesOf("02"))); // over
}

} // namespace

} // namespace pyrux::sim
