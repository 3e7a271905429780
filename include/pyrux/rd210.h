#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/mouse_records.h"
#include "pyrux/records.h"

#include <cstdint>

/// Events of RD210 in `NotifyRecord::event`.
enum RD210Event : std::uint32_t {
    RD210_PROFILE_CHANGED = 0, ///< The profile was changed on the device; value 0.
    RD210_DPI_CHANGED = 1,     ///< The DPI level was changed on the device; value 0.
    RD210_KEY_DOWN = 2,        ///< A button went down; value: its number, 32 more while button 1 is held.
    RD210_KEY_UP = 3,          ///< A button went up; value likewise.
};

/// The wired mouse RD210: five profiles, thirteen buttons, seven DPI levels, a macro memory, surface tuning,
/// no lights.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run, and E_NOT_OPEN
/// when the channel closes while it waits. A set gives E_INVALID_SET for a null pointer or a value out of
/// range, before anything is sent, and when a command has no reply in time; a get gives E_INVALID_GET for the
/// same. Where a get's reply does not begin as asked for, the output stays as it was and the result is E_OK.
///
/// Time: each command waits up to 2 s for its reply, and up to 1 s before that for a device that does not
/// take it.
///
/// Threads: any thread may call; calls may overlap. Changes live in the device's working memory until
/// `saveConfig`.
///
/// Wire: bytes are given as payload of a 64-byte report with unnamed bytes 0. Unless noted, an operation
/// begins with 41 80 (the device accepts configuration), whose reply is waited for but not looked at.
struct PYRUX_RD210_Base {
    /// Slot 0. Makes a profile the current one.
    /// @param profile  0 to 4
    /// @note Wire: 41 80 | 51 00 00 00 profile
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error changeProfileId(std::uint8_t profile) = 0;

    /// Slot 1. Reads the number of the current profile.
    /// @note Wire: 41 80 | 52 00, reply byte 4
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getCurrProfileId(std::uint8_t* profile) = 0;

    /// Slot 2. Restores factory settings.
    /// @param all  not 0: all profiles; 0: the current one, which is then saved
    /// @note Wire: 41 01 | 50 10 00 00 FF | 41 00, or 41 01 | 50 10 00 00 00 | 50 55 | 41 00. The result is
    ///       that of 50 10.
    /// @note Waits at most 12 s, 8 s for a device that answers nothing.
    virtual _error resetProfile(std::uint8_t all) = 0;

    /// Slot 3. Restores a part of the current profile's settings.
    /// @param part  0, 1 (also the wheel's tilt buttons), or 2 (performance; also the system's pointer speed
    ///              and double-click time)
    /// @note Waits at most 24 s, 6 s for a device that answers nothing.
    virtual _error resetPartial(std::uint8_t part) = 0;

    /// Slot 4. Gives a button a function. The button that `setMouseCombo` has made the shift stays as it is,
    /// with E_OK.
    /// @param button  0 to 12
    /// @param code    a code of `MouseKeyCode`, or one of the device's own
    /// @note Waits at most 21 s, 4 s for a device that answers nothing.
    virtual _error setKeyMapping(std::uint8_t button, std::uint16_t code) = 0;

    /// Slot 5. Gives all buttons their functions; a code of `KEY_MACRO` leaves its button alone.
    /// @param map  13 codes
    /// @note Waits at most 126 s, 4 s for a device that answers nothing.
    virtual _error setKeyMappingAll(const std::uint16_t* map) = 0;

    /// Slot 6. Reads the functions of all buttons.
    /// @param map  room for 13 codes
    /// @note Waits at most 168 s, 6 s for a device that answers nothing.
    virtual _error getKeyMappingAll(std::uint16_t* map) = 0;

    /// Slot 7. Makes button 5 the shift of the others, or ends that. Nothing is written when `on` is what the
    /// device has.
    /// @param on  1 or 0
    /// @note Waits at most 18 s, 6 s for a device that answers nothing.
    virtual _error setMouseCombo(std::uint8_t on) = 0;

