#pragma once

#include "pyrux/led_mouse.h"

/// The wired mouse RD240. Its operations, events and lights are those of `LED_MOUSE_Base`; effect modes: 0,
/// 1, 2, 4, 5, 176, 254.
struct PYRUX_RD240_Base : LED_MOUSE_Base {
    /// Slot 35. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 | 41
    ///                   00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    /// @note The goodbye waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_RD240_Base() = default;
};
