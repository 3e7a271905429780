#include "keyboard_records.h"
#include "models.h"

#include "pyrux/qw_keyboard.h"

#include <vector>

namespace pyrux::ctl {

namespace {

constexpr std::size_t matrixBytes = 504; // of the custom effect
constexpr std::size_t generalEffects = 18;
constexpr std::size_t layers = 4;
constexpr std::size_t zones = 4;

/// `setSyncLightingData`, whose vector no row of bytes can stand for.
template <class Interface>
Operation keyColorOperation()
{
    return {"setSyncLightingData",
            {{"list", Direction::in, &typeOf<KeyColorList>, {}}},
            [](void* host, std::byte* const* memory) {
                const auto& list = *reinterpret_cast<const KeyColorList*>(memory[0]);
                return std::int32_t(static_cast<Interface*>(host)->setSyncLightingData(
                    std::vector(list.keys, list.keys + list.count)));
            }};
}

/// `setKeyMapping`, whose count is that of the list.
template <class Interface>
Operation keyMappingOperation()
{
    return {"setKeyMapping",
            {{"list", Direction::in, &typeOf<KeyMapEntryList>, {}}},
            [](void* host, std::byte* const* memory) {
                const auto& list = *reinterpret_cast<const KeyMapEntryList*>(memory[0]);
                return std::int32_t(static_cast<Interface*>(host)->setKeyMapping(list.count, list.entries));
            }};
}

template <class Interface, std::size_t zoneBytes>
Model keyboard(std::string_view command, std::string_view summary, Identity identity)
{
    return {
        .command = command,
        .summary = summary,
        .identities = {identity},
        .events = {{KEYBOARD_PROFILE_CHANGED, "profile changed"},
                   {KEYBOARD_EFFECT_CHANGED, "effect changed"},
                   {KEYBOARD_KEY_DOWN, "key down"},
                   {KEYBOARD_KEY_UP, "key up"}},
        .operations =
            {
                OP(setLightingInit),
                OP(setLightingUninit),
                OP(setLightingPortColor, in<3>("rgb")),
                keyColorOperation<Interface>(),
                OP(setLightingTurnOff),
                OP(changeProfileId, in("id")),
                OP(getCurrProfileId, out("id")),
                OP(resetProfile, in("scope")),
                OP(resetPartial, in("part")),
                keyMappingOperation<Interface>(),
                OP(setKeyMappingAll, in("table")),
                OP(getKeyMappingAll, out("table")),
                OP(startRecordMacro),
                OP(stopRecordMacro),
                OP(setMacro, in("record")),
                OP(getMacro, inout("record", {"index"})),
                OP(getMacroAll, out("list")),
                OP(clearMacro, in("index")),
                OP(setEffectMode, in("id")),
                OP(getEffectMode, out("id")),
                OP(setGeneralEffect, in("effect")),
                OP(getGeneralEffect, in("id"), out("effect")),
                OP(getGeneralEffectAll, out<generalEffects>("effects")),
                OP(setCustomEffect, in("effect"), in<matrixBytes>("matrix")),
                OP(getCustomEffect, out("effect"), out<matrixBytes>("matrix")),
                OP(setMultilayerEffect, in<layers>("effects")),
                OP(getMultilayerEffect, out<layers>("effects")),
                OP(setMultizoneEffect, in<zones>("effects"), in<zones * zoneBytes>("zoneMatrix")),
                OP(getMultizoneEffect, out<zones>("effects"), out<zones * zoneBytes>("zoneMatrix")),
                OP(setSystemStatusEffect, in("params")),
                OP(saveConfig),
                OP(exit_device, in("unplugged")),
            },
        .calls = hostCalls<Interface>(),
    };
}

} // namespace

std::vector<Model> models_of::keyboards()
{
    return {
        keyboard<PYRUX_QW210_Base, 192>("qw210", "Keyboard QW210", {"QW205V2", 0x3A7E, 0x0147}),
        keyboard<PYRUX_QW220_Base, 160>("qw220", "Keyboard QW220", {"QW225V2", 0x3A7E, 0x0145}),
    };
}

} // namespace pyrux::ctl
