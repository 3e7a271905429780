// RD210: the functions of its buttons, and the button that shifts the others.

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace pyrux::test {
namespace {

constexpr const char* noCombo = "52 10 00 00 00 00 00 00 00 00 00 00 FF";
constexpr const char* combo0 = "52 10 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* combo3 = "52 10 00 00 00 00 00 00 00 00 00 00 03";
constexpr const char* combo5 = "52 10 00 00 00 00 00 00 00 00 00 00 05";
constexpr const char* combo6 = "52 10 00 00 00 00 00 00 00 00 00 00 06";
constexpr const char* combo12 = "52 10 00 00 00 00 00 00 00 00 00 00 0C";

// Byte 4 of the reply is the direction of button 7, byte 5 that of button 6.
constexpr const char* wheelOff = "52 22 00 00 10 10";
constexpr const char* wheelAOn = "52 22 00 00 10 C0";
constexpr const char* wheelBOn = "52 22 00 00 C0 10";

/// Address and page of the thirteen buttons.
constexpr std::array<const char*, 13> place{"B0 00", "B1 00", "B2 00", "B3 00", "B4 00", "B5 00", "BE 00",
                                            "BF 00", "B0 01", "B1 01", "B2 01", "B3 01", "B4 01"};
/// The same of a step, whose page carries 5C.
constexpr std::array<const char*, 13> stepPlace{"B0 5C", "B1 5C", "B2 5C", "B3 5C", "B4 5C", "B5 5C", "BE 5C",
                                                "BF 5C", "B0 5D", "B1 5D", "B2 5D", "B3 5D", "B4 5D"};
constexpr std::array<const char*, 13> number{"00", "01", "02", "03", "04", "05", "06",
                                             "07", "08", "09", "0A", "0B", "0C"};

std::string mapped(int button, const std::string& code)
{
    const auto n = std::size_t(button);
    return std::string("51 20 ") + place[n] + " " + code + " | 51 18 " + number[n] + " 00 FF 3F";
}

std::string step(int button, const std::string& value)
{
    const auto n = std::size_t(button);
    return std::string("51 18 ") + number[n] + " 00 " + stepPlace[n] + " | 53 00 02 00 " + value +
           " 9E 80 00 00 FC";
}

bool onWheel(int button)
{
    return button == 6 || button == 7;
}

TEST(RD210SetKeyMapping, givesEachButtonACode)
{
    for (int button = 0; button < 13; ++button) {
        if (onWheel(button))
            continue;
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        EXPECT_EQ(mouse->setKeyMapping(std::uint8_t(button), 0x1234), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | " + mapped(button, "34 12"))) << button;
    }
}

TEST(RD210SetKeyMapping, switchesTheWheelWhenItsButtonsGetACode)
{
    struct Case {
        std::uint8_t button;
        const char *wheel, *bytes;
    };
    for (const Case& each :
         {Case{6, wheelOff, "10 10"}, Case{6, wheelAOn, "10 C0"}, Case{6, wheelBOn, "10 10"},
          Case{7, wheelOff, "10 10"}, Case{7, wheelAOn, "10 10"}, Case{7, wheelBOn, "C0 10"}}) {
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        mouse.device->answer("52 22", each.wheel);
        EXPECT_EQ(mouse->setKeyMapping(each.button, 0x0009), E_OK);
        EXPECT_EQ(mouse.written(), wire(std::string("41 80 | 52 10 | 52 22 | 51 22 00 00 ") + each.bytes +
                                        " | " + mapped(each.button, "09 00")))
            << int(each.button) << " " << each.wheel;
    }
}

TEST(RD210SetKeyMapping, makesAStepOfEachButton)
{
    for (int button = 0; button < 13; ++button) {
        if (onWheel(button))
            continue;
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        EXPECT_EQ(mouse->setKeyMapping(std::uint8_t(button), 0x0500), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | " + step(button, "01"))) << button;
        EXPECT_EQ(mouse->setKeyMapping(std::uint8_t(button), 0x0501), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | " + step(button, "FF"))) << button;
    }
}

TEST(RD210SetKeyMapping, makesStepsOfTheWheelButtons)
{
    const std::string cleared6 = "51 20 BE 00 FF 00 | 51 18 06 00 FF 3F";
    const std::string cleared7 = "51 20 BF 00 FF 00 | 51 18 07 00 FF 3F";
    struct Case {
        std::uint8_t button;
        std::uint16_t code;
        const char *wheel, *bytes;
        std::string rest;
    };
    for (const Case& each : {
             Case{6, 0x0500, wheelOff, "10 10", step(6, "01")},
             Case{6, 0x0500, wheelAOn, "10 C0", step(6, "01")},
             Case{6, 0x0500, wheelBOn, "10 10", step(6, "01")},
             Case{7, 0x0500, wheelOff, "10 C0", cleared7},
             Case{7, 0x0500, wheelAOn, "10 C0", cleared7},
             Case{7, 0x0500, wheelBOn, "C0 C0", cleared7},
             Case{7, 0x0501, wheelOff, "10 10", step(7, "FF")},
             Case{7, 0x0501, wheelAOn, "10 10", step(7, "FF")},
             Case{7, 0x0501, wheelBOn, "C0 10", step(7, "FF")},
             Case{6, 0x0501, wheelOff, "C0 10", cleared6},
             Case{6, 0x0501, wheelAOn, "C0 C0", cleared6},
             Case{6, 0x0501, wheelBOn, "C0 10", cleared6},
         }) {
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        mouse.device->answer("52 22", each.wheel);
        EXPECT_EQ(mouse->setKeyMapping(each.button, each.code), E_OK);
        EXPECT_EQ(mouse.written(),
                  wire(std::string("41 80 | 52 10 | 52 22 | 51 22 00 00 ") + each.bytes + " | " + each.rest))
            << int(each.button) << " " << each.code << " " << each.wheel;
    }
}

TEST(RD210SetKeyMapping, takes20ForAWheelThatIsOff)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    mouse.device->answer("52 22", "52 22 00 00 20 20");
    EXPECT_EQ(mouse->setKeyMapping(6, 0x0009), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 22 | 51 22 00 00 10 10 | " + mapped(6, "09 00")));
}

TEST(RD210SetKeyMapping, refusesAnUnknownWheelState)
{
    for (const char* wheel :
         {"52 22 00 00 30 10", "52 22 00 00 10 00", "52 22 00 00 C1 C0", "52 22 00 00 10 FF"}) {
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        mouse.device->answer("52 22", wheel);
        EXPECT_EQ(mouse->setKeyMapping(6, 0x0009), E_INVALID_SET) << wheel;
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 22"));
    }
}

TEST(RD210SetKeyMapping, leavesTheComboButtonAlone)
{
    Mouse mouse;
    mouse.device->answers("52 10", {combo5, combo0, combo6});
    EXPECT_EQ(mouse->setKeyMapping(5, 0x0009), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10"));
    EXPECT_EQ(mouse->setKeyMapping(0, 0x0500), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10"));
    mouse.device->answer("52 22", wheelOff);
    EXPECT_EQ(mouse->setKeyMapping(6, 0x0009), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 22"));
}

TEST(RD210SetKeyMapping, leavesAMacroAlone)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    EXPECT_EQ(mouse->setKeyMapping(2, 0x03FF), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10"));
}

TEST(RD210SetKeyMapping, refusesAFourteenthButton)
{
    Mouse mouse;
    EXPECT_EQ(mouse->setKeyMapping(13, 0x0009), E_INVALID_SET);
    EXPECT_EQ(mouse->setKeyMapping(255, 0x0500), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210SetKeyMapping, namesADpiLevelByItsPlaceInTheOrder)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    mouse.device->answer("52 9B", "52 9B 00 00 03 05 00 06 01 04 02");
    constexpr std::array<const char*, 7> places{"E2 01", "E4 01", "E6 01", "E0 01",
                                                "E5 01", "E1 01", "E3 01"};
    for (std::size_t level = 0; level < 7; ++level) {
        EXPECT_EQ(mouse->setKeyMapping(2, std::uint16_t(0x01E0 + level)), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 9B | " + mapped(2, places[level]))) << level;
    }
}

TEST(RD210SetKeyMapping, takesTheFirstPlaceForALevelThatTheOrderLacks)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    mouse.device->answer("52 9B", "52 9B 00 00 01 02 02 02 02 02 02 06");
    EXPECT_EQ(mouse->setKeyMapping(2, 0x01E6), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 9B | " + mapped(2, "E0 01")));
    EXPECT_EQ(mouse->setKeyMapping(2, 0x01E2), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 9B | " + mapped(2, "E1 01")));
}

TEST(RD210SetKeyMapping, keepsALevelWhenTheDeviceHasNoOrder)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    mouse.device->answer("52 9B", "52 9B 00 00 FF 05 00 06 01 04 02");
    EXPECT_EQ(mouse->setKeyMapping(2, 0x01E5), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | 52 9B | " + mapped(2, "E5 01")));
}

TEST(RD210SetKeyMapping, translatesNothingBesideTheSevenLevels)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    for (const auto& [code, text] : {std::pair<std::uint16_t, const char*>{0x01DF, "DF 01"},
                                     {0x01E7, "E7 01"},
                                     {0x01EA, "EA 01"},
                                     {0x00E1, "E1 00"},
                                     {0x0502, "02 05"},
                                     {0x04FF, "FF 04"},
                                     {0x03FE, "FE 03"},
                                     {0x0400, "00 04"},
                                     {0xFFFF, "FF FF"},
                                     {0x0000, "00 00"}}) {
        EXPECT_EQ(mouse->setKeyMapping(2, code), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | " + mapped(2, text))) << code;
    }
}

TEST(RD210SetKeyMapping, looksAtTwoBytesOfAReplyWhereTwoCount)
{
    Mouse mouse;
    mouse.device->answer("41 80", "41 80 77 77");
    mouse.device->answer("52 10", "52 10 77 77 00 00 00 00 00 00 00 00 FF");
    mouse.device->answer("51 18", "51 18 77 77");
    EXPECT_EQ(mouse->setKeyMapping(2, 0x0009), E_OK);
    mouse.device->answer("51 18", "51 18 02 77"); // a step's: three bytes count
    mouse.device->answer("53 00", "53 00 77 77");
    mouse.forget();
    EXPECT_EQ(mouse->setKeyMapping(2, 0x0500), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10 | " + step(2, "01")));
}

TEST(RD210SetKeyMappingAll, writesAllButtons)
{
    Mouse mouse;
    mouse.device->answer("52 10", noCombo);
    mouse.device->answer("52 9B", "52 9B 00 00 06 05 04 03 02 01 00");
    const std::array<std::uint16_t, 13> map{0x0101, 0x0500, 0x0501, 0x03FF, 0x01E2, 0x00FF, 0x0500,
                                            0x0501, 0x0808, 0x0909, 0x03FF, 0x0500, 0x0C0C};
    EXPECT_EQ(mouse->setKeyMappingAll(map.data()), E_OK);
    EXPECT_EQ(
        mouse.written(),
        wire(joined({"41 80 | 52 10 | 51 22 00 00 10 10", mapped(0, "01 01"), step(1, "01"), step(2, "FF"),
                     "52 9B", mapped(4, "E4 01"), mapped(5, "FF 00"), step(6, "01"), step(7, "FF"),
                     mapped(8, "08 08"), mapped(9, "09 09"), step(11, "01"), mapped(12, "0C 0C")})));
}

TEST(RD210SetKeyMappingAll, setsTheWheelByItsButtons)
{
    const std::string cleared6 = mapped(6, "FF 00");
    const std::string cleared7 = mapped(7, "FF 00");
    struct Case {
        std::uint16_t six, seven;
        const char* bytes;
        std::string rest;
    };
    for (const Case& each : {
             Case{0x0501, 0x0500, "C0 C0", joined({cleared6, cleared7})},
             Case{0x0501, 0x0501, "C0 10", joined({cleared6, step(7, "FF")})},
             Case{0x0500, 0x0500, "10 C0", joined({step(6, "01"), cleared7})},
             Case{0x0006, 0x0007, "10 10", joined({mapped(6, "06 00"), mapped(7, "07 00")})},
             Case{0x03FF, 0x03FF, "10 10", ""},
         }) {
        Mouse mouse;
        mouse.device->answer("52 10", noCombo);
        std::array<std::uint16_t, 13> map{};
        map.fill(0x03FF);
        map[6] = each.six;
        map[7] = each.seven;
        EXPECT_EQ(mouse->setKeyMappingAll(map.data()), E_OK);
        EXPECT_EQ(mouse.written(),
                  wire(joined({std::string("41 80 | 52 10 | 51 22 00 00 ") + each.bytes, each.rest})));
    }
}

TEST(RD210SetKeyMappingAll, leavesTheComboButtonAlone)
{
    Mouse mouse;
    mouse.device->answer("52 10", combo3);
    std::array<std::uint16_t, 13> map{};
    map.fill(0x03FF);
    map[2] = 0x0002;
    map[3] = 0x0003;
    map[4] = 0x0004;
    EXPECT_EQ(mouse->setKeyMappingAll(map.data()), E_OK);
    EXPECT_EQ(mouse.written(),
              wire(joined({"41 80 | 52 10 | 51 22 00 00 10 10", mapped(2, "02 00"), mapped(4, "04 00")})));
}

TEST(RD210SetKeyMappingAll, needsAMap)
{
    Mouse mouse;
    EXPECT_EQ(mouse->setKeyMappingAll(nullptr), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

/// A mouse without macros and combo button, its wheel off, all buttons with code 0x0100 + number.
void plainButtons(ScriptedDevice& device)
{
    device.answer("52 10", noCombo);
    device.answer("52 22", wheelOff);
    for (std::size_t n = 0; n < 13; ++n) {
        device.answer(std::string("52 18 ") + number[n], std::string("52 18 ") + number[n] + " 00 FF 3F");
        device.answer(std::string("52 20 ") + place[n],
                      std::string("52 20 ") + place[n] + " " + number[n] + " 01");
    }
}

std::vector<std::uint16_t> readMap(Mouse& mouse, _error expected = E_OK)
{
    std::vector<std::uint16_t> map(13, 0xEEEE);
    EXPECT_EQ(mouse->getKeyMappingAll(map.data()), expected);
    return map;
}

/// The exchanges for one button without a macro.
std::string plainRead(std::size_t n)
{
    return std::string("52 18 ") + number[n] + " | 52 20 " + place[n];
}

TEST(RD210GetKeyMappingAll, readsTheCodes)
{
    Mouse mouse(plainButtons);
    EXPECT_EQ(readMap(mouse),
              (std::vector<std::uint16_t>{0x0100, 0x0101, 0x0102, 0x0103, 0x0104, 0x0105, 0x0106, 0x0107,
                                          0x0108, 0x0109, 0x010A, 0x010B, 0x010C}));
    std::vector<std::string> expected{"41 80"};
    for (std::size_t n = 0; n < 13; ++n)
        expected.push_back(plainRead(n));
    expected.push_back("52 10 | 52 22");
    EXPECT_EQ(mouse.written(), wire(joined(expected)));
}

TEST(RD210GetKeyMappingAll, knowsMacrosAndSteps)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 18 01", "52 18 01 00 B1 5C");
        device.answer("52 18 02", "52 18 02 00 B2 3C");
        device.answer("52 18 03", "52 18 03 00 B3 5C");
        device.answer("52 18 04", "52 18 04 00 FF 3C"); // FF alone is no missing macro
        device.answer("52 18 05", "52 18 05 00 FF FF"); // but this is
        device.answer("52 18 06", "52 18 06 00 FE 3F"); // and this is none
        device.answers("53 10 02", {"53 10 02 00 01 9E 80", "53 10 02 00 FF 9E 80", "53 10 02 00 02 9E 80",
                                    "53 10 02 00 01 9F 80", "53 10 02 00 FF 9E 81"});
    });
    EXPECT_EQ(readMap(mouse),
              (std::vector<std::uint16_t>{0x0100, 0x0500, 0x0501, 0x03FF, 0x03FF, 0x0105, 0x03FF, 0x0107,
                                          0x0108, 0x0109, 0x010A, 0x010B, 0x010C}));
    std::vector<std::string> expected{"41 80",
                                      plainRead(0),
                                      "52 18 01 | 53 10 02",
                                      "52 18 02 | 53 10 02",
                                      "52 18 03 | 53 10 02",
                                      "52 18 04 | 53 10 02",
                                      plainRead(5),
                                      "52 18 06 | 53 10 02"};
    for (std::size_t n = 7; n < 13; ++n)
        expected.push_back(plainRead(n));
    expected.push_back("52 10 | 52 22");
    EXPECT_EQ(mouse.written(), wire(joined(expected)));
}

TEST(RD210GetKeyMappingAll, namesAButtonOfItsOwnFunctionByByteTwo)
{
    // 00 FF: the code is byte 2 of the reply, which repeats the address, except for buttons 8 to 12.
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        for (const char* each : place)
            device.answer(std::string("52 20 ") + each, std::string("52 20 ") + each + " FF 00");
    });
    EXPECT_EQ(readMap(mouse),
              (std::vector<std::uint16_t>{0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00BE, 0x00BF,
                                          0x00FF, 0x00FF, 0x00FF, 0x00FF, 0x00FF}));
}

TEST(RD210GetKeyMappingAll, takesByteTwoAsItStands)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 20 B2 00", "52 20 5A 00 FF 00");
    });
    EXPECT_EQ(readMap(mouse)[2], 0x005A);
}

TEST(RD210GetKeyMappingAll, takes0181ForNoFunction)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 20 B2 00", "52 20 B2 00 81 01");
        device.answer("52 20 B1 01", "52 20 B1 01 81 01");
    });
    const auto map = readMap(mouse);
    EXPECT_EQ(map[2], 0);
    EXPECT_EQ(map[9], 0);
}

TEST(RD210GetKeyMappingAll, namesADpiLevelByTheOrder)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 9B", "52 9B 00 00 03 05 00 06 01 04 02");
        constexpr std::array<const char*, 7> codes{"E0 01", "E1 01", "E2 01", "E3 01",
                                                   "E4 01", "E5 01", "E6 01"};
        constexpr std::array<std::size_t, 7> buttons{0, 1, 2, 3, 4, 5, 8};
        for (std::size_t i = 0; i < 7; ++i)
            device.answer(std::string("52 20 ") + place[buttons[i]],
                          std::string("52 20 ") + place[buttons[i]] + " " + codes[i]);
    });
    EXPECT_EQ(readMap(mouse),
              (std::vector<std::uint16_t>{0x01E3, 0x01E5, 0x01E0, 0x01E6, 0x01E1, 0x01E4, 0x0106, 0x0107,
                                          0x01E2, 0x0109, 0x010A, 0x010B, 0x010C}));
    EXPECT_TRUE(
        mouse.written().starts_with("41 80 | 52 18 | 52 20 B0 | 52 9B | 52 18 01 | 52 20 B1 | 52 9B | "));
}

