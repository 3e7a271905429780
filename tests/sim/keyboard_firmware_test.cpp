#include "simulator/models.h"
#include "simulator/models/keyboard.h"
#include "tests/sim/on_table.h"
#include "tests/support/keyboard_images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

using test::EffectImage;

class KeyboardOnTable : public OnTable<KeyboardFirmware> {
protected:
    explicit KeyboardOnTable(const char* name) : OnTable(makeFirmware(name)) {}

    using State = KeyboardFirmware::State;

    std::string led(int number) const { return textOfLight(device.lights().at(std::size_t(number))); }

    static std::string textOfLight(const Light& light)
    {
        return hexOf(light.red) + hexOf(light.green) + hexOf(light.blue);
    }

    /// How many LEDs show a color.
    int count(const std::string& color) const
    {
        const auto lights = device.lights();
        return int(
            std::ranges::count_if(lights, [&](const Light& one) { return textOfLight(one) == color; }));
    }

    /// Brings the state to configuration and shows the preview whose image is `pages`.
    void preview(const std::string& frames, const std::vector<std::string>& pages)
    {
        EXPECT_EQ(ask("56 81 00 00 00 00 00 00 " + frames), "56 81");
        for (std::size_t i = 0; i < pages.size(); ++i) {
            const std::string head = "56 83 " + hexOf(std::uint8_t(i));
            EXPECT_EQ(ask(head + " 00 " + pages[i]), i == 0 ? "56 83" : head);
        }
        EXPECT_EQ(ask("41 80"), "41 80");
        EXPECT_EQ(ask("51 28 00 00 FF"), "51 28");
    }

    /// The image that the device gives when it is read.
    void expectImage(const EffectImage& image)
    {
        for (std::size_t i = 0; i < image.descriptors.size(); ++i) {
            const std::string head = "56 14 " + hexOf(std::uint8_t(i));
            EXPECT_EQ(ask(head), textOf(bytesOf(head + " 00 " + std::string(image.descriptors[i], 11))));
        }
        for (std::size_t i = 0; i < image.pages.size(); ++i) {
            const std::string head = "56 20 " + hexOf(std::uint8_t(i));
            EXPECT_EQ(ask(head), textOf(bytesOf(head + " 00 " + image.pages[i])));
        }
    }

    void write(const EffectImage& image)
    {
        for (const std::string& report : test::reports(test::storingOf(image)))
            EXPECT_EQ(ask(report), textOf(bytesOf(report.substr(0, 11))));
    }
};

class QW210FirmwareTest : public KeyboardOnTable {
protected:
    QW210FirmwareTest() : KeyboardOnTable("qw210") {}
};
class QW220FirmwareTest : public KeyboardOnTable {
protected:
    QW220FirmwareTest() : KeyboardOnTable("qw220") {}
};

TEST(KeyboardFirmwareIdentity, isTheModels)
{
    const auto check = [](const char* name, std::uint16_t pid, const char* product) {
        const std::shared_ptr<Firmware> keyboard = makeFirmware(name);
        ASSERT_NE(keyboard, nullptr);
        EXPECT_EQ(keyboard->identity().vid, 0x3A7E);
        EXPECT_EQ(keyboard->identity().pid, pid);
        EXPECT_EQ(keyboard->identity().product, product);
        EXPECT_EQ(keyboard->identity().controlInterface, 1);
        EXPECT_EQ(keyboard->identity().collections.size(), 2U);
    };
    check("qw210", 0x0147, "QW210");
    check("qw220", 0x0145, "QW220");
}

TEST_F(QW210FirmwareTest, takesSettingsInTheStatesThatAreForThem)
{
    const std::vector<std::string> commands{"51 00 00 00 01", "52 00", "51 20 05", "52 21",
                                            "52 18",          "52 19", "51 28",    "52 28"};
    for (const char* state : {"41 80", "41 02", "41 03"}) {
        EXPECT_EQ(ask(state), state);
        for (const std::string& command : commands)
            EXPECT_NE(ask(command), "") << state << ", " << command;
        EXPECT_EQ(ask("50 55"), "") << state;
    }
    for (const char* state : {"41 01", "41"}) {
        EXPECT_EQ(ask(state == std::string("41") ? "41 00" : state), state);
        for (const std::string& command : commands)
            EXPECT_EQ(ask(command), "") << state << ", " << command;
    }
    EXPECT_EQ(device.state(), State::off);
    EXPECT_EQ(ask("41 04"), "");
    EXPECT_EQ(device.state(), State::off);
    EXPECT_EQ(ask("55 00"), "");
    EXPECT_EQ(ask("56 14 15"), "");
    EXPECT_EQ(ask("56 20 21"), "");
    EXPECT_EQ(ask("56 83 34"), "");
}

