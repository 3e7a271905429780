// Every slot of every factory's objects by the shape of its arguments. Nothing here calls an interface by its
// operations' names: the tables are the independent list.

#include "tests/stress/operations.h"

#include "pyrux/pyrux.h"
#include "tests/support/member_call.h"

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <utility>

namespace pyrux::test {

void (*onCallback)() = nullptr;

namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;
using Long = std::uint32_t;

/// A pointer to so many values, or null.
template <class Value, std::size_t count = 1>
struct To {
};

/// A reference, which is never null.
template <class Value>
struct Ref {
};

/// A callback that takes the type, or null.
template <class Record>
struct Calls {
};

/// A reference to a list of LEDs for the lights of controllers and mice.
struct Zones {};

/// The same for keyboards.
struct Keys {};

/// A count, and a pointer to as many entries.
struct Entries {};

template <class Record>
void told(Record)
{
    if (onCallback)
        onCallback();
}

/// How an argument of a shape is passed, and how one is made.
template <class Shape>
struct Passed {
    static_assert(std::is_trivially_copyable_v<Shape>);
    static std::tuple<Shape> make(Arguments& from)
    {
        if constexpr (std::is_integral_v<Shape>)
            return static_cast<Shape>(from.number());
        else
            return *static_cast<Shape*>(from.bytes(sizeof(Shape)));
    }
};

template <class Value, std::size_t count>
struct Passed<To<Value, count>> {
    static std::tuple<void*> make(Arguments& from)
    {
        if (from.oneIn(10))
            return nullptr;
        if constexpr (std::is_trivially_copyable_v<Value>)
            return from.bytes(sizeof(Value) * count);
        else
            return from.keep(std::make_unique<Value>());
    }
};

template <class Value>
struct Passed<Ref<Value>> {
    static std::tuple<void*> make(Arguments& from) { return from.bytes(sizeof(Value)); }
};

template <class Record>
struct Passed<Calls<Record>> {
    static std::tuple<void (*)(Record)> make(Arguments& from)
    {
        return from.oneIn(4) ? nullptr : told<Record>;
    }
};

template <>
struct Passed<Zones> {
    static std::tuple<void*> make(Arguments& from)
    {
        auto zones = std::make_unique<std::vector<LightingLedZone>>(from.number() % 20);
        for (LightingLedZone& zone : *zones) {
            zone.zone = from.number();
            zone.leds.resize(from.number() % 64);
            for (LightingLed& led : zone.leds)
                led = {from.number(), Byte(from.number()), Byte(from.number()), Byte(from.number())};
        }
        return from.keep(std::move(zones));
    }
};

template <>
struct Passed<Keys> {
    static std::tuple<void*> make(Arguments& from)
    {
        auto keys = std::make_unique<std::vector<DirectKeyColor>>(from.number() % 300);
        for (DirectKeyColor& key : *keys)
            key = {std::int32_t(from.number()), Byte(from.number()), Byte(from.number()), Byte(from.number()),
                   0};
        return from.keep(std::move(keys));
    }
};

template <>
struct Passed<Entries> {
    static std::tuple<Long, void*> make(Arguments& from)
    {
        const Long count = from.number() % 32;
        return {count, from.oneIn(10) ? nullptr : from.bytes(count * sizeof(KeyMapEntry))};
    }
};

template <class... Values>
std::int64_t callEntry(void* object, std::size_t slot, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[slot])(object, values...);
}

template <class... Shapes>
std::int64_t slotCall(void* object, std::size_t slot, [[maybe_unused]] Arguments& from, const Around& around)
{
    // In braces, so that they are made in their order whatever compiles them.
    const std::tuple<decltype(Passed<Shapes>::make(from))...> made{Passed<Shapes>::make(from)...};
    std::int64_t result = 0;
    around([&] {
        result = std::apply(
            [&](const auto&... parts) {
                return std::apply([&](auto... values) { return callEntry(object, slot, values...); },
                                  std::tuple_cat(parts...));
            },
            made);
    });
    return result;
}

