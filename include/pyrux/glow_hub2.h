#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/lighting.h"

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// Four bytes of the ports' effect, which travel by value in one 32-bit argument, `effect` in the lowest
/// byte.
struct GlowHub2Effect {
    std::uint8_t effect; ///< 0 to 8
    std::uint8_t param;  ///< 0 to 7
    std::uint8_t speed;  ///< 1 to 5
    std::uint8_t flag;   ///< 0 or 1
};

/// Effects as they stand on the device. A notification fills in the fields of its kind; the others have their
/// resting values.
struct GlowHub2Notify {
    std::uint8_t kind;     ///< 0 effect of the ports, 1 effect of the strip, 2 audio change.
    std::uint8_t effect;   ///< Of the ports; at rest 0.
    std::uint8_t param;    ///< At rest 0.
    std::uint8_t speed;    ///< From 1; at rest 1.
    std::uint8_t flag;     ///< At rest 0.
    std::uint8_t level;    ///< From 1; at rest 1.
    std::uint8_t rgbMode;  ///< Of the strip; at rest 0.
    std::uint8_t rgbParam; ///< At rest 0.
    std::uint8_t rgbSpeed; ///< From 1; at rest 1.
    std::uint8_t zero;     ///< 0
    std::uint8_t one;      ///< 1
};

#pragma pack(pop)

static_assert(sizeof(GlowHub2Effect) == 4 && offsetof(GlowHub2Effect, effect) == 0);
static_assert(offsetof(GlowHub2Effect, param) == 1 && offsetof(GlowHub2Effect, speed) == 2 &&
              offsetof(GlowHub2Effect, flag) == 3);
static_assert(sizeof(GlowHub2Notify) == 11 && offsetof(GlowHub2Notify, kind) == 0);
static_assert(offsetof(GlowHub2Notify, effect) == 1 && offsetof(GlowHub2Notify, param) == 2);
static_assert(offsetof(GlowHub2Notify, speed) == 3 && offsetof(GlowHub2Notify, flag) == 4);
static_assert(offsetof(GlowHub2Notify, level) == 5 && offsetof(GlowHub2Notify, rgbMode) == 6);
static_assert(offsetof(GlowHub2Notify, rgbParam) == 7 && offsetof(GlowHub2Notify, rgbSpeed) == 8);
static_assert(offsetof(GlowHub2Notify, zero) == 9 && offsetof(GlowHub2Notify, one) == 10);

/// Callback of `registerNotify`; the record comes by value. Runs with the notify mutex held: on the device's
/// reader thread for kinds 0 and 1, on its message thread for kind 2.
using GlowHub2NotifyCallback = void (*)(GlowHub2Notify record);

/// The lighting controller GLOW HUB II: four addressable ports of twelve LEDs, which all play one effect, and
/// one plain RGB strip.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Lights (slots 0 to 4): zones 1 to 4 are the ports, each of one color; zone 5 is the strip. Slot 2 takes a
/// `LightingPortColorOf<5>`. Slot 3 takes the color of the first LED that a zone lists, and skips a zone
/// without LEDs. Frames go out at least 10 ms apart between slots 0 and 1 while the host is fast. Slot 0
/// itself sends only the dark frames of slot 4: a frame is what takes the lights over. Wire of slot 1: 80 16
/// 02 04; a port's frame: 80 16 02 02 port(0 to 3) red green blue; the strip's: 80 16 02 01 00 red green
/// blue.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run. A null pointer
/// gives E_INVALID_SET in a set and E_INVALID_GET in a get, nothing sent; a value out of range gives
/// E_INVALID_SET, nothing sent, but the port of a get E_INVALID_GET. A "request" waits for its reply and
/// gives E_INVALID_GET when none comes, E_NOT_OPEN when the channel closes meanwhile; other sets give E_OK
/// once they are written. Where a get's reply does not begin as stated, the output stays as it was and the
/// result is E_OK.
///
/// Time: a request waits up to 1 s for its reply, and up to 1 s before that for a device that does not take
/// it.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: bytes are given as payload of a 64-byte report, P0 first, with unnamed bytes 0. Every port takes
/// what is sent for one: the mask is always 0F. The device is told 80 16 02 04 when the object is made.
struct PYRUX_GLOW2_Base : DEV_LIGHTING {
    /// Slot 5. Sets the effect of the ports.
    /// @param port   1 to 4
    /// @param level  1 to 4
    /// @note Wire: request 80 0B 02 0F effect param speed-1 flag level-1; the param of effect 3 goes out less
    ///       one
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error setARGBEffectParameter(std::uint8_t port, GlowHub2Effect effect, std::uint8_t level) = 0;

