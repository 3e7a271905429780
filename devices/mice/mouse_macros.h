#pragma once

#include "devices/mice/mouse_protocol.h"
#include "devices/mice/wheel_tilt.h"
#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace pyrux {

/// The macro memory of a mouse: one place per button, which also holds the steps that a button makes. Sends
/// 51 18, 51 19, 52 18, 52 19, 53 00 and 53 10, and the wheel's commands: a tilt of the wheel acts by itself
/// only where it has no macro.
class MouseMacros {
public:
    /// @param closed  whether nobody waits any more: a long read ends then
    MouseMacros(DeviceLink& link, MouseModes& modes, WheelTilt& wheel, const std::atomic<bool>& closed)
        : link(link), modes(modes), wheel(wheel), closed(closed)
    {
    }

    _error startRecordMacro();
    _error stopRecordMacro();
    _error setMacro(MouseMacroRecord* macro);
    _error getMacro(MouseMacroRecord* macro);
    _error getMacroAll(MouseMacroList* list);
    _error clearMacro(std::uint8_t button);

    // For the button map. The device accepts configuration.

    /// What the place of a button makes of it: `KEY_STEP_UP`, `KEY_STEP_DOWN` or `KEY_MACRO`; none: it is
    /// empty, or the device does not tell.
    std::optional<std::uint16_t> codeOf(std::uint8_t button);

    /// Stores a step, `KEY_STEP_UP` or `KEY_STEP_DOWN`, in the place of a button.
    _error writeStep(std::uint8_t button, std::uint16_t code);
    _error remove(std::uint8_t button);

private:
    _error readyWheel(std::uint8_t button, bool step);
    _error write(MouseMacroRecord& macro);
    _error read(MouseMacroRecord& macro);
    _error readInto(MouseMacroRecord& macro, const Reply& place);
    _error readEvents(MouseMacroRecord& macro);
    std::optional<Reply> readChunk(const Report& command);

    DeviceLink& link;
    MouseModes& modes;
    WheelTilt& wheel;
    const std::atomic<bool>& closed;
};

} // namespace pyrux