template <class... Shapes>
constexpr SlotCall of = slotCall<Shapes...>;

template <auto factory>
void* make(const char* path)
{
    return factory(path);
}

using Slots = std::vector<SlotCall>;

Slots operator+(Slots first, const Slots& rest)
{
    first.insert(first.end(), rest.begin(), rest.end());
    return first;
}

template <std::size_t zones>
Slots lights()
{
    return {of<>, of<>, of<To<LightingPortColorOf<zones>>>, of<Zones>, of<>};
}

const Slots rd210Slots{of<Byte>,
                       of<To<Byte>>,
                       of<Byte>,
                       of<Byte>,
                       of<Byte, Word>,
                       of<To<Word, 13>>,
                       of<To<Word, 13>>,
                       of<Byte>,
                       of<To<Byte>>,
                       of<>,
                       of<>,
                       of<To<MouseMacroRecord>>,
                       of<To<MouseMacroRecord>>,
                       of<Byte>,
                       of<To<PerformanceRecord>>,
                       of<To<PerformanceRecord>>,
                       of<Byte>,
                       of<>,
                       of<>,
                       of<To<Byte>>,
                       of<To<Byte>, To<Byte>>,
                       of<Calls<NotifyRecord*>>,
                       of<>,
                       of<>,
                       of<Byte>};

const Slots ledMouseSlots = lights<3>() + Slots{of<Byte>,
                                                of<To<Byte>>,
                                                of<Byte>,
                                                of<Byte>,
                                                of<Byte>,
                                                of<To<Byte>>,
                                                of<To<MouseEffectRecord>>,
                                                of<To<MouseEffectRecord>>,
                                                of<To<Byte, 6>>,
                                                of<To<Byte, 6>>,
                                                of<Byte, Word>,
                                                of<To<Word, 13>>,
                                                of<To<Word, 13>>,
                                                of<Byte>,
                                                of<To<Byte>>,
                                                of<>,
                                                of<>,
                                                of<To<MouseMacroRecord>>,
                                                of<To<MouseMacroRecord>>,
                                                of<Byte>,
                                                of<To<PerformanceRecord>>,
                                                of<To<PerformanceRecord>>,
                                                of<Byte>,
                                                of<>,
                                                of<>,
                                                of<To<Byte>>,
                                                of<To<Byte>, To<Byte>>,
                                                of<Calls<NotifyRecord*>>,
                                                of<>,
                                                of<>};

const Slots glowHubSlots = lights<5>() + Slots{of<To<ArgbEffectParam>>,
                                               of<To<ArgbEffectParam>>,
                                               of<Byte, To<ArgbCustomBuffer>>,
                                               of<Byte, To<ArgbCustomBuffer>>,
                                               of<To<ArgbEffectParam>>,
                                               of<To<ArgbEffectParam>>,
                                               of<Byte, Byte, Byte>,
                                               of<Byte, To<Byte>, To<Byte>>,
                                               of<To<Byte, 32>>,
                                               of<To<Byte, 32>>,
                                               of<Byte>,
                                               of<>,
                                               of<Byte>,
                                               of<>,
                                               of<To<Word>>,
                                               of<Byte>,
                                               of<To<Byte>>,
                                               of<Calls<ArgbEffectNotify>>,
                                               of<>,
                                               of<Byte>,
                                               of<Byte, Byte>,
                                               of<Byte, To<Byte>>,
                                               of<Byte, Byte>,
                                               of<Byte, To<Byte>>};

const Slots glowHub2Slots = lights<5>() + Slots{of<Byte, GlowHub2Effect, Byte>,
                                                of<Byte, To<Byte, 5>>,
                                                of<Byte, To<Byte, 36>>,
                                                of<Byte, To<Byte, 36>>,
                                                of<Byte>,
                                                of<Byte, Byte, Byte>,
                                                of<To<Byte>, To<Byte>, To<Byte>>,
                                                of<To<Byte, 3>>,
                                                of<To<Byte, 3>>,
                                                of<Byte, Byte, Byte>,
                                                of<To<Byte>, To<Byte>, To<Byte>>,
                                                of<Calls<GlowHub2Notify>>,
                                                of<>,
                                                of<Byte>};