TEST(RD210GetKeyMappingAll, keepsALevelWhenTheDeviceHasNoOrder)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 9B", "52 9B 00 00 FF 05 00 06 01 04 02");
        device.answer("52 20 B2 00", "52 20 B2 00 E4 01");
    });
    EXPECT_EQ(readMap(mouse)[2], 0x01E4);
}

TEST(RD210GetKeyMappingAll, readsTheCodeOfTheComboButton)
{
    for (const auto& [bank, button] :
         {std::pair<const char*, std::size_t>{combo0, 0}, {combo3, 3}, {combo5, 5}}) {
        Mouse mouse([&](ScriptedDevice& device) {
            plainButtons(device);
            device.answer("52 10", bank);
            device.answer("52 20 D8", "52 20 D8 00 CD AB");
        });
        const auto map = readMap(mouse);
        for (std::size_t n = 0; n < 13; ++n)
            EXPECT_EQ(map[n], n == button ? 0xABCD : 0x0100 + int(n));
        EXPECT_TRUE(mouse.written().ends_with(" | 52 10 | 52 20 D8 | 52 22"));
    }
}

TEST(RD210GetKeyMappingAll, readsNoCodeOfAComboButtonFromTheSixthOn)
{
    for (const char* bank : {combo6, combo12, noCombo}) {
        Mouse mouse([&](ScriptedDevice& device) {
            plainButtons(device);
            device.answer("52 10", bank);
        });
        EXPECT_EQ(readMap(mouse)[6], 0x0106);
        EXPECT_TRUE(mouse.written().ends_with(" | 52 10 | 52 22"));
    }
}

