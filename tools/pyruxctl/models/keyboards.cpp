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

/// Requests of the longest previews, whose every part shows the custom effect's colors.
struct Previews {
    int multilayer;
    int multizone;
};

/// Requests that read the effects anew, after a profile change.
constexpr int reading = 56;

template <class Interface, std::size_t zoneBytes>
Model keyboard(std::string_view command, std::string_view summary, Identity identity, Previews previews)
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
                OP(setLightingInit).waiting(0, 3),
                OP(setLightingUninit).waiting(1),
                OP(setLightingPortColor, in<3>("rgb")),
                keyColorOperation<Interface>(),
                OP(setLightingTurnOff).waiting(0, 1),
                OP(changeProfileId, in("id")).waiting(2),
                OP(getCurrProfileId, out("id")).waiting(2),
                OP(resetProfile, in("scope")).waiting(4),
                OP(resetPartial, in("part")).waiting(2),
                keyMappingOperation<Interface>().waiting({256, 0}, {2, 0}),
                OP(setKeyMappingAll, in("table")).waiting({17, 0}, {2, 0}),
                OP(getKeyMappingAll, out("table")).waiting({17, 0}, {2, 0}),
                OP(startRecordMacro).waiting(1),
                OP(stopRecordMacro).waiting({1 + previews.multizone, 0}, {2, 0}),
                OP(setMacro, in("record")).waiting(17),
                OP(getMacro, inout("record", {"index"})).waiting({18, 0}, {2, 0}),
                OP(getMacroAll, out("list")).waiting({362, 0}, {4, 0}),
                OP(clearMacro, in("index")).waiting(40),
                OP(setEffectMode, in("id")).waiting({reading + 2, 0}, {2, 0}),
                OP(getEffectMode, out("id")).waiting({reading + 2, 0}, {2, 0}),
                OP(setGeneralEffect, in("effect")).waiting({reading + 4, 0}, {1, 0}),
                OP(getGeneralEffect, in("id"), out("effect")).waiting({reading, 0}, {1, 0}),
                OP(getGeneralEffectAll, out<generalEffects>("effects")).waiting({reading, 0}, {1, 0}),
                OP(setCustomEffect, in("effect"), in<matrixBytes>("matrix"))
                    .waiting({reading + 12, 0}, {1, 0}),
                OP(getCustomEffect, out("effect"), out<matrixBytes>("matrix")).waiting({reading, 0}, {1, 0}),
                OP(setMultilayerEffect, in<layers>("effects"))
                    .waiting({reading + previews.multilayer, 0}, {1, 0}),
                OP(getMultilayerEffect, out<layers>("effects")).waiting({reading, 0}, {1, 0}),
                OP(setMultizoneEffect, in<zones>("effects"), in<zones * zoneBytes>("zoneMatrix"))
                    .waiting({reading + previews.multizone, 0}, {1, 0}),
                OP(getMultizoneEffect, out<zones>("effects"), out<zones * zoneBytes>("zoneMatrix"))
                    .waiting({reading, 0}, {1, 0}),
                OP(setSystemStatusEffect, in("params")),
                OP(saveConfig).waiting({reading + 59, 0}, {6, 0}),
                OP(exit_device, in("unplugged")).waiting(3),
            },
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 3000, .opening = {.all = {59, 2}, .unanswered = {6, 2}}},
    };
}

} // namespace

std::vector<Model> models_of::keyboards()
{
    return {
        keyboard<PYRUX_QW210_Base, 192>("qw210", "Keyboard QW210", {"QW205V2", 0x3A7E, 0x0147},
                                        {.multilayer = 41, .multizone = 43}),
        keyboard<PYRUX_QW220_Base, 160>("qw220", "Keyboard QW220", {"QW225V2", 0x3A7E, 0x0145},
                                        {.multilayer = 40, .multizone = 42}),
    };
}

} // namespace pyrux::ctl