const Slots tintHubSlots = lights<4>() + Slots{of<Byte, Byte, Byte, To<Byte, 3>>,
                                               of<To<Byte>, To<Byte>, To<Byte>, To<Byte, 3>>,
                                               of<To<Byte>>,
                                               of<To<TintMultiColor>>,
                                               of<To<TintMultiColor>>,
                                               of<To<TintMultilayer>>,
                                               of<Byte>};

const Slots playDockSlots = lights<3>() + Slots{of<To<PlayDockEffect>>,
                                                of<To<PlayDockEffect>>,
                                                of<To<PlayDockEffect>>,
                                                of<Byte, Byte>,
                                                of<Byte, To<Byte>>,
                                                of<To<Byte, 3>>,
                                                of<To<Byte, 3>>,
                                                of<>,
                                                of<Byte>,
                                                of<>,
                                                of<To<Word>>,
                                                of<Calls<PlayDockNotify>>,
                                                of<>,
                                                of<Byte>};

const Slots strandSlots = lights<18>() + Slots{of<To<StrandEffectParam>>,
                                               of<To<StrandEffectParam>>,
                                               of<To<StrandEffectParam>>,
                                               of<To<StrandEffectTable>>,
                                               of<Byte, To<StrandCustomBuffer>>,
                                               of<Byte, To<StrandCustomBuffer>>,
                                               of<To<StrandGen1Size>>,
                                               of<To<StrandGen1Size>>,
                                               of<To<StrandGen2Size>>,
                                               of<To<StrandRemap>>,
                                               of<Byte, To<Byte, 32>>,
                                               of<To<Byte, 32>>,
                                               of<Byte, Byte>,
                                               of<>,
                                               of<Byte>,
                                               of<>,
                                               of<To<Word>>,
                                               of<Byte, Byte>,
                                               of<Byte, To<Byte>>,
                                               of<Byte>,
                                               of<Calls<NotifyRecord*>>,
                                               of<>,
                                               of<Byte>,
                                               of<Byte>,
                                               of<To<Byte>>,
                                               of<To<StrandEffectParam>, Byte>,
                                               of<To<StrandEffectParam>, To<Byte>>,
                                               of<Byte>,
                                               of<To<Byte>>,
                                               of<To<StrandOverlayParam>>,
                                               of<To<StrandOverlayParam>>,
                                               of<To<StrandOverlayParam, 3>>};

const Slots psuCtrlSlots{of<Ref<PsuInput>>,
                         of<Ref<PsuOutput>>,
                         of<Ref<PsuCtrlFan>>,
                         of<Ref<float>>,
                         of<To<Byte>>,
                         of<Ref<PsuLog>>,
                         of<Ref<PsuCtrlFan>>,
                         of<Byte>,
                         of<To<Byte>, To<Byte>, To<Byte>>,
                         of<Byte>};

const Slots voltgridSlots{of<Ref<PsuInput>>,
                          of<Ref<PsuOutput>>,
                          of<Ref<VoltgridFan>>,
                          of<Ref<float>>,
                          of<To<Byte>>,
                          of<Ref<VoltgridFan>>,
                          of<Byte>,
                          of<To<Byte>, To<Byte>, To<Byte>>,
                          of<Byte>};