TEST_F(QW210FirmwareTest, changesItsProfile)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 00 00 00 04"), "51");
    EXPECT_EQ(ask("52 00"), "52 00 00 00 04");
    EXPECT_EQ(ask("51 00 00 00 05"), "");
    EXPECT_EQ(device.profile(), 4);
    device.powerOn();
    EXPECT_EQ(device.profile(), 4);
}

TEST_F(QW210FirmwareTest, keepsWhatItsKeysDo)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 20 11 00 34 12"), "51 20 11");
    EXPECT_EQ(ask("51 20 12 02 78 56"), "51 20 12 02");
    std::string page = "52 21 01 00";
    for (int key = 0; key < 16; ++key)
        page += key == 1 ? " 34 12" : " FF 00";
    EXPECT_EQ(ask("52 21 01"), page.substr(0, page.size() - 3));
    EXPECT_EQ(device.keys(0).actions[0x12], (std::array<std::uint8_t, 3>{0x02, 0x78, 0x56}));
    EXPECT_EQ(ask("51 21 0F 00 " + counting(1, 32)), "51 21 0F");
    EXPECT_EQ(ask("52 21 0F"), "52 21 0F 00 " + counting(1, 32));
    EXPECT_EQ(device.keys(0).map[255], 0x201F);
    EXPECT_EQ(ask("51 21 10"), "");
    EXPECT_EQ(ask("52 21 10"), "");
    device.powerOn();
    EXPECT_EQ(device.keys(0).map[255], 0x201F);
    EXPECT_EQ(device.keys(1).map[255], 0x00FF);
}

TEST_F(QW210FirmwareTest, keepsMacros)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("53 00 01 00 04 5C 02 00"), ""); // no macro has been pointed at
    EXPECT_EQ(ask("52 18 05"), "52 18 05 00 FF 3F");
    EXPECT_EQ(ask("51 18 05 00 04 5D 07"), "51 18 05");
    EXPECT_EQ(ask("51 19 05 00 " + counting(0x41, 16)), "51 19 05");
    EXPECT_EQ(ask("53 00 0F 00 " + counting(1, 60)), "53 00 0F");
    EXPECT_EQ(ask("53 01 02 00 " + counting(0x80, 8)), "53 01 02");
    EXPECT_EQ(ask("53 01 00"), "53 01");
    EXPECT_EQ(ask("53 01 10"), "");
    EXPECT_EQ(ask("52 18 05"), "52 18 05 00 04 5D 07");
    EXPECT_EQ(ask("52 19 05"), "52 19 05 00 " + counting(0x41, 16));
    EXPECT_EQ(ask("52 18 06"), "52 18 06 00 FF 3F");
    EXPECT_EQ(ask("51 18 05 00 04 5D 07"), "51 18 05"); // opens it again
    EXPECT_EQ(ask("53 10 0F"), "53 10 0F 00 " + counting(1, 60));
    EXPECT_EQ(ask("53 11 03"), "53 11 03 00 " + counting(0x80, 8) + " 00 FC FE FF");
    EXPECT_EQ(ask("51 18 14"), "");
    EXPECT_EQ(ask("52 18 14"), "");
    EXPECT_EQ(ask("52 19 14"), "");
    device.powerOn();
    EXPECT_EQ(device.macro(0, 5).header, (std::array<std::uint8_t, 3>{0x04, 0x5D, 0x07}));
    EXPECT_EQ(device.macro(1, 5).header, (std::array<std::uint8_t, 3>{0xFF, 0x3F, 0x00}));
}

TEST_F(QW210FirmwareTest, hasRoomForTwoHundredEvents)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 18 00 00 04 3C"), "51 18");
    EXPECT_EQ(ask("53 00 0F"), "53 00 0F");
    for (int block = 1; block < 13; ++block)
        EXPECT_EQ(ask("53 01 0F"), "53 01 0F");
    EXPECT_EQ(ask("53 01 06"), "");
    EXPECT_EQ(ask("53 01 05 00 " + counting(1, 20)), "53 01 05");
    EXPECT_EQ(ask("53 01 01"), "");
    EXPECT_EQ(device.macro(0, 0).events[799], 20);
}

