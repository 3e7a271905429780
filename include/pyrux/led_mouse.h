#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/lighting.h"
#include "pyrux/mouse_records.h"
#include "pyrux/records.h"

#include <cstdint>

/// @file
/// The wired mice with lights. The models that have nothing of their own, and their factories, stand at the end.

/// Events of these mice in `NotifyRecord::event`.
enum LedMouseEvent : std::uint32_t {
    LED_MOUSE_PROFILE_CHANGED = 0,     ///< The profile was changed on the device; value 0.
    LED_MOUSE_DPI_CHANGED = 1,         ///< The DPI level was changed on the device; value 0.
    LED_MOUSE_EFFECT_MODE_CHANGED = 2, ///< The effect mode was changed on the device; value 0.
    LED_MOUSE_EFFECT_DATA_CHANGED = 3, ///< Parameters of an effect were changed on the device; value 0.
    LED_MOUSE_KEY_DOWN = 4, ///< A button went down; value: its number, 32 more while button 1 is held.
    LED_MOUSE_KEY_UP = 5,   ///< A button went up; value likewise.
};

/// Slots 0 to 34 of the wired mice with lights: five profiles, thirteen buttons, seven DPI levels, a macro
/// memory and surface tuning as RD210 has them, effects that the device plays by itself, and frames of a
/// host.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry. The model's own interface goes on after them.
///
/// Lights (slots 0 to 4): slot 2 is not supported. The zone numbers of slot 3 do not matter; a LED's index
/// goes out as one byte. A frame has places for 15 LEDs: what is listed after them, or has an index above
/// 255, is left out. Frames go out at least 10 ms apart between slots 0 and 1 while the host is fast.
/// Wire of slot 0: 41 02 | C0 F0 00 00 01 | C0 00; slot 1: 41 00; slot 3: C0 01 count 00 and four bytes for
/// each LED, index red green blue; slot 4: C0 00. Slots 0 and 1 give E_NOT_OPEN for a closed channel and
/// E_WRITE_TIMEOUT for a device that does not take their reports.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run, and E_NOT_OPEN
/// when the channel closes while it waits. A set gives E_INVALID_SET for a null pointer or a value out of
/// range, before anything is sent, and when a command has no reply in time; a get gives E_INVALID_GET for the
/// same.
///
/// Time: each command waits up to 2 s for its reply, and up to 1 s before that for a device that does not
/// take it. Frames do not wait.
///
/// Threads: any thread may call; calls may overlap. Changes live in the device's working memory until
/// `saveConfig`.
///
/// Wire: bytes are given as payload of a 64-byte report with unnamed bytes 0. Unless noted, an operation
/// begins with 41 80 (the device accepts configuration), whose reply is waited for but not looked at.
struct LED_MOUSE_Base : DEV_LIGHTING {
    /// Slot 5. Makes a profile the current one.
    /// @param profile  0 to 4
    /// @note Wire: 41 80 | 51 00 00 00 profile
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error changeProfileId(std::uint8_t profile) = 0;

    /// Slot 6. Reads the number of the current profile.
    /// @note Wire: 41 80 | 52 00, reply byte 4
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getCurrProfileId(std::uint8_t* profile) = 0;

    /// Slot 7. Restores factory settings.
    /// @param all  not 0: all profiles; 0: the current one, which is then saved
    /// @note Wire: 41 01 | 50 10 00 00 FF | 41 00, or 41 01 | 50 10 00 00 00 | 50 55 | 41 00. The result is
    ///       that of 50 10.
    /// @note Waits at most 12 s, 8 s for a device that answers nothing.
    virtual _error resetProfile(std::uint8_t all) = 0;

    /// Slot 8. Restores a part of the current profile's settings.
    /// @param part  0, 1 (also the wheel's tilt buttons), or 2 (performance; also the system's pointer speed
    ///              and double-click time)
    /// @note Waits at most 24 s, 6 s for a device that answers nothing.
    virtual _error resetPartial(std::uint8_t part) = 0;

    /// Slot 9. Chooses the effect that the device plays.
    /// @param mode  one of the model's effect modes
    /// @note Wire: 41 80 | 51 28 00 00 mode
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error setEffectMode(std::uint8_t mode) = 0;