/// @tparam zoneBytes  of the zone matrix
template <std::size_t zoneBytes>
Slots keyboardSlots()
{
    return {of<>,
            of<>,
            of<To<Byte, 3>>,
            of<Keys>,
            of<>,
            of<Byte>,
            of<To<Byte>>,
            of<Byte>,
            of<Byte>,
            of<Entries>,
            of<To<KeyMapTable>>,
            of<To<KeyMapTable>>,
            of<>,
            of<>,
            of<To<MacroRecord>>,
            of<To<MacroRecord>>,
            of<To<MacroList>>,
            of<Byte>,
            of<Byte>,
            of<To<Byte>>,
            of<To<EffectRecord>>,
            of<Byte, To<EffectRecord>>,
            of<To<EffectRecord, 18>>,
            of<To<EffectRecord>, To<Byte, 504>>,
            of<To<EffectRecord>, To<Byte, 504>>,
            of<To<EffectRecord, 4>>,
            of<To<EffectRecord, 4>>,
            of<To<EffectRecord, 4>, To<Byte, zoneBytes>>,
            of<To<EffectRecord, 4>, To<Byte, zoneBytes>>,
            of<To<SystemStatusEffect>>,
            of<Calls<const Byte*>>,
            of<>,
            of<Calls<NotifyRecord*>>,
            of<>,
            of<>,
            of<Byte>};
}

FactoryRow row(const char* firmware, void* (*factory)(const char* path), Slots slots, std::size_t exitSlot)
{
    return {firmware, factory, std::move(slots), exitSlot};
}

} // namespace

std::uint32_t Arguments::number()
{
    switch (generator() % 4) {
    case 0:
        return std::uint32_t(generator());
    case 1:
        return std::uint32_t(generator() & 0xFF);
    default:
        return std::uint32_t(generator() % 7);
    }
}

void* Arguments::bytes(std::size_t size)
{
    const std::shared_ptr<std::uint8_t[]> room(new std::uint8_t[std::max<std::size_t>(size, 1)]());
    const std::uint64_t kind = generator() % 3;
    for (std::size_t i = 0; i < size && kind > 0; ++i)
        room[i] = std::uint8_t(kind == 1 ? generator() % 7 : generator());
    kept.push_back(room);
    return room.get();
}

const std::vector<FactoryRow>& factories()
{
    static const std::vector<FactoryRow> rows{
        row("rd210", make<rd210>, rd210Slots, 24),
        row("rd215", make<rd215>, ledMouseSlots + Slots{of<Byte>}, 35),
        row("rd230", make<rd230>, ledMouseSlots + Slots{of<Byte>}, 35),
        row("rd240", make<rd240>, ledMouseSlots + Slots{of<Byte>}, 35),
        row("rd110", make<rd110>, ledMouseSlots + Slots{of<>, of<To<MouseMacroList>>, of<Byte>}, 37),
        row("glow_hub", make<glow_hub>, glowHubSlots, 24),
        row("glow2", make<glow2>, glowHub2Slots, 18),
        row("tint_hub", make<tint_hub>, tintHubSlots, 11),
        row("playdock", make<playdock>, playDockSlots, 18),
        row("psuCtrl", make<psuCtrl>, psuCtrlSlots, 9),
        row("voltgrid", make<voltgrid>, voltgridSlots, 8),
        row("strandhub", make<strandhub>, strandSlots, 27),
        row("strandhubv2", make<strandhubv2>, strandSlots, 27),
        row("qw210", make<qw210>, keyboardSlots<768>(), 35),
        row("qw220", make<qw220>, keyboardSlots<640>(), 35),
    };
    return rows;
}

const std::vector<SlotCall>& sysInfoSlots()
{
    using Int = std::int32_t;
    static const Slots slots{of<To<SysHardwareNames>>,
                             of<To<Int>, To<Int>>,
                             of<To<Int>, To<Int>>,
                             of<To<Int>>,
                             of<To<Int>>,
                             of<To<Int>>,
                             of<To<Byte>>,
                             of<To<Int>>,
                             of<Calls<SysStatusRecord>>,
                             of<>,
                             of<Calls<Int>>,
                             of<>,
                             of<SysStatusRecord>,
                             of<Calls<SysDetailRecord>>,
                             of<>,
                             of<SysDetailRecord>};
    return slots;
}

bool isResult(std::int64_t value)
{
    constexpr std::int64_t codes[]{0, -1, -2, -3, -4, -5, -6, -7, -9, -10, -11, -12, -13, -15, -98};
    return std::ranges::find(codes, value) != std::end(codes);
}

} // namespace pyrux::test
