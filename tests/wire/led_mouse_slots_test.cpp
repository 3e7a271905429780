// The boundary of the wired mice with lights: slots of the virtual table, the object's fields, the core's
// hooks behind them. Nothing here uses the interfaces' declarations.

#include "tests/support/debug_log.h"
#include "tests/support/led_mouse.h"
#include "tests/support/member_call.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

/// What an operation takes.
enum class Takes { nothing, byte, byteAndCode, record, twoOutputs, callback, zones };

struct Slot {
    const char* name;
    Takes takes;
    Byte byte;           ///< First argument, if it is a byte.
    const char* written; ///< What the call sends.
    std::int32_t result = 0;
    bool logged = true;
};

const std::vector<Slot> common{
    {"setLightingInit", Takes::nothing, 0, "41 02 | C0 F0 00 00 01 | C0"},
    {"setLightingUninit", Takes::nothing, 0, "41 00"},
    {"setLightingPortColor", Takes::record, 0, "", -15, false},
    {"setSyncLightingData", Takes::zones, 0, "C0 01 01 00 05 0A 0B 0C", 0, false},
    {"setLightingTurnOff", Takes::nothing, 0, "C0"},
    {"changeProfileId", Takes::byte, 3, "41 80 | 51 00 00 00 03"},
    {"getCurrProfileId", Takes::record, 0, "41 80 | 52 00"},
    {"resetProfile", Takes::byte, 1, "41 01 | 50 10 00 00 FF | 41 00"},
    {"resetPartial", Takes::byte, 1, "41 80 | 51 98 04 | 51 22 00 00 C0 C0"},
    {"setEffectMode", Takes::byte, 254, "41 80 | 51 28 00 00 FE"},
    {"getEffectMode", Takes::record, 0, "41 80 | 52 28"},
    {"setGeneralEffect", Takes::record, 0,
     "41 80 | 51 2B 00 00 02 28 00 FF FF 40 11 22 33 | 41 80 | 51 28 00 00 02"},
    {"getGeneralEffect", Takes::record, 0, "41 80 | 52 2B 00 00 01"},
    {"setCustomEffect", Takes::record, 0, "41 80 | 51 A8 00 00 01 02 03 04 05 06 | 41 80 | 51 28 00 00 B0"},
    {"getCustomEffect", Takes::record, 0, "41 80 | 52 A8"},
    {"setKeyMapping", Takes::byteAndCode, 2, "41 80 | 52 10 | 51 20 B2 00 34 12 | 51 18 02 00 FF 3F"},
    {"setKeyMappingAll", Takes::record, 0, "41 80 | 52 10 | 51 22 00 00 10 10"},
    {"getKeyMappingAll", Takes::record, 0,
     "41 80 | 52 18 00 | 53 10 02 | 52 18 01 | 53 10 02 | 52 18 02 | 53 10 02 | 52 18 03 | 53 10 02 | "
     "52 18 04 | 53 10 02 | 52 18 05 | 53 10 02 | 52 18 06 | 52 20 BE | 52 18 07 | 53 10 02 | 52 18 08 | "
     "53 10 02 | 52 18 09 | 53 10 02 | 52 18 0A | 53 10 02 | 52 18 0B | 53 10 02 | 52 18 0C | 53 10 02 | "
     "52 10 | 52 22"},
    {"setMouseCombo", Takes::byte, 0, "41 80 | 41 80 | 52 10"},
    {"getMouseCombo", Takes::record, 0, "41 80 | 52 10"},
    {"startRecordMacro", Takes::nothing, 0, "41 01 | 51 22 00 00 C0 C0"},
    {"stopRecordMacro", Takes::nothing, 0, "41 80"},
    {"setMacro", Takes::record, 0, "41 80 | 52 22 | 51 18 05 00 FF 3F"},
    {"getMacro", Takes::record, 0, "41 80 | 52 18 06"},
    {"clearMacro", Takes::byte, 4, "41 80 | 52 22 | 51 18 04 00 FF 3F"},
    {"setPerformance", Takes::record, 0,
     "41 80 | 51 9B 00 00 01 00 02 03 04 05 06 | "
     "51 40 00 00 00 01 FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00 02 0A 10 | "
     "51 F0 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF"},
    {"getPerformance", Takes::record, 0, "41 80 | 52 40 | 52 9B | 52 F0 | 52 10"},
    {"changeDpiLevel", Takes::byte, 1, "41 80 | 52 9B | 52 40 | 51 40 00 00 01 07"},
    {"startSurfaceLearning", Takes::nothing, 0, "41 80 | 80 01 00 00 01"},
    {"stopSurfaceLearning", Takes::nothing, 0, "80 01"},
    {"getSurfaceLearningStatus", Takes::record, 0, "41 80 | 80 00"},
    {"getSurfaceLearningResult", Takes::twoOutputs, 0, "41 80 | 52 40 | 52 9B | 52 F0 | 52 10"},
    {"registerNotify", Takes::callback, 0, ""},
    {"unRegisterNotify", Takes::nothing, 0, ""},
    {"saveConfig", Takes::nothing, 0, "41 01 | 50 55 | 41 00"},
};

