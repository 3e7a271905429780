#pragma once

#include "tests/support/bytes.h"
#include "tests/support/models.h"
#include "tests/support/raw_host.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

/// @file
/// The slots of the models, as their descriptions list them: a table for each model, a row for each entry of
/// the virtual table. Nothing in the tables uses the interfaces' declarations.

namespace pyrux::test {

using Byte = std::uint8_t;

/// Calls an entry; `memory` is what pointers of the call point to.
using Call = std::function<std::intptr_t(void* object, std::size_t number, Byte* memory)>;

/// What an entry leaves in the log, and what it does on a closed object.
enum class Sort {
    logged,    ///< Its name, then its result; on a closed object its name and -11.
    quiet,     ///< Nothing; on a closed object -11.
    lone,      ///< Nothing, and the same result on a closed object: the default of an interface.
    exit,      ///< `exit_device`: its name alone; 0 on a closed object too.
    destructor ///< `destroy`: nothing is done with the object after it.
};

struct Slot {
    std::string name;
    Call call;
    std::string memory;     ///< What the memory of the call begins with.
    std::string written;    ///< What the call sends.
    std::string after = {}; ///< What the memory begins with after the call. Empty: as before.
    Sort sort = Sort::logged;
    std::intptr_t result = 0;
    std::vector<std::string> between = {}; ///< The model's log lines between the name and the result.
    Prepare prepare = {};                  ///< Lays down answers for this call alone.
};

/// The slots of a model, in their order.
struct SlotTable {
    std::string model; ///< Its factory.
    std::vector<Slot> slots;
    Prepare prepare = {}; ///< Lays down answers.
    /// What happens before each call.
    std::function<void(ScriptedDevice& device, void* host)> begin = {};
    std::size_t room = 256; ///< Bytes of memory, more than any call needs.
    Byte fill = 0;          ///< What they hold where a row does not tell.
    bool lanes = false;     ///< Frames go out by lanes, of which the first one to get something may be first.
};

void PrintTo(const SlotTable& table, std::ostream* out);

/// The tables of all models. Each family puts its own there.
const std::vector<SlotTable>& slotTables();

/// Puts the tables of a family down: one object of this for each file of tables.
struct AddSlotTables {
    explicit AddSlotTables(std::vector<SlotTable> (*tables)());
};

/// An argument that points into the memory.
struct At {
    std::size_t offset;
};
constexpr At at(std::size_t offset)
{
    return {offset};
}
inline constexpr At memory{0};

template <class Value>
Value argument(Value value, Byte*)
{
    return value;
}
inline Byte* argument(At place, Byte* memory)
{
    return memory + place.offset;
}

/// A call with these arguments.
/// @tparam Result  what the entry returns
template <class Result = std::int32_t, class... Values>
Call with(Values... values)
{
    return [=](void* object, std::size_t number, Byte* memory) -> std::intptr_t {
        if constexpr (std::is_void_v<Result>)
            return callEntry<Result>(object, number, argument(values, memory)...), 0;
        else
            return std::intptr_t(callEntry<Result>(object, number, argument(values, memory)...));
    };
}

/// A call of `destroy` that frees nothing. The result is 0 when the entry gives the object, as it should.
Call destroying();

/// One LED of one zone, 0A 0B 0C, as `setSyncLightingData` takes it.
const void* zoneList(std::uint32_t zone, std::uint32_t led);

/// One key, 0A 0B 0C, as the `setSyncLightingData` of a keyboard takes it.
const void* keyList(std::int32_t key);

/// A callback that takes a record of this size by value; `noted` takes the record's address.
template <std::size_t size>
struct RawRecord {
    Byte bytes[size];
};
template <std::size_t size>
void notedByValue(RawRecord<size>)
{
}
inline void noted(const Byte*) {}

} // namespace pyrux::test