TEST_F(QW210FirmwareTest, comesWithAnEffectMemory)
{
    expectImage(test::factoryImage210);
}

TEST_F(QW220FirmwareTest, comesWithAnEffectMemoryOfShorterMasks)
{
    expectImage(test::factoryImage220);
}

TEST_F(QW210FirmwareTest, keepsAnotherEffectMemory)
{
    write(test::changedImage210);
    expectImage(test::changedImage210);
    EXPECT_EQ(device.effects(0).descriptors[1].word, (std::array<std::uint8_t, 4>{0x99, 0x99, 0x99, 0x99}));
    EXPECT_EQ(device.effects(0).descriptors[19].word, (std::array<std::uint8_t, 4>{0x88, 0x08, 0x88, 0x88}));
}

TEST_F(QW210FirmwareTest, keepsEffectsOfEachProfileThatWereStored)
{
    write(test::changedImage210);
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 04"), "51 28");
    EXPECT_EQ(ask("51 00 00 00 01"), "51");
    expectImage(test::factoryImage210);
    EXPECT_EQ(ask("52 28"), "52 28");
    EXPECT_EQ(ask("51 00 00 00 00"), "51");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 04");
    device.powerOn();
    expectImage(test::factoryImage210);
    write(test::changedImage210);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 55"), "50 55");
    EXPECT_EQ(device.saves(), 1);
    device.powerOn();
    expectImage(test::changedImage210);
}

TEST_F(QW210FirmwareTest, takesEffectsThatItHas)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 14"), "51 28");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 14");
    EXPECT_EQ(ask("51 28 00 00 15"), "");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 14");
}

TEST_F(QW210FirmwareTest, resetsItself)
{
    write(test::changedImage210);
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 20 11 00 34 12"), "51 20 11");
    EXPECT_EQ(ask("51 18 05 00 04 5D"), "51 18 05");
    EXPECT_EQ(ask("51 98 02"), "51 98 02");
    EXPECT_EQ(device.keys(0).map[0x11], 0x00FF);
    EXPECT_EQ(device.macro(0, 5).header[0], 0x04);
    EXPECT_EQ(ask("51 98 04"), "51 98 04");
    EXPECT_EQ(device.macro(0, 5).header[0], 0xFF);
    expectImage(test::changedImage210);
    EXPECT_EQ(ask("51 98 01"), "51 98 01");
    expectImage(test::factoryImage210);

    write(test::changedImage210);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 55"), "50 55");
    EXPECT_EQ(ask("50 10 00 00 01"), "");
    EXPECT_EQ(ask("50 10"), "50 10");
    expectImage(test::factoryImage210);
    device.powerOn(); // the commit did not follow
    expectImage(test::changedImage210);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 10 00 00 FF"), "50 10");
    device.powerOn();
    expectImage(test::factoryImage210);
}

TEST_F(QW210FirmwareTest, showsASteadyColorAtItsBrightness)
{
    EXPECT_EQ(count("FFFFFF"), 168);
    preview("01", {"01 00 00 00 00 01 00 C1 00 00 00 00 FF 80 02 80"});
    EXPECT_TRUE(device.previewing());
    EXPECT_EQ(count("804001"), 168);
    EXPECT_EQ(ask("52 28"), "52 28 00 00 FF");
    EXPECT_EQ(ask("51 28 00 00 00"), "51 28");
    EXPECT_EQ(count("FFFFFF"), 168);
    EXPECT_EQ(ask("51 28 00 00 FF"), "51 28");
    EXPECT_EQ(count("804001"), 168);
    EXPECT_EQ(ask("41 01"), "41 01"); // ends the preview
    EXPECT_EQ(count("FFFFFF"), 168);
}

TEST_F(QW210FirmwareTest, showsCustomColors)
{
    write(test::changedImage210);
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 04"), "51 28");
    // 7 * k + 3 at a brightness of A4
    EXPECT_EQ(led(0), "01060A");
    EXPECT_EQ(led(1), "0F1318");
    EXPECT_EQ(led(167), "75797E");
}

