#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/hub_records.h"
#include "pyrux/lighting.h"

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// Colors of the 48 LEDs of a port.
struct ArgbCustomBuffer {
    std::uint8_t unused[4]; ///< Neither read nor written.
    RgbColor leds[48];
};

/// An effect that was changed on the device itself. Bytes that a channel does not use are 0.
struct ArgbEffectNotify {
    std::uint8_t channel;     ///< 0 the addressable ports, 1 the plain RGB strip.
    std::uint8_t mode;        ///< As in `ArgbEffectParam`, and so on.
    std::uint8_t colorSource; ///<
    std::uint8_t speed;       ///< From 1.
    std::uint8_t brightness;  ///< Of the ports only.
    std::uint8_t parameter;   ///< Of the ports only; the byte after the brightness.
    std::uint8_t unused[2];   ///< 0
};

#pragma pack(pop)

static_assert(sizeof(ArgbCustomBuffer) == 148 && offsetof(ArgbCustomBuffer, leds) == 4);
static_assert(sizeof(ArgbEffectNotify) == 8 && offsetof(ArgbEffectNotify, channel) == 0);
static_assert(offsetof(ArgbEffectNotify, mode) == 1 && offsetof(ArgbEffectNotify, colorSource) == 2);
static_assert(offsetof(ArgbEffectNotify, speed) == 3 && offsetof(ArgbEffectNotify, brightness) == 4);
static_assert(offsetof(ArgbEffectNotify, parameter) == 5 && offsetof(ArgbEffectNotify, unused) == 6);

/// Callback of `registerNotify`; the record comes by value, as two 32-bit words on a 32-bit system. Runs on
/// the device's reader thread with the notify mutex held: while it runs, the device's replies wait.
using GlowHubNotifyCallback = void (*)(ArgbEffectNotify record);

/// The lighting controller GLOW HUB: four addressable ports with up to 48 LEDs, and one plain RGB strip.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Lights (slots 0 to 4): zones 1 to 4 are the ports, zone 5 the strip. Slot 2 takes a
/// `LightingPortColorOf<5>`. Slot 3 serves the ports only; a LED index without a place in the port's frames
/// (above 61) is ignored. Frames go out at least 10 ms apart between slots 0 and 1 while the host is fast.
/// Wire of slot 0: 80 01 01 02 | 80 01 03 02, then slot 4; of slot 1: 80 01 01 | 80 01 03. A port's frame is
/// three reports: 00 07 port(0 to 3) 30 and LEDs 0 to 19 from P4 | 01 and LEDs 20 to 40 from P1 | 82 and LEDs
/// 41 to 47 from P1; the strip's is 80 05 red green blue. Slot 4 sends dark frames for all.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run. A null pointer
/// gives E_INVALID_SET in a set and E_INVALID_GET in a get, nothing sent; so does a port outside 1 to 4,
/// where nothing else is said. A set does not wait for a reply and gives E_OK once it is written, also when
/// the device did not take it. A get gives E_INVALID_GET when no reply comes, E_NOT_OPEN when the channel
/// closes while it waits; where a reply does not begin as stated, the output stays as it was and the result
/// is E_OK.
///
/// Time: a get waits up to 1 s for each reply, and up to 1 s before that for a device that does not take it.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: bytes are given as payload of a 64-byte report, P0 first, with unnamed bytes 0; mask is 1, 2, 4 or 8
/// for port 1, 2, 3 or 4. "Status" is the request 80 01 05 03, reply 80 01 05 with P4 1: the host drives the
/// strip, P5 1: the host drives the ports. No such reply counts as neither.
struct PYRUX_GLOW_Base : DEV_LIGHTING {
    /// Slot 5. Sets a port's effect. Ends the mode 12 that was set before, for what this object knows, even
    /// where the call is refused.
    /// @param record  `port` is counted down in place once the mode is accepted: passed twice, a record
    ///                names another port
    /// @return E_INVALID_MODE: mode 7 or above 12, `port` as it was; E_INVALID_SET: port outside 1 to 4,
    ///         `port` counted down
    /// @note Wire: 80 01 01 | 80 0B 02 mask mode colorSource speed-1 brightness red green blue; mode 12 (the
    ///       ports follow the mainboard): 80 01 02 alone
    /// @note Waits at most 2 s.
    virtual _error setEffectParameter(ArgbEffectParam* record) = 0;

