#pragma once

#include "pyrux/qw_keyboard.h"

/// The keyboard QW210. Its operations and events are those of `QW_KEYBOARD_Base`. Direct lighting has 139
/// LEDs (0 to 138), a custom effect 168; a zone matrix has 192 bytes per zone, 768 in all.
struct PYRUX_QW210_Base : QW_KEYBOARD_Base {
    /// Slot 35. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 |
    ///                   41 00 | 41 00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    /// @note The goodbye waits at most 12 s, 9 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_QW210_Base() = default;
};