TEST_F(QW210FirmwareTest, showsLayersOneOverTheOther)
{
    // a red ground, an empty layer, a blue layer on every second LED, an empty one
    preview("04", {"05 00 05 00 0C 00 00 00 10 00 01 00 12 00 02 00 16 00 03 00 "
                   "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
                   "FF FF FF FF 00 01 00 C1 00 00 00 00",
                   ""});
    EXPECT_EQ(count("000000"), 168); // records stand where the masks are: nothing but rubbish
    std::string masks;
    for (const char* byte : {"FF", "FF", "AA", "FF"})
        for (int i = 0; i < 24; ++i)
            masks += std::string(" ") + byte;
    std::string image = "0E 00 0E 00 05 00 00 00 09 00 01 00 0B 00 02 00 09 00 03 00 "
                        "00 01 00 C1 00 00 00 00 FF 00 00 FF 00 00 00 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "00 01 00 C1 00 00 00 00 00";
    image += " 00 FF FF" + masks;
    std::vector<std::string> pages;
    for (std::size_t at = 0; at < image.size(); at += 180)
        pages.push_back(image.substr(at, 179));
    preview("04", pages);
    EXPECT_EQ(led(0), "FF0000");
    EXPECT_EQ(led(1), "0000FF");
    EXPECT_EQ(count("FF0000"), 84);
    EXPECT_EQ(count("0000FF"), 84);
}

TEST_F(QW210FirmwareTest, showsZonesUnderTheirMasks)
{
    write(test::changedImage210);
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 13"), "51 28");
    // zones 0, 5, empty, 9: color {10 + i, 20 + i, 30 + i} at brightness A0 + i
    EXPECT_EQ(led(0), "0A141E");
    EXPECT_EQ(led(1), "0D1722");
    EXPECT_EQ(led(2), "000000");
    EXPECT_EQ(led(3), "101B25");
    EXPECT_EQ(led(4), "0A141E");
    EXPECT_EQ(count("0A141E"), 42);
    EXPECT_EQ(count("000000"), 42);
    EXPECT_EQ(ask("51 28 00 00 12"), "51 28"); // layers 0, 2, empty, 13, which is blue
    EXPECT_EQ(count("0000AD"), 168);
}

TEST_F(QW220FirmwareTest, reachesAsManyLedsAsItsMasksHaveBits)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 02"), "51 28");
    EXPECT_EQ(count("FFFFFF"), 160);
    EXPECT_EQ(led(159), "FFFFFF");
    EXPECT_EQ(led(160), "000000");
    EXPECT_EQ(ask("51 28 00 00 00"), "51 28");
    EXPECT_EQ(count("FFFFFF"), 168);
}

TEST_F(QW210FirmwareTest, showsStatusFrames)
{
    EXPECT_EQ(ask("56 81 00 00 01 00 00 00 01 00 00 00 BB 0B 55 55"), "56 81");
    EXPECT_EQ(ask("56 83 00 00 01 00 00 00 04 F0 00 C1"), "56 83");
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 FF"), "51 28");
    EXPECT_EQ(count("000000"), 168);
    EXPECT_EQ(ask("56 42 00 00 02 12 12 00 01 02 03 04 05 06"), "");
    EXPECT_EQ(ask("56 42 00 00 02 0D A2 00 " + counting(1, 39)), "");
    EXPECT_EQ(led(17), "000000");
    EXPECT_EQ(led(18), "010203");
    EXPECT_EQ(led(19), "040506");
    EXPECT_EQ(led(162), "010203");
    EXPECT_EQ(led(167), "101112");
    EXPECT_EQ(device.frames(), 2);
    EXPECT_EQ(ask("56 42 00 00 01 12 00 00 09 09 09"), "");
    EXPECT_EQ(ask("56 42 00 00 02 13 00 00 09 09 09"), "");
    EXPECT_EQ(led(0), "000000");
    EXPECT_EQ(ask("51 28 00 00 14"), "51 28"); // its own effect is the same
    EXPECT_EQ(led(18), "010203");
    EXPECT_EQ(ask("51 28 00 00 00"), "51 28");
    EXPECT_EQ(count("FFFFFF"), 168);
}

