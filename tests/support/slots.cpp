#include "tests/support/slots.h"

#include <deque>
#include <ostream>

namespace pyrux::test {
namespace {

using Makers = std::vector<std::vector<SlotTable> (*)()>;

/// Filled before main.
Makers& makers()
{
    static Makers all;
    return all;
}

struct RawLed {
    std::uint32_t index;
    Byte red, green, blue;
};
struct RawZone {
    std::uint32_t number;
    std::vector<RawLed> leds;
};
struct RawKey {
    std::int32_t number;
    Byte red, green, blue, unused;
};

/// Keeps a list for as long as calls may need it.
template <class Item>
const void* kept(Item item)
{
    static std::deque<std::vector<Item>> lists;
    return &lists.emplace_back(1, std::move(item));
}

} // namespace

void PrintTo(const SlotTable& table, std::ostream* out)
{
    *out << table.model;
}

AddSlotTables::AddSlotTables(std::vector<SlotTable> (*tables)())
{
    makers().push_back(tables);
}

const std::vector<SlotTable>& slotTables()
{
    static const std::vector<SlotTable> all = [] {
        std::vector<SlotTable> tables;
        for (const auto make : makers())
            for (SlotTable& table : make())
                tables.push_back(std::move(table));
        return tables;
    }();
    return all;
}

Call destroying()
{
    return [](void* object, std::size_t number, Byte*) -> std::intptr_t {
        return callEntry<void*>(object, number, std::uint32_t{0}) == object ? 0 : -1;
    };
}

const void* zoneList(std::uint32_t zone, std::uint32_t led)
{
    return kept(RawZone{zone, {{led, 10, 11, 12}}});
}

const void* keyList(std::int32_t key)
{
    return kept(RawKey{key, 10, 11, 12, 0xEE});
}

} // namespace pyrux::test
