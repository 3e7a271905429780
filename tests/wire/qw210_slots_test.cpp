// The boundary of the keyboards: slots of the virtual table, the object's fields, the core's hooks behind
// them. Nothing here uses the interfaces' declarations.

#include "tests/support/debug_log.h"
#include "tests/support/keyboard.h"
#include "tests/support/member_call.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

/// What an operation takes.
enum class Takes { nothing, byte, record, byteAndRecord, countAndRecord, twoRecords, callback, list };

struct Slot {
    const char* name;
    Takes takes;
    Byte byte;           ///< First argument, if it is a number.
    std::string written; ///< What the call sends.
    bool logged = true;
};

/// All keys but number 5 in black, in reports of up to 15.
std::string otherKeys(int leds)
{
    std::vector<std::string> pieces;
    ByteVector keys;
    const auto close = [&] {
        ByteVector report{0xC0, 0x01, Byte(keys.size()), 0};
        for (const Byte key : keys)
            report.insert(report.end(), {key, 0, 0, 0});
        pieces.push_back(hex(report));
        keys.clear();
    };
    for (int key = 0; key < leds; ++key) {
        if (key == 5)
            continue;
        keys.push_back(Byte(key));
        if (keys.size() == 15)
            close();
    }
    if (!keys.empty())
        close();
    return joined(pieces);
}

/// The slots, in their order.
template <class Model>
std::vector<Slot> slotsOf()
{
    using enum Takes;
    const std::size_t mask = Model::maskBytes;
    std::string macros = "41 02";
    for (const std::string& read : reports(eachOf("52 18", 20)))
        macros += " | 41 03 | " + read;
    return {
        {"setLightingInit", nothing, 0, "41 03 | C0 F0 00 00 01 | C0"},
        {"setLightingUninit", nothing, 0, "41 00"},
        {"setLightingPortColor", record, 0, "00 00 00 00 0A 0B 0C", false},
        {"setSyncLightingData", list, 0, joined({"C0 01 01 00 05 0A 0B 0C", otherKeys(Model::directLeds)}),
         false},
        {"setLightingTurnOff", nothing, 0, "C0"},
        {"changeProfileId", byte, 3, "41 80 | 51 00 00 00 03"},
        {"getCurrProfileId", record, 0, "41 80 | 52 00"},
        {"resetProfile", byte, 1, "41 01 | 50 10 00 00 FF | 41 00"},
        {"resetPartial", byte, 1, "41 80 | 51 98 02"},
        {"setKeyMapping", countAndRecord, 2, "41 80 | 51 20 05 01 02 03 | 51 20 06 04 05 06"},
        {"setKeyMappingAll", record, 0,
         "41 80 | 51 21 00 00 34 12 | " + eachOf("51 21", 16).substr(std::string("51 21 00 | ").size())},
        {"getKeyMappingAll", record, 0, "41 80 | " + eachOf("52 21", 16)},
        {"startRecordMacro", nothing, 0, "41 01"},
        {"stopRecordMacro", nothing, 0,
         "41 80 | " + previewOf(0, 1, "88 88 88 88", "01 00 00 00 00 01 00 C1 " + times(12, "00"))},
        {"setMacro", record, 0, "41 80 | 51 18 05 00 FF 3F"},
        {"getMacro", record, 0, "41 80 | 52 18 06"},
        {"getMacroAll", record, 0, macros + " | 41 00"},
        {"clearMacro", byte, 4, "41 80 | 51 18 04 00 FF 3F"},
        {"setEffectMode", byte, 7, "41 80 | 51 28 00 00 07"},
        {"getEffectMode", record, 0, "41 80 | 52 28"},
        {"setGeneralEffect", record, 0,
         previewOf(0, 1, "88 88 88 88", "01 00 00 00 00 01 00 C1 00 00 00 00 11 22 33 80 00 00 00 00")},
        {"getGeneralEffect", byteAndRecord, 1, ""},
        {"getGeneralEffectAll", record, 0, ""},
        {"setCustomEffect", twoRecords, 0,
         previewOf(4, 1, "BB BB BB BB",
                   "01 00 00 00 80 01 00 00 FF 00 00 00 00 00 FF 80 00 00 00 00 " + times(504, "00"))},
        {"getCustomEffect", twoRecords, 0, ""},
        {"setMultilayerEffect", record, 0,
         previewOf(18, 5, "AA AA AA AA",
                   "12 00 12 00 06 00 00 00 0A 00 01 00 0C 00 02 00 0E 00 03 00 10 00 04 00 "
                   "00 01 00 C1 00 00 00 00 00 00 00 00 00 00 00 00 10 00 00 C1 00 00 00 00 "
                   "10 00 00 C1 00 00 00 00 10 00 00 C1 00 00 00 00 10 00 00 C1 00 00 00 00 " +
                       times(5 * mask, "FF"))},
        {"getMultilayerEffect", record, 0, ""},
        {"setMultizoneEffect", twoRecords, 0,
         previewOf(19, 8, "88 08 88 88",
                   "21 00 21 00 09 00 00 00 0B 00 01 00 0F 00 02 00 11 00 03 00 15 00 04 00 17 00 05 00 "
                   "1B 00 06 00 1D 00 07 00 " +
                       times(4, "10 00 00 C1 00 00 00 00 00 01 00 C1 00 00 00 00 00 00 00 00 00 00 00 00") +
                       " " + times(8 * mask, "00"))},
        {"getMultizoneEffect", twoRecords, 0, ""},
        {"setSystemStatusEffect", record, 0, ""},
        {"registerSystemStatusNotify", callback, 0, ""},
        {"unRegisterSystemStatusNotify", nothing, 0, ""},
        {"registerNotify", callback, 0, ""},
        {"unRegisterNotify", nothing, 0, ""},
        {"saveConfig", nothing, 0,
         joined({storingOf(Model::bareImage), "41 80 | 51 28 | 41 01 | 50 55 | 41 00"})},
        {"exit_device", byte, 0, "41 01 | 41 00 | 41 00"},
    };
}

