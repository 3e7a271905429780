#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace pyrux::test {

/// Where the arguments of calls come from: shaped as each operation describes them, null where a pointer may
/// be, and random otherwise. Records have exactly the described size. What the pointers point to goes with
/// the object.
class Arguments {
public:
    using Generator = std::mt19937_64;

    explicit Arguments(Generator& from) : generator(from) {}

    /// Random, and more often small than large.
    std::uint32_t number();
    bool oneIn(unsigned chances) { return generator() % chances == 0; }

    /// So many bytes that are 0, small or anything.
    void* bytes(std::size_t size);

    template <class Value>
    Value* keep(std::unique_ptr<Value> value)
    {
        kept.push_back(std::shared_ptr<Value>(std::move(value)));
        return static_cast<Value*>(kept.back().get());
    }

private:
    Generator& generator;
    std::vector<std::shared_ptr<void>> kept;
};

/// A call of one slot through an object's first table, with arguments as the slot takes them. `around` runs
/// the call itself, the arguments being there.
using Around = std::function<void(const std::function<void()>& call)>;
using SlotCall = std::int64_t (*)(void* object, std::size_t slot, Arguments& from, const Around& around);

/// One factory, a firmware model that it opens, and the slots of its objects in order.
struct FactoryRow {
    const char* firmware;
    void* (*factory)(const char* path);
    std::vector<SlotCall> slots;
    std::size_t exitSlot;
};

const std::vector<FactoryRow>& factories();

/// The slots of what `sysInfo` makes, but for the last one, which ends it.
const std::vector<SlotCall>& sysInfoSlots();

/// What every callback that `Arguments` gives out calls. Null: nothing.
extern void (*onCallback)();

/// Whether a value is one of the library's result codes.
bool isResult(std::int64_t value);

} // namespace pyrux::test
