// The boundary: slots of the virtual table, the object's fields, the core's hooks behind them. Nothing here
// uses the interface's declaration.

#include "tests/support/debug_log.h"
#include "tests/support/member_call.h"
#include "tests/support/mouse.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

/// The arguments that the operations of RD210 take.
enum class Arguments { none, byte, byteAndCode, output, twoOutputs, callback };

struct Slot {
    std::size_t number;
    const char* name;
    Arguments arguments;
    Byte byte;           ///< First argument, if it is a byte.
    const char* written; ///< What the call sends.
};

/// Slot for slot, with arguments that make each call's reports its own.
constexpr std::array<Slot, 25> slots{{
    {0, "changeProfileId", Arguments::byte, 3, "41 80 | 51 00 00 00 03"},
    {1, "getCurrProfileId", Arguments::output, 0, "41 80 | 52 00"},
    {2, "resetProfile", Arguments::byte, 1, "41 01 | 50 10 00 00 FF | 41 00"},
    {3, "resetPartial", Arguments::byte, 1, "41 80 | 51 98 04 | 51 22 00 00 C0 C0"},
    {4, "setKeyMapping", Arguments::byteAndCode, 2, "41 80 | 52 10 | 51 20 B2 00 34 12 | 51 18 02 00 FF 3F"},
    {5, "setKeyMappingAll", Arguments::output, 0, "41 80 | 52 10 | 51 22 00 00 10 10"},
    {6, "getKeyMappingAll", Arguments::output, 0,
     "41 80 | 52 18 00 | 53 10 02 | 52 18 01 | 53 10 02 | 52 18 02 | 53 10 02 | 52 18 03 | 53 10 02 | 52 18 "
     "04 | "
     "53 10 02 | 52 18 05 | 53 10 02 | 52 18 06 | 52 20 BE | 52 18 07 | 53 10 02 | 52 18 08 | 53 10 02 | 52 "
     "18 09 | "
     "53 10 02 | 52 18 0A | 53 10 02 | 52 18 0B | 53 10 02 | 52 18 0C | 53 10 02 | 52 10 | 52 22"},
    {7, "setMouseCombo", Arguments::byte, 0, "41 80 | 41 80 | 52 10"},
    {8, "getMouseCombo", Arguments::output, 0, "41 80 | 52 10"},
    {9, "startRecordMacro", Arguments::none, 0, "41 01 | 51 22 00 00 C0 C0"},
    {10, "stopRecordMacro", Arguments::none, 0, "41 80"},
    {11, "setMacro", Arguments::output, 0, "41 80 | 52 22 | 51 18 05 00 FF 3F"},
    {12, "getMacro", Arguments::output, 0, "41 80 | 52 18 06"},
    {13, "clearMacro", Arguments::byte, 4, "41 80 | 52 22 | 51 18 04 00 FF 3F"},
    {14, "setPerformance", Arguments::output, 0,
     "41 80 | 51 9B 00 00 01 00 02 03 04 05 06 | "
     "51 40 00 00 00 01 FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00 02 0A 10 | "
     "51 F0 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF"},
    {15, "getPerformance", Arguments::output, 0, "41 80 | 52 40 | 52 9B | 52 F0 | 52 10"},
    {16, "changeDpiLevel", Arguments::byte, 1, "41 80 | 52 9B | 52 40 | 51 40 00 00 01 07"},
    {17, "startSurfaceLearning", Arguments::none, 0, "41 80 | 80 01 00 00 01"},
    {18, "stopSurfaceLearning", Arguments::none, 0, "80 01"},
    {19, "getSurfaceLearningStatus", Arguments::output, 0, "41 80 | 80 00"},
    {20, "getSurfaceLearningResult", Arguments::twoOutputs, 0, "41 80 | 52 40 | 52 9B | 52 F0 | 52 10"},
    {21, "registerNotify", Arguments::callback, 0, ""},
    {22, "unRegisterNotify", Arguments::none, 0, ""},
    {23, "saveConfig", Arguments::none, 0, "41 01 | 50 55 | 41 00"},
    {24, "exit_device", Arguments::byte, 0, "41 01 | 41 00"},
}};

/// The N-th entry of an object's first virtual table.
void* entry(void* object, std::size_t slot)
{
    return (*static_cast<void***>(object))[slot];
}

template <class... Values>
std::int32_t callSlot(void* object, std::size_t slot, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>(entry(object, slot))(object, values...);
}

std::int32_t callSlot(void* object, const Slot& slot, void* record)
{
    static Byte outputs[2];
    switch (slot.arguments) {
    case Arguments::none:
        return callSlot(object, slot.number);
    case Arguments::byte:
        return callSlot(object, slot.number, slot.byte);
    case Arguments::byteAndCode:
        return callSlot(object, slot.number, slot.byte, std::uint16_t{0x1234});
    case Arguments::output:
        return callSlot(object, slot.number, record);
    case Arguments::twoOutputs:
        return callSlot(object, slot.number, &outputs[0], &outputs[1]);
    case Arguments::callback:
        return callSlot(object, slot.number, &Notifications::callback);
    }
    return -1;
}

/// A record for the slots that take one, laid out byte by byte.
std::array<Byte, 4096> recordFor(const Slot& slot)
{
    std::array<Byte, 4096> record{};
    switch (slot.number) {
    case 5: // thirteen codes 0x03FF
        for (std::size_t i = 0; i < 26; i += 2) {
            record[i] = 0xFF;
            record[i + 1] = 0x03;
        }
        break;
    case 11: // button 5, name, mode 3, count
        record[0] = 5;
        record[41] = 3;
        break;
    case 12:
        record[0] = 6;
        break;
    case 14: // level 1 current, level 1 enabled
        record[0] = 1;
        record[30] = 1;
        record[46] = 6;
        break;
    default:
        break;
    }
    return record;
}