const Slot exitDevice{"exit_device", Takes::byte, 0, "41 01 | 41 00"};
const Slot test{"test", Takes::nothing, 0, "41 80"};
const Slot getMacroAll{"getMacroAll", Takes::record, 0,
                       "41 80 | 52 18 00 | 52 18 01 | 52 18 02 | 52 18 03 | 52 18 04 | 52 18 05 | 52 18 06 | "
                       "52 18 07 | 52 18 08 | 52 18 09 | 52 18 0A | 52 18 0B | 52 18 0C"};

/// The slots of a model, in their order.
template <class Model>
std::vector<Slot> slotsOf()
{
    std::vector<Slot> slots = common;
    if (Model::name == std::string("RD110")) {
        slots.push_back(test);
        slots.push_back(getMacroAll);
    }
    slots.push_back(exitDevice);
    return slots;
}

template <class... Values>
std::int32_t callEntry(void* object, std::size_t number, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[number])(object, values...);
}

/// A LED and a zone as they cross the boundary.
struct RawLed {
    std::uint32_t index;
    Byte red, green, blue;
};
struct RawZone {
    std::uint32_t number;
    std::vector<RawLed> leds;
};

std::int32_t callSlot(void* object, std::size_t number, const Slot& slot, Byte* record)
{
    static Byte outputs[2];
    static std::vector<RawZone> zones{{1, {{5, 10, 11, 12}}}};
    switch (slot.takes) {
    case Takes::nothing:
        return callEntry(object, number);
    case Takes::byte:
        return callEntry(object, number, slot.byte);
    case Takes::byteAndCode:
        return callEntry(object, number, slot.byte, std::uint16_t{0x1234});
    case Takes::record:
        return callEntry(object, number, static_cast<void*>(record));
    case Takes::twoOutputs:
        return callEntry(object, number, &outputs[0], &outputs[1]);
    case Takes::callback:
        return callEntry(object, number, &Notifications::callback);
    case Takes::zones:
        return callEntry(object, number, &zones);
    }
    return -1;
}

/// A record for the slots that take one, laid out byte by byte. One size holds all, that of thirteen macros
/// too.
ByteVector recordFor(std::size_t number)
{
    ByteVector record(16384);
    const auto put = [&](std::size_t at, std::string_view text) {
        std::ranges::copy(bytes(text), record.begin() + std::ptrdiff_t(at));
    };
    switch (number) {
    case 11: // mode 2, speed 3, direction, brightness 128, color
        put(0, "02 03 01 80 11 22 33");
        break;
    case 12:
        put(0, "01");
        break;
    case 13:
        put(0, "01 02 03 04 05 06");
        break;
    case 16: // thirteen codes 0x03FF
        for (std::size_t i = 0; i < 26; i += 2)
            put(i, "FF 03");
        break;
    case 22: // button 5, mode 3
        put(0, "05");
        put(41, "03");
        break;
    case 23:
        put(0, "06");
        break;
    case 25: // level 1 current, level 1 enabled, middle double-click speed
        put(0, "01");
        put(30, "01");
        put(46, "06");
        break;
    default:
        break;
    }
    return record;
}

