// The boundary of the power supplies: slots of the virtual table, the object's fields, the core's hooks
// behind them. Nothing here uses the interfaces' declarations.

#include "tests/support/debug_log.h"
#include "tests/support/member_call.h"
#include "tests/support/supply.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

enum class Takes { byte, record, threeOutputs };

struct Slot {
    const char* name;
    Takes takes;
    Byte byte;           ///< First argument, if it is a byte.
    const char* asked;   ///< What the call sends.
    const char* outcome; ///< How the record or the outputs begin then.
};

constexpr Slot getLog{"getLog", Takes::record, 0, "", "00 00 48 43 00 00 00 00"}; // 200.0, 0.0

/// The slots of a model, in their order. The supply has told 200.0 V and 41.5 degrees.
template <class Model>
std::vector<Slot> slotsOf()
{
    std::vector<Slot> slots{
        {"getInput", Takes::record, 0, "", "00 00 48 43 00 00 00 00"},
        {"getOutput", Takes::record, 0, "", "00 00 00 00 00 00 00 00"},
        {"getFan", Takes::record, 0, "[MQ]", "03"},
        {"getThermal", Takes::record, 0, "", "00 00 26 42 EE"}, // 41.5
        {"getMultiRail", Takes::record, 0, "[OQ]", "02 EE"},
        {"setFan", Takes::record, 0, "[M4]", "04 EE EE EE"},
        {"setMultiRail", Takes::byte, 3, "[O3]", "04 EE EE EE"},
        {"getVersion", Takes::threeOutputs, 0, "[SQ]", "00 0C 22 EE"},
        {"exit_device", Takes::byte, 0, "", "04 EE EE EE"},
    };
    if (Model::isPsuCtrl)
        slots.insert(slots.begin() + 5, getLog);
    return slots;
}

template <class... Values>
std::int32_t callEntry(void* object, std::size_t number, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[number])(object, values...);
}

std::int32_t callSlot(void* object, std::size_t number, const Slot& slot, Byte* record)
{
    switch (slot.takes) {
    case Takes::byte:
        return callEntry(object, number, slot.byte);
    case Takes::record:
        return callEntry(object, number, static_cast<void*>(record));
    case Takes::threeOutputs:
        return callEntry(object, number, record, record + 1, record + 2);
    }
    return -1;
}

/// One size holds all records. The first byte is a fan mode.
using Record = std::array<Byte, 64>;
Record freshRecord()
{
    Record record;
    record.fill(0xEE);
    record[0] = 4;
    return record;
}

template <class Model>
class PsuSlots : public testing::Test {
};
TYPED_TEST_SUITE(PsuSlots, SupplyModels, SupplyModelName);

TYPED_TEST(PsuSlots, standInTheListedOrder)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    ASSERT_EQ(slots.size(), TypeParam::isPsuCtrl ? 10U : 9U);
    for (std::size_t number = 0; number < slots.size(); ++number) {
        const Slot& slot = slots[number];
        SupplyOf<TypeParam> supply;
        supply.answer("[MQ]", "[M3]");
        supply.answer("[OQ]", "[O2]");
        supply.answer("[SQ]", "C12.34");
        supply.tell({"[V1200.0]", "[T1041.5]"});
        Record record = freshRecord();
        std::int32_t result = -1;
        const Lines lines =
            debugLinesOf([&] { result = callSlot(supply.host, number, slot, record.data()); });
        EXPECT_EQ(result, 0) << slot.name;
        EXPECT_EQ(supply.asked(), slot.asked) << slot.name;
        const ByteVector outcome = bytes(slot.outcome);
        EXPECT_EQ(hex(std::span(record).first(outcome.size())), slot.outcome) << slot.name;
        ASSERT_FALSE(lines.empty()) << slot.name;
        const std::string name = slot.name;
        EXPECT_EQ(lines.front(), supplyLine<TypeParam>(name + ", #"));
        if (name != "exit_device") {
            EXPECT_EQ(lines.back(), supplyLine<TypeParam>(name + ", ret = 0"));
        }
    }
}

TYPED_TEST(PsuSlots, allAnswerThatTheObjectIsClosed)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    SupplyOf<TypeParam> supply;
    EXPECT_EQ(callEntry(supply.host, slots.size() - 1, Byte{1}), 0);
    for (std::size_t number = 0; number + 1 < slots.size(); ++number) {
        const Slot& slot = slots[number];
        Record record = freshRecord();
        std::int32_t result = 0;
        const Lines lines =
            debugLinesOf([&] { result = callSlot(supply.host, number, slot, record.data()); });
        EXPECT_EQ(result, -11) << slot.name;
        EXPECT_EQ(record, freshRecord()) << slot.name;
        EXPECT_EQ(lines, Lines{supplyLine<TypeParam>(std::string(slot.name) + ", #")}) << slot.name;
    }
    EXPECT_EQ(callEntry(supply.host, slots.size() - 1, Byte{0}), 0);
    EXPECT_EQ(supply.asked(), "");
}

/// What stands in a host object, as a host without headers sees it.
struct Object {
    void* table;
    void* probeTable;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

TYPED_TEST(PsuSlots, leaveTheFieldsBehindTwoTables)
{
    SupplyOf<TypeParam> supply;
    auto* const object = reinterpret_cast<Object*>(supply.host);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(object->closed, 0);
    void* const probe = &object->probeTable;
    const Byte gone = 1;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 2, &gone), 0); }),
              Lines{supplyLine<TypeParam>("device_pre_exit, #")});
    EXPECT_EQ(object->closed, 1);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 4, &gone), 0); }),
              (Lines{std::string(TypeParam::tag) + "exit devie " + TypeParam::name + " by probe",
                     supplyLine<TypeParam>("exit_device, #")}));
    EXPECT_EQ(supply.asked(), "");
}

} // namespace
} // namespace pyrux::test