TEST_F(QW210FirmwareTest, showsFramesOfTheHost)
{
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(count("FFFFFF"), 168);
    EXPECT_EQ(ask("41 03"), "41 03");
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(count("000000"), 168);
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_EQ(count("010203"), 168);
    EXPECT_EQ(ask("C0 01 02 00 08 11 12 13 A7 21 22 23 09 31 32 33"), "");
    EXPECT_EQ(led(8), "111213");
    EXPECT_EQ(led(167), "212223");
    EXPECT_EQ(count("010203"), 166);
    EXPECT_EQ(ask("C0 01 01 00 A8 31 32 33"), ""); // not there
    EXPECT_EQ(device.frames(), 3);
    EXPECT_EQ(ask("C0 01 10"), "");
    EXPECT_EQ(device.frames(), 3);
    EXPECT_EQ(ask("41 00"), "41");
    EXPECT_EQ(count("FFFFFF"), 168);
}

TEST_F(QW210FirmwareTest, showsItsLedsRowByRow)
{
    EXPECT_EQ(ask("41 03"), "41 03");
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_EQ(ask("C0 01 02 00 08 11 12 13 0E 21 22 23"), "");
    const Picture picture = device.picture();
    ASSERT_EQ(picture.size(), 7U);
    EXPECT_EQ(picture[0].name, "row 1");
    EXPECT_EQ(picture[6].name, "row 7");
    for (const LightZone& row : picture)
        EXPECT_EQ(row.leds.size(), 24U);
    EXPECT_EQ(picture[1].leds[1], (Light{0x11, 0x12, 0x13}));
    EXPECT_EQ(picture[0].leds[2], (Light{0x21, 0x22, 0x23}));
    EXPECT_EQ(zone("row 3"), "000000 x24");
}

TEST_F(QW220FirmwareTest, showsItsLedsInSixRows)
{
    EXPECT_EQ(ask("41 03"), "41 03");
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_EQ(ask("C0 01 01 00 08 11 12 13"), "");
    const Picture picture = device.picture();
    ASSERT_EQ(picture.size(), 6U);
    for (const LightZone& row : picture)
        EXPECT_EQ(row.leds.size(), 28U);
    EXPECT_EQ(picture[2].leds[1], (Light{0x11, 0x12, 0x13}));
}

TEST_F(QW210FirmwareTest, showsNothingOfAMemoryThatLeadsOutside)
{
    preview("08", {"FF FF FF FF FF FF FF FF"});
    EXPECT_EQ(count("000000"), 168);
    EXPECT_EQ(ask("56 15 00 00 FF FF FF FF"), "56 15");
    EXPECT_EQ(ask("51 28 00 00 00"), "51 28");
    EXPECT_EQ(count("000000"), 168);
}

TEST_F(QW210FirmwareTest, reportsWhatHappensOnceItHasBeenAsked)
{
    EXPECT_EQ(happen("profile", {2}), "");
    EXPECT_EQ(device.profile(), 2);
    EXPECT_EQ(happen("key", {4, 1}), "");
    EXPECT_EQ(ask("42 00 00 00 01 00 00 01"), "");
    EXPECT_EQ(ask("42 10 00 00 01 00 00 01"), "");
    EXPECT_EQ(device.acknowledgements(), 1);
    EXPECT_EQ(ask("43 00 00 00 01"), "43");
    EXPECT_EQ(happen("profile", {3}), "42 20 00 03 01");
    EXPECT_EQ(happen("effect", {7}), "42 20 00 03 00 00 00 01");
    EXPECT_EQ(device.effects(3).mode, 7);
    EXPECT_EQ(happen("key", {60, 1}), "43 01 00 00 3C C0");
    EXPECT_EQ(happen("key", {4, 1}), "43 01 00 00 04 C0");
    EXPECT_EQ(happen("key", {4, 0}), "43 01 00 00 04 40");
    EXPECT_EQ(happen("key", {4, 0x99}), "43 01 00 00 04 99");
    EXPECT_FALSE(device.happen("profile", {5}));
    EXPECT_FALSE(device.happen("profile", {-1}));
    EXPECT_FALSE(device.happen("effect", {21}));
    EXPECT_FALSE(device.happen("key", {256, 1}));
    EXPECT_FALSE(device.happen("key", {1}));
    EXPECT_FALSE(device.happen("dpi", {1}));
    EXPECT_EQ(device.events(), (std::vector<std::string>{"profile N", "effect MODE", "key NUMBER STATE"}));
}

} // namespace

} // namespace pyrux::sim