    /// Slot 6. Reads a port's effect. While the host drives the ports: mode 12, speed 1, brightness 85,
    /// black, and `port` and `colorSource` as they were.
    /// @param record  `port` filled in by the caller; counted down in place before the device is asked
    /// @return E_INVALID_SET: port outside 1 to 4, `port` counted down
    /// @note Wire: status | 80 0B 01 mask, reply 80 0B 03: P4 mode, P5 colorSource, P6 speed-1, P7
    ///       brightness, with colorSource 16 also P8 to P10 the color
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getEffectParameter(ArgbEffectParam* record) = 0;

    /// Slot 7. Sets the colors of a port's LEDs, through the queue. When mode 12 was set before, the ports
    /// are taken back first.
    /// @param port  1 to 4; deliberately unchecked, a number up to 20 goes out. Above: E_INVALID_SET.
    /// @note Wire: 80 01 01 after mode 12; three reports: 00 10 02 port-1 30 with bytes 4 to 62 of the
    ///       buffer from P5 | 01 with bytes 63 to 125 from P1 | 82 with bytes 126 to 147 from P1
    /// @note Waits at most 1 s.
    virtual _error setEffectCustomize(std::uint8_t port, const ArgbCustomBuffer* buffer) = 0;

    /// Slot 8. Reads them; the buffer changes only when all have come.
    /// @return E_INVALID_GET also for a second or third reply with another beginning
    /// @note Wire: 80 10 01 port-1 30, sent three times, for the replies 00 10 03 port-1, 01 and 82, which
    ///       are cut as in slot 7
    /// @note Waits at most 6 s, 1 s for a device that answers nothing.
    virtual _error getEffectCustomize(std::uint8_t port, ArgbCustomBuffer* buffer) = 0;

    /// Slot 9. Sets the strip's effect. `port` does not matter and stays.
    /// @return E_INVALID_PARAM: mode 4 or above 7; modes 0, 1, 2, 3, 5 with a speed outside 1 to 5
    /// @note Wire: modes 0, 1, 2, 3, 5: 80 01 03 | 80 04 mode colorSource speed-1 brightness, with
    ///       colorSource 16 also red green blue; mode 6: 80 01 03 | 80 04 06; mode 7 (the strip follows the
    ///       mainboard): 80 01 04 01
    /// @note Waits at most 2 s.
    virtual _error setRgbLightingEffectParameter(const ArgbEffectParam* record) = 0;

    /// Slot 10. Reads the strip's effect. While the host drives the strip: mode 7, colorSource 0, speed 1,
    /// the rest as it was.
    /// @note Wire: status | 80 0A 01, reply 80 0A 03: P3 mode, P4 colorSource, P5 speed-1, with colorSource
    ///       16 also P6 brightness and P7 to P9 the color
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getRgbLightingEffectParameter(ArgbEffectParam* record) = 0;

    /// Slot 11. Sets how many LEDs a port has; `a` and `b` are the firmware's.
    /// @note Wire: 80 0D 02 mask a b
    /// @note Waits at most 1 s.
    virtual _error setLEDSize(std::uint8_t port, std::uint8_t a, std::uint8_t b) = 0;

    /// Slot 12. Reads them.
    /// @note Wire: 80 0D 01 mask, reply 80 0D 03: P4 a, P5 b
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getLEDSize(std::uint8_t port, std::uint8_t* a, std::uint8_t* b) = 0;

