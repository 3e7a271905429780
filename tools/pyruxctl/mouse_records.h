#pragma once

#include "value.h"

#include "pyrux/mouse_records.h"

namespace pyrux::ctl {

template <>
struct Layout<DpiLevel> {
    using R = DpiLevel;
    static constexpr Field fields[]{FIELD(x), FIELD(y)};
};

template <>
struct Layout<PerformanceRecord> {
    using R = PerformanceRecord;
    static constexpr Field fields[]{
        FIELD(currentLevel), FIELD(levels),       FIELD(levelEnabled),     FIELD(pollingCode),
        FIELD(flagA),        FIELD(flagB),        FIELD(surfaceA),         FIELD(surfaceB),
        FIELD(settingF0),    FIELD(pointerSpeed), FIELD(doubleClickSpeed), FIELD(settingBank),
    };
};

template <>
struct Layout<MouseMacroEvent> {
    using R = MouseMacroEvent;
    static constexpr Field fields[]{FIELD(code), FIELD(kind), FIELD(delay)};
};

template <>
struct Layout<MouseMacroRecord> {
    using R = MouseMacroRecord;
    static constexpr Field fields[]{FIELD(button), FIELD(name), FIELD(mode), FIELD_COUNTED(events, count)};
};

template <>
struct Layout<MouseMacroList> {
    using R = MouseMacroList;
    static constexpr Field fields[]{FIELD_COUNTED(macros, count)};
};

template <>
struct Layout<MouseEffectRecord> {
    using R = MouseEffectRecord;
    static constexpr Field fields[]{FIELD(mode), FIELD(speed), FIELD(direction), FIELD(brightness),
                                    FIELD(red),  FIELD(green), FIELD(blue)};
};

} // namespace pyrux::ctl
