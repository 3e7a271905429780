#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/lighting.h"

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// An effect of the dock's top and body.
struct PlayDockEffect {
    std::uint8_t zone;             ///< Not sent and not written by a get; FF in a notification.
    std::uint8_t effect;           ///< 0 to 8
    std::uint8_t speed;            ///< 0 to 3, unless `effect` is 0; the wire carries 3 less this.
    std::uint8_t red, green, blue; ///<
    std::uint8_t effectData[16];   ///< Carried through as they stand.
    std::uint8_t effectExtra[4];   ///< Likewise.
    std::uint8_t effectTail;       ///< Likewise.
    std::uint8_t colorCount;       ///< Likewise.
    std::uint8_t unused[3];        ///< Neither read nor written.
    std::uint8_t rate;             ///< 0 to 7, in place of `speed` when `effect` is 0.
};

/// A light that was changed on the device itself. Bytes that are not named with a kind are FF.
struct PlayDockNotify {
    std::uint8_t kind; ///< 0 top and body; 1 bottom, with the color alone.
    /// Of kind 0: all but `unused` and `rate`. Deliberate: `speed` is the byte of the wire plus one, unlike
    /// what a get gives, for effect 0 too.
    PlayDockEffect effect;
};

#pragma pack(pop)

static_assert(sizeof(PlayDockEffect) == 32 && offsetof(PlayDockEffect, zone) == 0);
static_assert(offsetof(PlayDockEffect, effect) == 1 && offsetof(PlayDockEffect, speed) == 2);
static_assert(offsetof(PlayDockEffect, red) == 3 && offsetof(PlayDockEffect, green) == 4 &&
              offsetof(PlayDockEffect, blue) == 5);
static_assert(offsetof(PlayDockEffect, effectData) == 6 && offsetof(PlayDockEffect, effectExtra) == 22);
static_assert(offsetof(PlayDockEffect, effectTail) == 26 && offsetof(PlayDockEffect, colorCount) == 27);
static_assert(offsetof(PlayDockEffect, rate) == 31 && offsetof(PlayDockEffect, unused) == 28);
static_assert(sizeof(PlayDockNotify) == 33 && offsetof(PlayDockNotify, kind) == 0 &&
              offsetof(PlayDockNotify, effect) == 1);

/// Callback of `registerNotify`; the record comes by value. Runs on the device's reader thread with the
/// notify mutex held: while it runs, the device's replies wait.
using PlayDockNotifyCallback = void (*)(PlayDockNotify record);

/// The desk dock PLAY DOCK: three zones of lights and a bottom light.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Lights (slots 0 to 4): zones 1 to 3. Slot 2 takes a `LightingPortColorOf<3>`. Slot 3 takes the color of
/// the last LED that a zone lists, and skips a zone without LEDs. Frames go out at least 32 ms apart from the
/// first slot 0 on. Slot 0 asks 80 01 02 01, slot 1 80 01 02, as the operations below; their result is that
/// of the request, and the dark frames of slot 4 follow slot 0 in any case. Wire of slot 2: 80 09 zone 01 red
/// green blue; of slot 3, deliberate: 80 09 zone 00 red green blue; of slot 4: 80 09 zone.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run. A null pointer
/// or a value out of range gives E_INVALID_SET in a set and E_INVALID_GET in a get, nothing sent. Every
/// operation is a request, whose reply repeats P0 and P1 and has 03 in P2. E_INVALID_GET: no reply, or the
/// device refuses (04 in P2), which is logged with the operation's full name, ", error code = " and P3 in
/// decimal; E_WRONG_REPLY: any other reply; E_NOT_OPEN: the channel closes while the call waits.
///
/// Time: requests go out at least 32 ms after the one before; each waits up to 1 s for its reply, and up to
/// 1 s before that for a device that does not take it.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: bytes are given as payload of a 64-byte report, P0 first, with unnamed bytes 0.
struct PYRUX_PLAY_DOCK_Base : DEV_LIGHTING {
    /// Slot 5. Sets the effect of top and body.
    /// @param effect  `speed` above 3, or with effect 0 `rate` above 7, is out of range
    /// @note Wire: 80 03 02 FF effect (3-speed or rate) red green blue colorCount, P10 effectData, P26
    ///       effectExtra, P30 effectTail
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setEffectParameter(const PlayDockEffect* effect) = 0;

    /// Slot 6. Reads the effect that top and body play; `zone` and `unused` stay, and of `speed` and `rate`
    /// the one that the effect does not have.
    /// @param effect  `effect` under 9, though it does not matter otherwise
    /// @note Wire: 80 03 01 FF, reply: P3 effect, P4 3-speed or rate, P5 to P7 the color, P8 colorCount, P9
    ///       effectData, P25 effectExtra, P29 effectTail
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getEffectParameter(PlayDockEffect* effect) = 0;

    /// Slot 7. Reads the stored settings of an effect.
    /// @param effect  `effect` filled in by the caller, under 9
    /// @note Wire: 80 04 01 FF effect, reply as slot 6
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getAnyEffectParameter(PlayDockEffect* effect) = 0;

    /// Slot 8. Chooses the effect of top and body, 0 to 8. `zone` does not matter.
    /// @note Wire: 80 06 02 FF effect
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setEffectMode(std::uint8_t zone, std::uint8_t effect) = 0;

    /// Slot 9. Reads it. `zone` does not matter.
    /// @note Wire: as slot 6
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getEffectMode(std::uint8_t zone, std::uint8_t* effect) = 0;

    /// Slot 10. Sets the color of the bottom, three bytes.
    /// @note Wire: 80 11 02 FF red green blue
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setBottomEffectParameter(const std::uint8_t* rgb) = 0;

    /// Slot 11. Reads it.
    /// @note Wire: 80 11 01 FF, reply: the color from P3
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getBottomEffectParameter(std::uint8_t* rgb) = 0;

    /// Slot 12. Stores the settings in the device.
    /// @note Wire: 80 B0 02
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error saveConfig() = 0;

    /// Slot 13. Restores stored settings. `value` does not matter.
    /// @note Wire: 80 B1 02
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error resetConfig(std::uint8_t value) = 0;

    /// Slot 14. Restores factory settings.
    /// @note Wire: 80 B6 02
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error resetData() = 0;

    /// Slot 15. Reads the firmware's version.
    /// @note Wire: 80 B4 01, reply: P3 low byte, P4 high byte
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getVersion(std::uint16_t* version) = 0;

    /// Slot 16. Sets the callback for lights that are changed on the device; a second one replaces the first.
    virtual _error registerNotify(PlayDockNotifyCallback callback) = 0;

    /// Slot 17. Takes the callback away. After the return no further call comes.
    virtual _error unRegisterNotify() = 0;

    /// Slot 18. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing. Nothing is sent.
    /// @param unplugged  not 0: the device has gone, and calls that wait for a reply end at once; 0: they are
    ///                   given 2 s
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_PLAY_DOCK_Base() = default;
};

/// Factory of PLAY DOCK.
/// @note Waits at most 4 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_PLAY_DOCK_Base* playdock(const char* path);