    /// Slot 10. Reads which effect the device plays.
    /// @note Wire: 41 80 | 52 28, reply byte 4
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getEffectMode(std::uint8_t* mode) = 0;

    /// Slot 11. Sets the parameters of an effect and chooses it.
    /// @return E_INVALID_SET: a mode that the model does not have, nothing sent; E_INVALID_PARAM: mode 1 or 2
    ///         with a speed outside 1 to 5, after 41 80
    /// @note Wire: 41 80 | 51 2B 00 00 mode speed direction FF FF brightness red green blue | 41 80 |
    ///       51 28 00 00 mode. Speeds 1 to 5 go out as 60 55 49 44 38 (decimal) in mode 1 and as
    ///       50 45 40 35 30 in mode 2; the direction of mode 1 as 160 or 32, of other modes as 0; the
    ///       brightness of mode 2 as its half. Mode 4 has no parameters: 51 2B 00 00 04 00 00 00 FF FF FF FF
    ///       FF.
    /// @note Waits at most 12 s, 4 s for a device that answers nothing.
    virtual _error setGeneralEffect(const MouseEffectRecord* effect) = 0;

    /// Slot 12. Reads the parameters of an effect. The brightness of mode 2 comes back even, and from 254 on
    /// as 255; a speed that the device has from elsewhere comes back as the device keeps it.
    /// @param effect  `mode` filled in by the caller
    /// @return E_INVALID_GET also for a reply that tells of another mode
    /// @note Wire: 41 80 | 52 2B 00 00 mode, reply bytes 4 to 12 as the wire of slot 11; the direction is bit
    ///       7 of byte 6
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getGeneralEffect(MouseEffectRecord* effect) = 0;

    /// Slot 13. Sets the colors of the custom effect and chooses it.
    /// @param colors  six bytes
    /// @note Wire: 41 80 | 51 A8 00 00 and the six bytes | 41 80 | 51 28 00 00 B0
    /// @note Waits at most 12 s, 4 s for a device that answers nothing.
    virtual _error setCustomEffect(const std::uint8_t* colors) = 0;

    /// Slot 14. Reads the colors of the custom effect.
    /// @param colors  room for six bytes
    /// @note Wire: 41 80 | 52 A8, reply bytes 4 to 9
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getCustomEffect(std::uint8_t* colors) = 0;

    /// Slot 15. Gives a button a function. The button that `setMouseCombo` has made the shift stays as it is,
    /// with E_OK.
    /// @param button  0 to 12
    /// @param code    a code of `MouseKeyCode`, or one of the device's own
    /// @note Waits at most 21 s, 4 s for a device that answers nothing.
    virtual _error setKeyMapping(std::uint8_t button, std::uint16_t code) = 0;

    /// Slot 16. Gives all buttons their functions; a code of `KEY_MACRO` leaves its button alone.
    /// @param map  13 codes
    /// @note Waits at most 126 s, 4 s for a device that answers nothing.
    virtual _error setKeyMappingAll(const std::uint16_t* map) = 0;

    /// Slot 17. Reads the functions of all buttons.
    /// @param map  room for 13 codes
    /// @note Waits at most 168 s, 6 s for a device that answers nothing.
    virtual _error getKeyMappingAll(std::uint16_t* map) = 0;

    /// Slot 18. Makes button 5 the shift of the others, or ends that. Nothing is written when `on` is what
    /// the device has.
    /// @param on  1 or 0
    /// @note Waits at most 18 s, 6 s for a device that answers nothing.
    virtual _error setMouseCombo(std::uint8_t on) = 0;

    /// Slot 19. Tells whether a button is the shift of the others: 1 or 0.
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getMouseCombo(std::uint8_t* on) = 0;

    /// Slot 20. The device reports its keys for a recording by the host.
    /// @note Wire: 41 01 | 51 22 00 00 C0 C0
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error startRecordMacro() = 0;

    /// Slot 21. Ends that.
    /// @note Wire: 41 80
    /// @note Waits at most 3 s, 2 s for a device that answers nothing.
    virtual _error stopRecordMacro() = 0;

    /// Slot 22. Puts a macro on a button. Writes the end event {0, 3, 0xFFFF} after the record's last event.
    /// @note Waits at most 57 s, 4 s for a device that answers nothing.
    virtual _error setMacro(MouseMacroRecord* macro) = 0;