    /// Slot 6. Reads it.
    /// @param port   1 to 4
    /// @param bytes  room for five bytes: effect, param, speed, flag, level, as slot 5 takes them
    /// @note Wire: request 80 0B 01 0F, reply 80 0B 03: P4 effect, P5 param, P6 speed-1, P7 flag, P8 level-1
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getARGBEffectParameter(std::uint8_t port, std::uint8_t* bytes) = 0;

    /// Slot 7. Sets the colors of twelve LEDs, through the queue.
    /// @param port  1 to 4
    /// @param rgb   twelve times red, green, blue
    /// @note Wire: 80 10 02 0F 0C and the 36 bytes from P5
    /// @note Does not wait.
    virtual _error setARGBCustomize(std::uint8_t port, const std::uint8_t* rgb) = 0;

    /// Slot 8. Reads them.
    /// @param port  1 to 4
    /// @param rgb   room for 36 bytes
    /// @note Wire: request 80 10 01 0F 0C, reply 80 10 03 and the colors from P5
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getARGBCustomize(std::uint8_t port, std::uint8_t* rgb) = 0;

    /// Slot 9. Chooses the layer.
    /// @note Wire: 80 17 value
    /// @note Waits at most 1 s.
    virtual _error setLayerSelect(std::uint8_t value) = 0;

    /// Slot 10. Sets the strip's effect.
    /// @param mode   0 to 6
    /// @param param  0 to 4 in mode 0, else 0 to 7
    /// @param speed  1 to 5
    /// @note Wire: request 80 0A 02 mode param speed-1
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error setRGBEffectParameter(std::uint8_t mode, std::uint8_t param, std::uint8_t speed) = 0;

    /// Slot 11. Reads it.
    /// @note Wire: request 80 0A 01, reply 80 0A 03: P3 mode, P4 param, P5 speed-1
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getRGBEffectParameter(std::uint8_t* mode, std::uint8_t* param, std::uint8_t* speed) = 0;

    /// Slot 12. Sets the strip's own color, three bytes, and effect 4, which shows it.
    /// @note Wire: 80 11 02 red green blue | request 80 0A 02 04
    /// @note Waits at most 3 s, 1 s for a device that answers nothing.
    virtual _error setRGBCustomize(const std::uint8_t* rgb) = 0;

    /// Slot 13. Reads that color.
    /// @note Wire: request 80 11 01, reply 80 11 03 and the color from P3
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getRGBCustomize(std::uint8_t* rgb) = 0;

    /// Slot 14. Lets the strip follow a source.
    /// @param flag   0 or 1
    /// @param speed  1 to 5
    /// @note Wire: 80 18 02 source flag speed-1
    /// @note Waits at most 1 s.
    virtual _error setRGBFollowParameter(std::uint8_t source, std::uint8_t flag, std::uint8_t speed) = 0;

    /// Slot 15. Asks for it. The reply is looked at as if slot 9 had asked: a device that answers 80 18 03
    /// leaves the outputs as they were, with E_OK.
    /// @note Wire: request 80 18 01, reply 80 17 03: P3 source, P4 flag, P5 speed-1
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getRGBFollowParameter(std::uint8_t* source, std::uint8_t* flag, std::uint8_t* speed) = 0;

    /// Slot 16. Sets the callback for effects that are changed on the device and for changes of the
    /// computer's sound output; a second one replaces the first.
    virtual _error registerNotify(GlowHub2NotifyCallback callback) = 0;

    /// Slot 17. Takes the callback away. After the return no further call comes.
    virtual _error unRegisterNotify() = 0;

    /// Slot 18. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it, and calls that wait for a reply
    ///                   end at once; 0: they are given 2 s, and the lights are given back (80 16 02 04)
    /// @note The goodbye waits at most 1 s.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_GLOW2_Base() = default;
};

/// Factory of GLOW HUB II.
/// @note Waits at most 4 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_GLOW2_Base* glow2(const char* path);