void* openRaw(Mouse& mouse)
{
    mouse.device->answer("52 10", "52 10 00 00 00 00 00 00 00 00 00 00 FF");
    mouse.device->answer("52 22", "52 22 00 00 10 10");
    mouse.device->answer("52 18 06", "52 18 06 00 FF 3F");
    mouse.device->answer("52 40", "52 40 00 00 00 07");
    mouse.device->answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
    return mouse.host;
}

TEST(Slots, standInTheListedOrder)
{
    for (const Slot& slot : slots) {
        Mouse mouse;
        void* const object = openRaw(mouse);
        std::array<Byte, 4096> record = recordFor(slot);
        std::int32_t result = -1;
        const Lines lines = debugLinesOf([&] { result = callSlot(object, slot, record.data()); });
        EXPECT_EQ(result, 0) << slot.name;
        ASSERT_FALSE(lines.empty()) << slot.name;
        EXPECT_EQ(lines.front(), std::string("[PYRUX][RD210]PYRUX::PYRUX_RD210::") + slot.name + ", #");
        if (slot.number != 24) {
            EXPECT_EQ(lines.back(),
                      std::string("[PYRUX][RD210]PYRUX::PYRUX_RD210::") + slot.name + ", ret = 0");
        }
        EXPECT_EQ(mouse.written(), wire(slot.written)) << slot.name;
    }
}

TEST(Slots, giveTheirOutputs)
{
    Mouse mouse;
    void* const object = openRaw(mouse);
    mouse.device->answer("52 00", "52 00 00 00 02");
    mouse.device->answer("80 00", "80 00 00 00 01");
    Byte profile = 0xEE;
    Byte status = 0xEE;
    Byte combo = 0xEE;
    EXPECT_EQ(callSlot(object, 1, &profile), 0);
    EXPECT_EQ(profile, 2);
    EXPECT_EQ(callSlot(object, 19, &status), 0);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(callSlot(object, 8, &combo), 0);
    EXPECT_EQ(combo, 0);
    EXPECT_EQ(callSlot(object, 0, Byte{5}), -2);
    EXPECT_EQ(callSlot(object, 1, static_cast<Byte*>(nullptr)), -3);
    EXPECT_EQ(callSlot(object, 24, Byte{1}), 0);
    EXPECT_EQ(callSlot(object, 0, Byte{1}), -11);
    EXPECT_EQ(callSlot(object, 1, &profile), -11);
    EXPECT_EQ(callSlot(object, 16, Byte{1}), -11);
}

TEST(Slots, callBackWithTheRecord)
{
    // A callback as a host without headers writes it: event at 0, value at 4.
    static std::array<Byte, 6> seen;
    static std::atomic<int> calls;
    calls = 0;
    Mouse mouse;
    void (*const callback)(void*) = [](void* record) {
        std::memcpy(seen.data(), record, seen.size());
        ++calls;
    };
    EXPECT_EQ(callSlot(mouse.host, 21, callback), 0);
    mouse.device->send("43 01 00 00 03 C0");
    EXPECT_EQ(callSlot(mouse.host, 18), 0); // its reply comes behind the event
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(hex(seen), "02 00 00 00 22 00");
    EXPECT_EQ(callSlot(mouse.host, 22), 0);
    mouse.device->send("43 01 00 00 03 C0");
    EXPECT_EQ(callSlot(mouse.host, 18), 0);
    EXPECT_EQ(calls, 1);
}

/// What stands in a host object, as a host without headers sees it.
struct Object {
    void* table;
    void* probeTable;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

TEST(Object, holdsItsThreeFieldsBehindTwoTables)
{
    Mouse mouse;
    const Object* object = reinterpret_cast<const Object*>(mouse.host);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(object->closed, 0);
    mouse->exit_device(1);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_EQ(object->closed, 1);
}

TEST(Object, hasTheCoresHooksInTheSecondTable)
{
    Mouse mouse;
    const Object* object = reinterpret_cast<const Object*>(mouse.host);
    void* const probe = const_cast<void**>(&object->probeTable);
    const Byte gone = 1;
    EXPECT_EQ(debugLinesOf([&] {
                  EXPECT_EQ(callSlot(probe, 0, &gone), 0);
                  EXPECT_EQ(callSlot(probe, 1, &gone), 0);
                  EXPECT_EQ(callSlot(probe, 3, &gone), 0);
              }),
              Lines{});
    EXPECT_EQ(object->closed, 0);
    EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    mouse.forget();

    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callSlot(probe, 2, &gone), 0); }),
              (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::device_pre_exit, #"}));
    EXPECT_EQ(object->closed, 1);
    EXPECT_NE(object->device, nullptr); // the protocol object is still there
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);

    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callSlot(probe, 4, &gone), 0); }),
              (Lines{"[PYRUX][RD210]exit devie RD210 by probe",
                     "[PYRUX][RD210]PYRUX::PYRUX_RD210::exit_device, #"}));
    EXPECT_EQ(mouse.written(), "");
}

TEST(Object, saysGoodbyeWhenTheCoresFlagIsZero)
{
    Mouse mouse;
    void* const probe = &reinterpret_cast<Object*>(mouse.host)->probeTable;
    const Byte there = 0;
    EXPECT_EQ(callSlot(probe, 2, &there), 0);
    // exit_device does not test `closed`: it works behind device_pre_exit.
    EXPECT_EQ(callSlot(probe, 4, &there), 0);
    EXPECT_EQ(mouse.written(), wire("41 01 | 41 00"));
}

} // namespace
} // namespace pyrux::test