TEST(RD210GetKeyMappingAll, leavesTheComboButtonWhenAnotherCodeComes)
{
    Mouse mouse([](ScriptedDevice& device) {
        plainButtons(device);
        device.answer("52 10", combo3);
        device.answer("52 20 D8", "52 20 D9 00 CD AB");
    });
    EXPECT_EQ(readMap(mouse)[3], 0x0103);
}

TEST(RD210GetKeyMappingAll, showsTheWheelAsSteps)
{
    struct Case {
        const char* wheel;
        std::uint16_t six, seven;
    };
    for (const Case& each :
         {Case{"52 22 00 00 C0 C0", 0x0501, 0x0500}, Case{wheelAOn, 0x0501, 0x0107},
          Case{wheelBOn, 0x0106, 0x0500}, Case{wheelOff, 0x0106, 0x0107},
          Case{"52 22 00 00 20 20", 0x0106, 0x0107}, Case{"52 22 00 00 C0 30", 0x0106, 0x0107}}) {
        Mouse mouse([&](ScriptedDevice& device) {
            plainButtons(device);
            device.answer("52 22", each.wheel);
        });
        const auto map = readMap(mouse);
        EXPECT_EQ(map[6], each.six) << each.wheel;
        EXPECT_EQ(map[7], each.seven) << each.wheel;
    }
}

