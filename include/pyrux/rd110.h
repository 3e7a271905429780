#pragma once

#include "pyrux/led_mouse.h"

/// The wired mouse RD110. Its operations, events and lights are those of `LED_MOUSE_Base`; effect modes: 0,
/// 1, 2, 4, 5, 176, 254.
struct PYRUX_RD110_Base : LED_MOUSE_Base {
    /// Slot 35. Asks whether the device answers.
    /// @return E_OK; E_INVALID_GET: no reply in time
    /// @note Wire: 41 80
    /// @note Waits at most 3 s, 2 s for a device that answers nothing.
    virtual _error test() = 0;

    /// Slot 36. Reads the macros of all buttons that have one, in the order of the buttons.
    /// @param list  receives the macros; the places after the last one keep what they held. When a button
    ///              cannot be read, the result is its error and the list has the macros of those before it.
    /// @note Wire: 41 80, then for each button what slot 23 sends after that
    /// @note Waits at most 1758 s, 4 s for a device that answers nothing.
    virtual _error getMacroAll(MouseMacroList* list) = 0;

    /// Slot 37. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 | 41
    ///                   00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    /// @note The goodbye waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_RD110_Base() = default;
};

/// Factory of RD110.
/// @note Waits at most 7 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_RD110_Base* rd110(const char* path);
