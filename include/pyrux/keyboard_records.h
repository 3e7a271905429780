#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// Records that the keyboards share. Three numberings of keys appear in them: LED numbers (lighting), key
/// indices and codes (key maps and macros; the device's own, passed to it and back unchanged), and USB usages
/// (key events).

/// Events of the keyboards in `NotifyRecord::event`.
enum KeyboardEvent : std::uint32_t {
    KEYBOARD_PROFILE_CHANGED = 0, ///< The profile was changed on the device; value 0.
    KEYBOARD_EFFECT_CHANGED = 1,  ///< The effect was changed on the device; value 0.
    KEYBOARD_KEY_DOWN = 2,        ///< A key went down; value: its USB usage, see `KeyboardUsage`.
    KEYBOARD_KEY_UP = 3,          ///< A key went up; value likewise.
};

/// What `NotifyRecord::value` of a key event holds beside USB usages of the keyboard page.
enum KeyboardUsage : std::uint16_t {
    USAGE_NO_KEY = 0x0000, ///< A place of the key matrix that has no key.
    USAGE_FN = 0x4000,     ///< The Fn key itself; added to the usage of every other key while Fn is held.
};

/// Codes of `MacroEvent` that are no keys.
enum MacroCode : std::uint16_t {
    MACRO_WHEEL_UP = 0x0500,
    MACRO_WHEEL_DOWN = 0x0501,
};

/// What `SystemStatusEffect::statusEffectType` may show.
enum StatusEffectType : std::uint32_t {
    STATUS_CPU_USAGE = 0,
    STATUS_AUDIO_SPECTRUM = 1,
};

/// Effect numbers with a meaning of their own. The others are general effects: the device plays them by
/// itself, and defines what they look like.
enum KeyboardEffect : std::uint8_t {
    EFFECT_STEADY = 0,         ///< One color.
    EFFECT_CUSTOM = 4,         ///< One color per LED: `setCustomEffect`.
    EFFECT_EMPTY = 16,         ///< Nothing, for a layer or a zone without effect.
    EFFECT_RAIN = 17,          ///< A general effect that older devices do not have in their memory.
    EFFECT_MULTILAYER = 18,    ///< Four effects on top of each other: `setMultilayerEffect`.
    EFFECT_MULTIZONE = 19,     ///< Four effects side by side: `setMultizoneEffect`.
    EFFECT_SYSTEM_STATUS = 20, ///< Painted by a host: `setSystemStatusEffect`.
    EFFECT_PREVIEW = 255,      ///< What was previewed last.
};

#pragma pack(push, 1)

/// An element of the list of `setSyncLightingData`.
struct DirectKeyColor {
    std::int32_t key; ///< LED number, from 0.
    std::uint8_t red, green, blue;
    std::uint8_t unused;
};

/// One remapped key. The action is the device's own.
struct KeyMapEntry {
    std::uint8_t key; ///< Index of the key.
    std::uint8_t action[3];
};

/// Actions of all keys, by key index, likewise.
struct KeyMapTable {
    std::uint16_t values[256];
};

/// One event of a macro.
struct MacroEvent {
    std::uint16_t code;  ///< Key code, 10 bits, or a `MacroCode`.
    std::uint8_t kind;   ///< 0 and 1: two key classes; a code of the wheel always reads back with 2.
    std::uint16_t delay; ///< Pause after the event, in the device's unit, which keeps 15 bits.
};

/// Argument of `setMacro` and `getMacro`.
struct MacroRecord {
    std::uint8_t index;       ///< Macro number, 0 to 19.
    std::uint16_t boundKey;   ///< Key that the macro is on, 10 bits.
    char name[16];            ///< Kept in the device as it stands.
    std::uint8_t triggerMode; ///< 0, 1, 2: the firmware's play modes. 3: an empty place.
    std::uint8_t eventCount;  ///< Number of events, at most 198.
    MacroEvent
        events[199]; ///< One place more than `eventCount` can use: `setMacro` writes the end mark there.
};

/// What `getMacroAll` fills: the macros that there are.
struct MacroList {
    std::uint32_t count;    ///< Macros in use, at most 20.
    MacroRecord macros[20]; ///< In the order of their numbers.
};

/// One effect and its parameters. What an effect does not have it neither keeps nor gives back: it reads as
/// 0.
struct EffectRecord {
    std::uint8_t effectId = 0;                       ///< Effect number.
    std::uint8_t red = 255, green = 255, blue = 255; ///< Main color.
    std::uint8_t speed = 3;                          ///< 1 (slow) to 5; any other value acts as 5.
    std::uint8_t option = 0;                         ///< Of effect 1; effects 13 and 14: 4 runs in reverse.
    std::uint8_t brightness = 255;                   ///< 0 to 255.
    std::uint8_t direction = 0;                      ///< A truth value.
    std::uint8_t backRed = 0, backGreen = 0, backBlue = 0; ///< Background of an effect that has one.
    std::uint8_t backBrightness = 255;                     ///< Brightness of the background.
};

/// Argument of `setSystemStatusEffect`.
struct SystemStatusEffect {
    std::uint32_t statusEffectType; ///< A `StatusEffectType`.
    std::uint32_t companion;        ///< Kept with it, without a meaning to the library.
};

#pragma pack(pop)

static_assert(sizeof(DirectKeyColor) == 8 && offsetof(DirectKeyColor, red) == 4);
static_assert(offsetof(DirectKeyColor, green) == 5 && offsetof(DirectKeyColor, blue) == 6);
static_assert(offsetof(DirectKeyColor, unused) == 7);
static_assert(sizeof(KeyMapEntry) == 4 && offsetof(KeyMapEntry, action) == 1);
static_assert(sizeof(KeyMapTable) == 512);
static_assert(sizeof(MacroEvent) == 5 && offsetof(MacroEvent, kind) == 2 && offsetof(MacroEvent, delay) == 3);
static_assert(sizeof(MacroRecord) == 1016);
static_assert(offsetof(MacroRecord, boundKey) == 1 && offsetof(MacroRecord, name) == 3);
static_assert(offsetof(MacroRecord, triggerMode) == 19 && offsetof(MacroRecord, eventCount) == 20);
static_assert(offsetof(MacroRecord, events) == 21);
static_assert(sizeof(MacroList) == 4 + 20 * sizeof(MacroRecord) && offsetof(MacroList, macros) == 4);
static_assert(sizeof(EffectRecord) == 12 && offsetof(EffectRecord, effectId) == 0);
static_assert(offsetof(EffectRecord, red) == 1 && offsetof(EffectRecord, green) == 2);
static_assert(offsetof(EffectRecord, blue) == 3 && offsetof(EffectRecord, speed) == 4);
static_assert(offsetof(EffectRecord, option) == 5 && offsetof(EffectRecord, brightness) == 6);
static_assert(offsetof(EffectRecord, direction) == 7 && offsetof(EffectRecord, backRed) == 8);
static_assert(offsetof(EffectRecord, backGreen) == 9 && offsetof(EffectRecord, backBlue) == 10);
static_assert(offsetof(EffectRecord, backBrightness) == 11);
static_assert(sizeof(SystemStatusEffect) == 8 && offsetof(SystemStatusEffect, companion) == 4);

/// Callback of `registerSystemStatusNotify`: three bytes, red, green and blue, of each LED, by LED number; as
/// many LEDs as the custom effect of the model has. Valid only during the call. Runs on the keyboard's status
/// thread, with the status callback's mutex held, so that after `unRegisterSystemStatusNotify` has returned
/// no further call comes.
using SystemStatusCallback = void (*)(const std::uint8_t* frame);