TEST(RD210GetKeyMappingAll, needsAMap)
{
    Mouse mouse;
    EXPECT_EQ(mouse->getKeyMappingAll(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

/// A bank whose every byte tells its place, but for the combo button.
std::string numberedBank(const std::string& head, const std::string& combo)
{
    return head + " 02 03 04 05 06 07 08 09 0A 0B " + combo +
           " 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C "
           "2D 2E "
           "2F 30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F";
}

TEST(RD210SetMouseCombo, makesButtonFiveTheShift)
{
    Mouse mouse;
    mouse.device->answer("52 10", numberedBank("52 10", "FF"));
    EXPECT_EQ(mouse->setMouseCombo(1), E_OK);
    EXPECT_EQ(mouse.written(), wire(joined({"41 80 | 41 80 | 52 10 | 51 20 B5 00 EA 01 | 52 10",
                                            numberedBank("51 10", "05")})));
}

TEST(RD210SetMouseCombo, endsTheShift)
{
    Mouse mouse;
    mouse.device->answer("52 10", numberedBank("52 10", "03"));
    EXPECT_EQ(mouse->setMouseCombo(0), E_OK);
    EXPECT_EQ(mouse.written(), wire(joined({"41 80 | 41 80 | 52 10 | 52 10", numberedBank("51 10", "FF")})));
}

TEST(RD210SetMouseCombo, writesNothingThatIsSoAlready)
{
    Mouse mouse;
    mouse.device->answers("52 10", {noCombo, combo5, combo0});
    EXPECT_EQ(mouse->setMouseCombo(0), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 41 80 | 52 10"));
    EXPECT_EQ(mouse->setMouseCombo(1), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 41 80 | 52 10"));
    EXPECT_EQ(mouse->setMouseCombo(1), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 41 80 | 52 10"));
}

TEST(RD210GetMouseCombo, tellsWhetherThereIsAShift)
{
    Mouse mouse;
    mouse.device->answers("52 10", {noCombo, combo0, "52 10 00 00 00 00 00 00 00 00 00 00 FE"});
    std::uint8_t on = 0xEE;
    EXPECT_EQ(mouse->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 0);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 10"));
    EXPECT_EQ(mouse->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 1);
    on = 0xEE;
    EXPECT_EQ(mouse->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 1);
    mouse.forget();
    EXPECT_EQ(mouse->getMouseCombo(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

} // namespace
} // namespace pyrux::test