template <class... Values>
std::int32_t callEntry(void* object, std::size_t number, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[number])(object, values...);
}

/// A key as it crosses the boundary.
struct RawKey {
    std::int32_t number;
    Byte red, green, blue, unused;
};

void noFrame(const Byte*) {}

constexpr std::size_t secondRecord = 24000;

std::int32_t callSlot(void* object, std::size_t number, const Slot& slot, Byte* record)
{
    static std::vector<RawKey> keys{{5, 10, 11, 12, 0xEE}};
    switch (slot.takes) {
    case Takes::nothing:
        return callEntry(object, number);
    case Takes::byte:
        return callEntry(object, number, slot.byte);
    case Takes::record:
        return callEntry(object, number, static_cast<void*>(record));
    case Takes::byteAndRecord:
        return callEntry(object, number, slot.byte, static_cast<void*>(record));
    case Takes::countAndRecord:
        return callEntry(object, number, std::uint32_t{slot.byte}, static_cast<void*>(record));
    case Takes::twoRecords:
        return callEntry(object, number, static_cast<void*>(record),
                         static_cast<void*>(record + secondRecord));
    case Takes::callback:
        return slot.name == std::string("registerNotify")
                   ? callEntry(object, number, &Notifications::callback)
                   : callEntry(object, number, &noFrame);
    case Takes::list:
        return callEntry(object, number, &keys);
    }
    return -1;
}

/// A record for the slots that take one, laid out byte by byte. One size holds all, that of twenty macros
/// too.
ByteVector recordFor(std::size_t number)
{
    ByteVector record(32768);
    const auto put = [&](std::size_t at, std::string_view text) {
        std::ranges::copy(bytes(text), record.begin() + std::ptrdiff_t(at));
    };
    switch (number) {
    case 2:
        put(0, "0A 0B 0C");
        break;
    case 9: // two entries
        put(0, "05 01 02 03 06 04 05 06");
        break;
    case 10:
        put(0, "34 12");
        break;
    case 14: // macro 5, mode 3
        put(0, "05");
        put(19, "03");
        break;
    case 15:
        put(0, "06");
        break;
    case 20:
        put(0, "00 11 22 33 03 00 80");
        break;
    case 23: // the effect's number is not looked at
        put(0, "09 11 22 33 03 00 80");
        break;
    default:
        break;
    }
    return record;
}