    /// Slot 8. Tells whether a button is the shift of the others: 1 or 0.
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getMouseCombo(std::uint8_t* on) = 0;

    /// Slot 9. The device reports its keys for a recording by the host.
    /// @note Wire: 41 01 | 51 22 00 00 C0 C0
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error startRecordMacro() = 0;

    /// Slot 10. Ends that.
    /// @note Wire: 41 80
    /// @note Waits at most 3 s, 2 s for a device that answers nothing.
    virtual _error stopRecordMacro() = 0;

    /// Slot 11. Puts a macro on a button. Writes the end event {0, 3, 0xFFFF} after the record's last event.
    /// @note Waits at most 57 s, 4 s for a device that answers nothing.
    virtual _error setMacro(MouseMacroRecord* macro) = 0;

    /// Slot 12. Reads a button's macro; mode 3 says that there is none.
    /// @param macro  `button` filled in by the caller
    /// @note A part of the macro that does not arrive is asked for three times in all.
    /// @note Waits at most 138 s, 4 s for a device that answers nothing.
    virtual _error getMacro(MouseMacroRecord* macro) = 0;

    /// Slot 13. Takes a button's macro away.
    /// @param button  0 to 12
    /// @note Waits at most 12 s, 4 s for a device that answers nothing.
    virtual _error clearMacro(std::uint8_t button) = 0;

    /// Slot 14. Sets the DPI levels and the settings beside them, and the system's pointer speed and
    /// double-click time.
    /// @note Waits at most 18 s, 4 s for a device that answers nothing.
    virtual _error setPerformance(const PerformanceRecord* record) = 0;

    /// Slot 15. Reads what slot 14 sets. Values above 16000 come back rounded down to a multiple of 200.
    /// @note Waits at most 15 s, 4 s for a device that answers nothing.
    virtual _error getPerformance(PerformanceRecord* record) = 0;

    /// Slot 16. Makes a DPI level the current one.
    /// @param level  0 to 6; E_INVALID_SET also when the level is not enabled
    /// @note Waits at most 12 s, 6 s for a device that answers nothing.
    virtual _error changeDpiLevel(std::uint8_t level) = 0;

    /// Slot 17. The device begins to learn the surface.
    /// @note Wire: 41 80 | 80 01 00 00 01
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error startSurfaceLearning() = 0;

    /// Slot 18. Ends that.
    /// @note Wire: 80 01
    /// @note Waits at most 3 s, 2 s for a device that answers nothing.
    virtual _error stopSurfaceLearning() = 0;

    /// Slot 19. Reads the state of the learning.
    /// @note Wire: 41 80 | 80 00, reply byte 4
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getSurfaceLearningStatus(std::uint8_t* status) = 0;

    /// Slot 20. Reads the two surface values of `getPerformance`; when that fails they are 10 and 16.
    /// @note Waits at most 15 s, 4 s for a device that answers nothing.
    virtual _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b) = 0;

    /// Slot 21. Sets the callback for the device's events; a second one replaces the first.
    virtual _error registerNotify(NotifyCallback callback) = 0;

    /// Slot 22. Takes the callback away. After the return no further call comes. May be called from the
    /// callback.
    virtual _error unRegisterNotify() = 0;

    /// Slot 23. Stores the working memory in the device.
    /// @note Wire: 41 01 | 50 55 | 41 00. The result is that of 50 55.
    /// @note Waits at most 9 s, 6 s for a device that answers nothing.
    virtual _error saveConfig() = 0;

    /// Slot 24. Closes the object: ends its threads and the channel. Always E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 | 41
    /// 00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    /// otherwise.
    /// @note The goodbye waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_RD210_Base() = default;
};

/// Factory of RD210.
/// @note Waits at most 7 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_RD210_Base* rd210(const char* path);