void prepare(ScriptedDevice& device, const Slot& slot)
{
    device.answer("52 10", "52 10 00 00 00 00 00 00 00 00 00 00 FF");
    device.answer("52 22", "52 22 00 00 10 10");
    device.answer("52 18 06", "52 18 06 00 FF 3F");
    device.answer("52 40", "52 40 00 00 00 07");
    device.answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
    device.answer("52 2B", "52 2B 00 00 01");
    if (&slot != &getMacroAll && slot.name != std::string("getMacroAll"))
        return;
    for (int button = 0; button < 13; ++button) {
        const std::uint8_t byte = std::uint8_t(button);
        const std::string command = "52 18 " + hex(std::span(&byte, 1));
        device.answer(command, command + " 00 FF 3F");
    }
}

template <class Model>
class LedMouseSlots : public testing::Test {
};
TYPED_TEST_SUITE(LedMouseSlots, LedMouseModels, LedMouseModelName);

TYPED_TEST(LedMouseSlots, standInTheListedOrder)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    ASSERT_EQ(slots.size(), TypeParam::slots);
    for (std::size_t number = 0; number < slots.size(); ++number) {
        const Slot& slot = slots[number];
        LedMouseOf<TypeParam> mouse;
        prepare(*mouse.device, slot);
        ByteVector record = recordFor(number);
        std::int32_t result = -1;
        const Lines lines = debugLinesOf([&] { result = callSlot(mouse.host, number, slot, record.data()); });
        EXPECT_EQ(result, slot.result) << slot.name;
        const std::string name = slot.name;
        if (!slot.logged) {
            EXPECT_EQ(lines, Lines{}) << name;
        } else {
            ASSERT_FALSE(lines.empty()) << name;
            EXPECT_EQ(lines.front(), ownLine<TypeParam>(name + ", #"));
            if (name != "exit_device") {
                EXPECT_EQ(lines.back(), ownLine<TypeParam>(name + ", ret = 0"));
            }
        }
        EXPECT_EQ(mouse.written(reports(slot.written).size()), wire(slot.written)) << name;
    }
}

TYPED_TEST(LedMouseSlots, allAnswerThatTheObjectIsClosed)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    LedMouseOf<TypeParam> mouse;
    EXPECT_EQ(callEntry(mouse.host, slots.size() - 1, Byte{1}), 0);
    EXPECT_EQ(mouse.written(), "");
    for (std::size_t number = 0; number + 1 < slots.size(); ++number) {
        const Slot& slot = slots[number];
        ByteVector record = recordFor(number);
        const ByteVector before = record;
        std::int32_t result = 0;
        const Lines lines = debugLinesOf([&] { result = callSlot(mouse.host, number, slot, record.data()); });
        EXPECT_EQ(result, -11) << slot.name;
        EXPECT_EQ(record, before) << slot.name;
        EXPECT_EQ(lines, slot.logged ? Lines{ownLine<TypeParam>(std::string(slot.name) + ", #")} : Lines{})
            << slot.name;
    }
    EXPECT_EQ(callEntry(mouse.host, slots.size() - 1, Byte{0}), 0);
    EXPECT_EQ(mouse.written(), "");
}

/// What stands in a host object, as a host without headers sees it.
struct Object {
    void* table;
    void* probeTable;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

TYPED_TEST(LedMouseSlots, leaveTheFieldsBehindTwoTables)
{
    LedMouseOf<TypeParam> mouse;
    auto* const object = reinterpret_cast<Object*>(mouse.host);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(object->closed, 0);
    void* const probe = &object->probeTable;
    const Byte gone = 1;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 2, &gone), 0); }),
              Lines{ownLine<TypeParam>("device_pre_exit, #")});
    EXPECT_EQ(object->closed, 1);
    EXPECT_NE(object->device, nullptr);
    const std::string tag = std::string("[PYRUX][") + TypeParam::name + "]";
    EXPECT_EQ(
        debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 4, &gone), 0); }),
        (Lines{tag + "exit devie " + TypeParam::name + " by probe", ownLine<TypeParam>("exit_device, #")}));
    EXPECT_EQ(mouse.written(), "");
}

} // namespace
} // namespace pyrux::test
