// The keyboards: start and end, profiles, resets and key maps.

#include "tests/support/debug_log.h"
#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace pyrux::test {
namespace {

template <class Model>
class KeyboardProfile : public KeyboardTest<Model> {
};
TYPED_TEST_SUITE(KeyboardProfile, KeyboardModels, ModelName);

/// What a call that uses the library's copy sends.
template <class Keyboard>
std::string readOf(Keyboard& keyboard)
{
    keyboard.written();
    EffectRecord record{};
    EXPECT_EQ(keyboard->getGeneralEffect(0, &record), E_OK);
    return keyboard.written();
}

TYPED_TEST(KeyboardProfile, changes)
{
    for (const std::uint8_t id : {0, 1, 2, 3, 4}) {
        EXPECT_EQ(this->keyboard->changeProfileId(id), E_OK);
        EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 00 00 00 " + hex(std::span(&id, 1))));
    }
}

TYPED_TEST(KeyboardProfile, isRefusedFromFiveOn)
{
    EXPECT_EQ(this->keyboard->changeProfileId(5), -2);
    EXPECT_EQ(this->keyboard->changeProfileId(255), -2);
    EXPECT_EQ(this->keyboard.written(), "");
    EXPECT_EQ(readOf(this->keyboard), "");
}

TYPED_TEST(KeyboardProfile, isReadAnewWithItsEffectsOnceItHasChanged)
{
    EXPECT_EQ(this->keyboard->changeProfileId(2), E_OK);
    EXPECT_EQ(readOf(this->keyboard), reloading());
    EXPECT_EQ(reports(reloading()).size(), 21U + 33U + 2U);
    EXPECT_EQ(readOf(this->keyboard), "");
}

TYPED_TEST(KeyboardProfile, tellsItsNumber)
{
    this->keyboard.device->answer("52 00", "52 00 77 88 03 99");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(this->keyboard->getCurrProfileId(&id), E_OK);
    EXPECT_EQ(id, 3);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 52 00"));
    EXPECT_EQ(readOf(this->keyboard), "");
}

/// The device has five profiles; what else it says is handed out, and leads to nothing outside the library's
/// tables.
TYPED_TEST(KeyboardProfile, mayHaveANumberThatThereIsNot)
{
    this->keyboard.device->answer("52 00", "52 00 00 00 FE");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(this->keyboard->getCurrProfileId(&id), E_OK);
    EXPECT_EQ(id, 0xFE);
    EXPECT_EQ(this->keyboard->setEffectMode(7), E_OK);
    EXPECT_EQ(this->keyboard->changeProfileId(1), E_OK);
}

TYPED_TEST(KeyboardProfile, hasAnEffectOfItsOwn)
{
    this->keyboard.device->answer("52 28", "52 28 00 00 FF"); // a preview: the library's own number counts
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(this->keyboard->setEffectMode(7), E_OK);
    EXPECT_EQ(this->keyboard->changeProfileId(1), E_OK);
    EXPECT_EQ(this->keyboard->setEffectMode(9), E_OK);
    EXPECT_EQ(this->keyboard->getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 9);
    EXPECT_EQ(this->keyboard->changeProfileId(0), E_OK);
    EXPECT_EQ(this->keyboard->getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 7);
    this->keyboard.device->answer("52 00", "52 00 00 00 01");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(this->keyboard->getCurrProfileId(&id), E_OK);
    EXPECT_EQ(this->keyboard->getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 9);
}

TYPED_TEST(KeyboardProfile, isResetAndStored)
{
    EXPECT_EQ(this->keyboard->resetProfile(0), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 01 | 50 10 | 50 55 | 41 00"));
    EXPECT_EQ(readOf(this->keyboard), reloading());
}

/// The commit is left out on purpose.
TYPED_TEST(KeyboardProfile, isResetWithAllOthers)
{
    for (const std::uint8_t scope : {1, 255}) {
        EXPECT_EQ(this->keyboard->resetProfile(scope), E_OK);
        EXPECT_EQ(this->keyboard.written(), wire("41 01 | 50 10 00 00 FF | 41 00"));
        EXPECT_EQ(readOf(this->keyboard), reloading());
    }
}

TYPED_TEST(KeyboardProfile, isResetInParts)
{
    EXPECT_EQ(this->keyboard->resetPartial(1), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 98 02"));
    EXPECT_EQ(this->keyboard->resetPartial(2), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 98 04"));
    EXPECT_EQ(readOf(this->keyboard), "");
    EXPECT_EQ(this->keyboard->resetPartial(0), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 98 01"));
    EXPECT_EQ(readOf(this->keyboard), reloading());
    EXPECT_EQ(this->keyboard->resetPartial(3), -2);
    EXPECT_EQ(this->keyboard->resetPartial(255), -2);
    EXPECT_EQ(this->keyboard.written(), "");
    EXPECT_EQ(readOf(this->keyboard), "");
}

TYPED_TEST(KeyboardProfile, mapsSingleKeys)
{
    const KeyMapEntry entries[]{{0x00, {0x01, 0x02, 0x03}}, {0xFF, {0xFD, 0xFE, 0xFF}}, {7, {0, 0, 0}}};
    EXPECT_EQ(this->keyboard->setKeyMapping(3, entries), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 20 00 01 02 03 | 51 20 FF FD FE FF | 51 20 07"));
    EXPECT_EQ(this->keyboard->setKeyMapping(0, entries), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80"));
}

TYPED_TEST(KeyboardProfile, mapsAllKeys)
{
    KeyMapTable table{};
    for (int i = 0; i < 256; ++i)
        table.values[i] = std::uint16_t(0x1000 + 0x0101 * (i % 16) + (i / 16) * 0x10);
    EXPECT_EQ(this->keyboard->setKeyMappingAll(&table), E_OK);
    std::string expected = "41 80";
    for (std::uint8_t page = 0; page < 16; ++page) {
        expected += " | 51 21 " + hex(std::span(&page, 1)) + " 00";
        for (int i = 0; i < 16; ++i) {
            const std::uint8_t value[]{std::uint8_t(i + page * 0x10), std::uint8_t(0x10 + i)};
            expected += " " + hex(value);
        }
    }
    EXPECT_EQ(this->keyboard.written(), wire(expected));
}

TYPED_TEST(KeyboardProfile, readsAllKeys)
{
    for (std::uint8_t page = 0; page < 16; ++page) {
        const std::string head = "52 21 " + hex(std::span(&page, 1));
        std::string reply = head + " 77";
        for (std::uint8_t i = 0; i < 16; ++i)
            reply += " " + hex(std::span(&i, 1)) + " " + hex(std::span(&page, 1));
        this->keyboard.device->answer(head, reply + " 99");
    }
    KeyMapTable table{};
    EXPECT_EQ(this->keyboard->getKeyMappingAll(&table), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | " + eachOf("52 21", 16)));
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(table.values[i], i % 16 + 0x100 * (i / 16)) << i;
}

} // namespace
} // namespace pyrux::test
