// RD110: what it has beside the other wired mice with lights.

#include "tests/support/led_mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace pyrux::test {
namespace {

using RD110 = Opened<RD110Model>;

/// No button has a macro, but for those that a test adds.
void withoutMacros(ScriptedDevice& device)
{
    for (const char* button : {"00", "01", "02", "03", "04", "05", "06", "07", "08", "09", "0A", "0B", "0C"})
        device.answer(std::string("52 18 ") + button, std::string("52 18 ") + button + " 00 FF 3F");
}

TEST(RD110, tellsThatTheDeviceAnswers)
{
    RD110 mouse;
    EXPECT_EQ(mouse->test(), E_OK);
    EXPECT_EQ(mouse.written(), "41 80");
}

TEST(RD110, readsNoMacros)
{
    RD110 mouse(withoutMacros);
    MouseMacroList list;
    std::memset(&list, 0xEE, sizeof list);
    EXPECT_EQ(mouse->getMacroAll(&list), E_OK);
    EXPECT_EQ(+list.count, 0U);
    EXPECT_EQ(list.macros[0].button, 0xEE);
    EXPECT_EQ(mouse.written(),
              wire("41 80 | 52 18 00 | 52 18 01 | 52 18 02 | 52 18 03 | 52 18 04 | 52 18 05 | 52 18 06 | "
                   "52 18 07 | 52 18 08 | 52 18 09 | 52 18 0A | 52 18 0B | 52 18 0C"));
}

TEST(RD110, readsTheMacrosThatThereAreInTheOrderOfTheirButtons)
{
    RD110 mouse([](ScriptedDevice& device) {
        withoutMacros(device);
        device.answer("52 18 02", "52 18 02 00 B2 5C");
        device.answer("52 19 02", "52 19 02 00 61 62");
        device.answer("52 18 0C", "52 18 0C 00 B4 7D");
        device.answer("52 19 0C", "52 19 0C 00 63");
        device.answers("53 10 0F",
                       {"53 10 0F 00 04 5C 0A 00 00 FC FE FF", "53 10 0F 00 01 9E 02 00 05 3C 04 00 00 FC"});
    });
    const auto list = std::make_unique<MouseMacroList>();
    EXPECT_EQ(mouse->getMacroAll(list.get()), E_OK);
    ASSERT_EQ(+list->count, 2U);
    const MouseMacroRecord& first = list->macros[0];
    EXPECT_EQ(first.button, 2);
    EXPECT_EQ(first.mode, 1);
    EXPECT_STREQ(first.name, "ab");
    ASSERT_EQ(first.count, 1);
    EXPECT_EQ(+first.events[0].code, 4);
    EXPECT_EQ(+first.events[0].delay, 5);
    const MouseMacroRecord& second = list->macros[1];
    EXPECT_EQ(second.button, 12);
    EXPECT_EQ(second.mode, 2);
    EXPECT_STREQ(second.name, "c");
    ASSERT_EQ(second.count, 2);
    EXPECT_EQ(+second.events[0].code, KEY_STEP_UP);
    EXPECT_EQ(+second.events[1].code, 5);
    EXPECT_EQ(second.events[1].kind, 1);
    EXPECT_EQ(mouse.written(),
              wire("41 80 | 52 18 00 | 52 18 01 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 5C | 53 10 0F | "
                   "52 18 03 | 52 18 04 | 52 18 05 | 52 18 06 | 52 18 07 | 52 18 08 | 52 18 09 | 52 18 0A | "
                   "52 18 0B | 52 18 0C | 52 19 0C | 51 18 0C 00 B4 7D | 53 10 0F"));
}

TEST(RD110, needsAListForItsMacros)
{
    RD110 mouse;
    EXPECT_EQ(mouse->getMacroAll(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

WAITING_TEST(RD110Silent, tellsThatTheDeviceDoesNotAnswer)
{
    RD110 mouse([](ScriptedDevice& device) { device.silence("41 80"); });
    EXPECT_EQ(mouse->test(), E_INVALID_GET);
}

WAITING_TEST(RD110Silent, keepsTheMacrosBeforeTheOneThatCannotBeRead)
{
    RD110 mouse([](ScriptedDevice& device) {
        withoutMacros(device);
        device.answer("52 18 02", "52 18 02 00 B2 5C");
        device.answer("53 10 0F", "53 10 0F 00 04 5C 0A 00 00 FC FE FF");
        device.silence("52 18 03");
    });
    const auto list = std::make_unique<MouseMacroList>();
    EXPECT_EQ(mouse->getMacroAll(list.get()), E_INVALID_GET);
    ASSERT_EQ(+list->count, 1U);
    EXPECT_EQ(list->macros[0].button, 2);
}

} // namespace
} // namespace pyrux::test