void prepare(ScriptedDevice& device)
{
    for (const std::string& read : reports(eachOf("52 18", 20)))
        device.answer(read, read + " 00 FF 3F");
}

template <class Model>
class KeyboardSlots : public testing::Test {
};
TYPED_TEST_SUITE(KeyboardSlots, KeyboardModels, KeyboardModelName);

TYPED_TEST(KeyboardSlots, standInTheListedOrder)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    ASSERT_EQ(slots.size(), 36U);
    for (std::size_t number = 0; number < slots.size(); ++number) {
        const Slot& slot = slots[number];
        KeyboardOf<TypeParam> keyboard(prepare);
        ByteVector record = recordFor(number);
        std::int32_t result = -1;
        const Lines lines =
            debugLinesOf([&] { result = callSlot(keyboard.host, number, slot, record.data()); });
        EXPECT_EQ(result, 0) << slot.name;
        const std::string name = slot.name;
        if (!slot.logged) {
            EXPECT_EQ(lines, Lines{}) << name;
        } else {
            ASSERT_FALSE(lines.empty()) << name;
            EXPECT_EQ(lines.front(), hostLine<TypeParam>(name + ", #"));
            if (name != "exit_device") {
                EXPECT_EQ(lines.back(), hostLine<TypeParam>(name + ", ret = 0"));
            }
        }
        EXPECT_EQ(keyboard.written(reports(slot.written).size()), wire(slot.written)) << name;
    }
}

TYPED_TEST(KeyboardSlots, allAnswerThatTheObjectIsClosed)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    KeyboardOf<TypeParam> keyboard;
    EXPECT_EQ(callEntry(keyboard.host, slots.size() - 1, Byte{1}), 0);
    EXPECT_EQ(keyboard.written(), "");
    for (std::size_t number = 0; number + 1 < slots.size(); ++number) {
        const Slot& slot = slots[number];
        ByteVector record = recordFor(number);
        const ByteVector before = record;
        std::int32_t result = 0;
        const Lines lines =
            debugLinesOf([&] { result = callSlot(keyboard.host, number, slot, record.data()); });
        EXPECT_EQ(result, -11) << slot.name;
        EXPECT_EQ(record, before) << slot.name;
        EXPECT_EQ(lines, slot.logged ? Lines{hostLine<TypeParam>(std::string(slot.name) + ", #")} : Lines{})
            << slot.name;
    }
    EXPECT_EQ(keyboard.written(), "");
}

TYPED_TEST(KeyboardSlots, setTheNumberOfACustomEffectInTheCallersRecord)
{
    KeyboardOf<TypeParam> keyboard;
    ByteVector record = recordFor(23);
    EXPECT_EQ(callEntry(keyboard.host, 23, static_cast<void*>(record.data()),
                        static_cast<void*>(record.data() + secondRecord)),
              0);
    EXPECT_EQ(record[0], 4);
}

/// What stands in a host object, as a host without headers sees it.
struct Object {
    void* table;
    void* probeTable;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

TYPED_TEST(KeyboardSlots, leaveTheFieldsBehindTwoTables)
{
    KeyboardOf<TypeParam> keyboard;
    auto* const object = reinterpret_cast<Object*>(keyboard.host);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(object->closed, 0);
    void* const probe = &object->probeTable;
    const Byte gone = 1;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 2, &gone), 0); }),
              Lines{hostLine<TypeParam>("device_pre_exit, #")});
    EXPECT_EQ(object->closed, 1);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 4, &gone), 0); }),
              (Lines{std::string(TypeParam::tag) + "exit devie " + TypeParam::name + " by probe",
                     hostLine<TypeParam>("exit_device, #")}));
    EXPECT_EQ(keyboard.written(), "");
}

} // namespace
} // namespace pyrux::test