    /// Slot 13. Gives the device an identity of 32 bytes.
    /// @note Wire: 80 0C 02 and the bytes from P3
    /// @note Waits at most 1 s.
    virtual _error setUID(const std::uint8_t* bytes) = 0;

    /// Slot 14. Reads it: 32 bytes.
    /// @note Wire: 80 0C 01, reply 80 0C 03 and the bytes from P3
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getUID(std::uint8_t* bytes) = 0;

    /// Slot 15. Lets the device show itself.
    /// @param value  1 to 5 or 15; else E_INVALID_PARAM
    /// @note Wire: 80 15 5E value
    /// @note Waits at most 1 s.
    virtual _error setIdentify(std::uint8_t value) = 0;

    /// Slot 16. Stores the settings in the device.
    /// @note Wire: 80 12 5A A5
    /// @note Waits at most 1 s.
    virtual _error saveConfig() = 0;

    /// Slot 17. Restores stored settings.
    /// @note Wire: 80 13 55 AA value
    /// @note Waits at most 1 s.
    virtual _error resetConfig(std::uint8_t value) = 0;

    /// Slot 18. Restores factory settings. Unless the ports then stand in mode 12, they are put there and
    /// taken back at once. Always E_OK.
    /// @note Wire: 80 16 56 78, what slot 6 sends for port 1, then 80 01 02 | 80 01 01
    /// @note Waits at most 7 s, 2 s for a device that answers nothing.
    virtual _error resetData() = 0;

    /// Slot 19. Reads the firmware's version.
    /// @note Wire: 80 14 01, reply 80 14 03: P3 low byte, P4 high byte
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getVersion(std::uint16_t* version) = 0;

    /// Slot 20. Sets the mode of the layers.
    /// @note Wire: 80 17 02 value
    /// @note Waits at most 1 s.
    virtual _error setMultilayerMode(std::uint8_t value) = 0;

    /// Slot 21. Reads it.
    /// @note Wire: 80 17 01, reply 80 17 03: P3
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getMultilayerMode(std::uint8_t* value) = 0;

    /// Slot 22. Sets the callback for effects that are changed on the device; a second one replaces the
    /// first.
    virtual _error registerNotify(GlowHubNotifyCallback callback) = 0;

    /// Slot 23. Takes the callback away. After the return no further call comes.
    virtual _error unRegisterNotify() = 0;

    /// Slot 24. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing. Nothing is sent.
    /// @param unplugged  not 0: the device has gone, and calls that wait for a reply end at once; 0: they are
    ///                   given 2 s
    virtual _error exit_device(std::uint8_t unplugged) = 0;

    /// Slot 25. Chooses a port's effect. Unlike slot 5 it accepts mode 7.
    /// @return E_INVALID_MODE: above 12
    /// @note Wire: 80 01 01 | 80 20 mask mode; mode 12: 80 01 02 alone
    /// @note Waits at most 2 s.
    virtual _error setEffectMode(std::uint8_t port, std::uint8_t mode) = 0;

    /// Slot 26. Reads the effect of port 1, whatever `port` says.
    /// @note Wire: as slot 6
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getEffectMode(std::uint8_t port, std::uint8_t* mode) = 0;

    /// Slot 27. Chooses the strip's effect. `port` does not matter.
    /// @return E_INVALID_PARAM: above 7
    /// @note Wire: 80 01 03 | 80 21 00 mode; mode 7: 80 01 04 01
    /// @note Waits at most 2 s.
    virtual _error setRgbEffectMode(std::uint8_t port, std::uint8_t mode) = 0;

    /// Slot 28. Reads the strip's effect. `port` does not matter.
    /// @note Wire: as slot 10
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getRgbEffectMode(std::uint8_t port, std::uint8_t* mode) = 0;

protected:
    ~PYRUX_GLOW_Base() = default;
};

/// Factory of GLOW HUB.
/// @note Waits at most 4 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_GLOW_Base* glow_hub(const char* path);
