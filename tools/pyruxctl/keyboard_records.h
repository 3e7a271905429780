#pragma once

#include "value.h"

#include "pyrux/keyboard_records.h"

namespace pyrux::ctl {

template <>
struct Layout<DirectKeyColor> {
    using R = DirectKeyColor;
    static constexpr Field fields[]{FIELD(key), FIELD(red), FIELD(green), FIELD(blue)};
};

template <>
struct Layout<KeyMapEntry> {
    using R = KeyMapEntry;
    static constexpr Field fields[]{FIELD(key), FIELD(action)};
};

template <>
struct Layout<KeyMapTable> {
    using R = KeyMapTable;
    static constexpr Field fields[]{FIELD(values)};
};

template <>
struct Layout<MacroEvent> {
    using R = MacroEvent;
    static constexpr Field fields[]{FIELD(code), FIELD(kind), FIELD(delay)};
};

template <>
struct Layout<MacroRecord> {
    using R = MacroRecord;
    static constexpr Field fields[]{FIELD(index), FIELD(boundKey), FIELD(name), FIELD(triggerMode),
                                    FIELD_COUNTED(events, eventCount)};
};

template <>
struct Layout<MacroList> {
    using R = MacroList;
    static constexpr Field fields[]{FIELD_COUNTED(macros, count)};
};

template <>
struct Layout<EffectRecord> {
    using R = EffectRecord;
    static constexpr Field fields[]{
        FIELD(effectId), FIELD(red),       FIELD(green),      FIELD(blue),
        FIELD(speed),    FIELD(option),    FIELD(brightness), FIELD(direction),
        FIELD(backRed),  FIELD(backGreen), FIELD(backBlue),   FIELD(backBrightness),
    };
};

template <>
struct Layout<SystemStatusEffect> {
    using R = SystemStatusEffect;
    static constexpr Field fields[]{FIELD(statusEffectType), FIELD(companion)};
};

/// The argument of `setSyncLightingData` on the command line.
struct KeyColorList {
    std::uint8_t count;
    DirectKeyColor keys[255];
};

template <>
struct Layout<KeyColorList> {
    using R = KeyColorList;
    static constexpr Field fields[]{FIELD_COUNTED(keys, count)};
};

/// The arguments of `setKeyMapping` on the command line.
struct KeyMapEntryList {
    std::uint8_t count;
    KeyMapEntry entries[255];
};

template <>
struct Layout<KeyMapEntryList> {
    using R = KeyMapEntryList;
    static constexpr Field fields[]{FIELD_COUNTED(entries, count)};
};

} // namespace pyrux::ctl