    /// Slot 23. Reads a button's macro; mode 3 says that there is none.
    /// @param macro  `button` filled in by the caller
    /// @note A part of the macro that does not arrive is asked for three times in all.
    /// @note Waits at most 138 s, 4 s for a device that answers nothing.
    virtual _error getMacro(MouseMacroRecord* macro) = 0;

    /// Slot 24. Takes a button's macro away.
    /// @param button  0 to 12
    /// @note Waits at most 12 s, 4 s for a device that answers nothing.
    virtual _error clearMacro(std::uint8_t button) = 0;

    /// Slot 25. Sets the DPI levels and the settings beside them, and the system's pointer speed and
    /// double-click time.
    /// @note Waits at most 18 s, 4 s for a device that answers nothing.
    virtual _error setPerformance(const PerformanceRecord* record) = 0;

    /// Slot 26. Reads what slot 25 sets. Values above 16000 come back rounded down to a multiple of 200.
    /// @note Waits at most 15 s, 4 s for a device that answers nothing.
    virtual _error getPerformance(PerformanceRecord* record) = 0;

    /// Slot 27. Makes a DPI level the current one.
    /// @param level  0 to 6; E_INVALID_SET also when the level is not enabled
    /// @note Waits at most 12 s, 6 s for a device that answers nothing.
    virtual _error changeDpiLevel(std::uint8_t level) = 0;

    /// Slot 28. The device begins to learn the surface.
    /// @note Wire: 41 80 | 80 01 00 00 01
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error startSurfaceLearning() = 0;

    /// Slot 29. Ends that.
    /// @note Wire: 80 01
    /// @note Waits at most 3 s, 2 s for a device that answers nothing.
    virtual _error stopSurfaceLearning() = 0;

    /// Slot 30. Reads the state of the learning.
    /// @note Wire: 41 80 | 80 00, reply byte 4
    /// @note Waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error getSurfaceLearningStatus(std::uint8_t* status) = 0;

    /// Slot 31. Reads the two surface values of `getPerformance`; when that fails they are 10 and 16.
    /// @note Waits at most 15 s, 4 s for a device that answers nothing.
    virtual _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b) = 0;

    /// Slot 32. Sets the callback for the device's events; a second one replaces the first. A report of the
    /// device that tells of several changes calls once for each: profile, effect mode, effect data.
    virtual _error registerNotify(NotifyCallback callback) = 0;

    /// Slot 33. Takes the callback away. After the return no further call comes. May be called from the
    /// callback.
    virtual _error unRegisterNotify() = 0;

    /// Slot 34. Stores the working memory in the device.
    /// @note Wire: 41 01 | 50 55 | 41 00. The result is that of 50 55.
    /// @note Waits at most 9 s, 6 s for a device that answers nothing.
    virtual _error saveConfig() = 0;

protected:
    ~LED_MOUSE_Base() = default;
};

/// Slots 0 to 35: the interface of a mouse with nothing of its own.
struct PLAIN_LED_MOUSE_Base : LED_MOUSE_Base {
    /// Slot 35. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it; 0: it is told goodbye (41 01 | 41
    ///                   00)
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    /// @note The goodbye waits at most 6 s, 4 s for a device that answers nothing.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PLAIN_LED_MOUSE_Base() = default;
};

/// RD215 has the effect modes 0, 1, 2, 4, 176, 254.
struct PYRUX_RD215_Base : PLAIN_LED_MOUSE_Base {
protected:
    ~PYRUX_RD215_Base() = default;
};
/// @note Waits at most 7 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_RD215_Base* rd215(const char* path);

/// RD230 has the effect modes 0, 1, 2, 4, 176, 254.
struct PYRUX_RD230_Base : PLAIN_LED_MOUSE_Base {
protected:
    ~PYRUX_RD230_Base() = default;
};
/// @note Waits at most 7 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_RD230_Base* rd230(const char* path);

/// RD240 has the effect modes 0, 1, 2, 4, 5, 176, 254.
struct PYRUX_RD240_Base : PLAIN_LED_MOUSE_Base {
protected:
    ~PYRUX_RD240_Base() = default;
};
/// @note Waits at most 7 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_RD240_Base* rd240(const char* path);
