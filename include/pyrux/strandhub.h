#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/hub_records.h"
#include "pyrux/lighting.h"
#include "pyrux/records.h"

#include <cstddef>
#include <cstdint>

/// @file
/// The strand controllers STRANDHUB and STRANDHUBV2: three ports, each with a plain first-generation strand
/// or a chain of up to five second-generation fans.
///
/// Addresses: a port is 1 to 3, or 255 for all; a sub-port is 0 (the port itself), 1 to 5 (a fan in its
/// chain), or 255 for all. On the wire both are masks: M is bit port - 1, S bit sub-port - 1; 0 stays 0, 255
/// stays FF, and a number after the last bit gives 0.

#pragma pack(push, 1)

/// Parameters of an effect, and the place that they are for.
struct StrandEffectParam {
    std::uint8_t effect;
    std::uint8_t reserved;   ///< Neither read nor written.
    std::uint8_t speed;      ///< From 1 on; the wire carries one less.
    std::uint8_t parameterA; ///< The firmware's, as are its effects; carried as it stands.
    std::uint8_t parameterB; ///< Likewise.
    std::uint8_t red, green, blue;
    std::uint8_t port;
    std::uint8_t subPort;
};

/// One effect as `getAllEffectParameter` reads it.
struct StrandStoredEffect {
    std::uint8_t effect;
    std::uint8_t speed; ///< From 1 on.
    std::uint8_t parameterA;
    std::uint8_t red, green, blue;
    std::uint8_t parameterB;
    std::uint8_t flagA; ///< As the device has it.
};

/// Argument of `getAllEffectParameter`.
struct StrandEffectTable {
    std::uint8_t port;
    std::uint8_t subPort;
    StrandStoredEffect effects[10];
};

/// Argument of `setEffectCustomize` and `getEffectCustomize`. As many LEDs as the zone has count.
struct StrandCustomBuffer {
    std::uint8_t reserved[4]; ///< Neither read nor written.
    RgbColor leds[60];
};

/// The size of a first-generation strand.
struct StrandGen1Size {
    std::uint8_t port;        ///< 1 to 3; on a set also 255.
    std::uint8_t chainLength; ///< Devices, 1 to 10.
    std::uint8_t leds;        ///< LEDs of each device, 4 to 60; no more than 60 in all.
};

/// The fans of a second-generation chain.
struct StrandGen2Size {
    std::uint8_t port;    ///< 1 to 3.
    std::uint8_t count;   ///< Fans, at most 5.
    std::uint8_t leds[5]; ///< LEDs of each fan; 0 after the last one.
};

/// One fan that gets another number.
struct StrandRemapPair {
    std::uint8_t discovered; ///< Sub-port as the controller has found it.
    std::uint8_t wanted;     ///< Sub-port that it is to have.
};

/// Argument of `remapGen2SubPort`. Pairs that are not needed are 0, 0.
struct StrandRemap {
    std::uint8_t port; ///< 1 to 3.
    StrandRemapPair pairs[5];
};

/// Parameters of a port's overlay effect, carried as they stand.
struct StrandOverlayParam {
    std::uint8_t port; ///< 1 to 3.
    std::uint8_t parameters[28];
    std::uint8_t last;
};

#pragma pack(pop)

static_assert(sizeof(StrandEffectParam) == 10 && offsetof(StrandEffectParam, reserved) == 1 &&
              offsetof(StrandEffectParam, speed) == 2);
static_assert(offsetof(StrandEffectParam, parameterA) == 3 && offsetof(StrandEffectParam, parameterB) == 4);
static_assert(offsetof(StrandEffectParam, red) == 5 && offsetof(StrandEffectParam, green) == 6 &&
              offsetof(StrandEffectParam, blue) == 7);
static_assert(offsetof(StrandEffectParam, port) == 8 && offsetof(StrandEffectParam, subPort) == 9);
static_assert(sizeof(StrandStoredEffect) == 8 && offsetof(StrandStoredEffect, speed) == 1);
static_assert(offsetof(StrandStoredEffect, parameterA) == 2 && offsetof(StrandStoredEffect, red) == 3);
static_assert(offsetof(StrandStoredEffect, blue) == 5 && offsetof(StrandStoredEffect, parameterB) == 6);
static_assert(offsetof(StrandStoredEffect, green) == 4 && offsetof(StrandStoredEffect, flagA) == 7);
static_assert(sizeof(StrandEffectTable) == 82 && offsetof(StrandEffectTable, subPort) == 1);
static_assert(offsetof(StrandEffectTable, effects) == 2);
static_assert(sizeof(StrandCustomBuffer) == 184 && offsetof(StrandCustomBuffer, leds) == 4);
static_assert(sizeof(StrandGen1Size) == 3 && offsetof(StrandGen1Size, chainLength) == 1);
static_assert(offsetof(StrandGen1Size, leds) == 2);
static_assert(sizeof(StrandGen2Size) == 7 && offsetof(StrandGen2Size, count) == 1);
static_assert(offsetof(StrandGen2Size, leds) == 2);
static_assert(sizeof(StrandRemap) == 11 && offsetof(StrandRemap, pairs) == 1);
static_assert(sizeof(StrandRemapPair) == 2 && offsetof(StrandRemapPair, wanted) == 1);
static_assert(sizeof(StrandOverlayParam) == 30 && offsetof(StrandOverlayParam, parameters) == 1);
static_assert(offsetof(StrandOverlayParam, last) == 29);

/// Zones that `setLightingPortColor` takes.
using StrandPortColor = LightingPortColorOf<18>;

/// Zone of `DEV_LIGHTING` that stands for everything.
inline constexpr std::uint32_t strandAllZones = 255;

/// The operations of both strand controllers.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Lights (slots 0 to 4): a zone is 10 times the port plus the sub-port, 10 to 16, 20 to 26 or 30 to 36, or
/// 255 for everything; S of digit 6 is 20. Slot 2 takes a `StrandPortColor`: zones of 0 are skipped, and the
/// first other one that is none of these ends the walk, with E_OK. Slot 3 takes digits 7 to 9 too, for which
/// M is FF and S 0; other zones are skipped, and so are LEDs from 60 on. A frame has 60 LEDs. Each zone has a
/// lane of the queue, sub-port + 6 (port - 1); a number outside 0 to 20, as that of zone 255, means lane 0.
/// Nothing paces the queue. Slots 0, 1 and 4 give E_OK: what becomes of their reports shows in the
/// next request.
/// Wire of a frame: 00 09 M S 3C and 59 bytes, 01 09 and 62 bytes, 82 09 and 59 bytes: red green blue of each
/// LED in one stream. Slot 0: 80 01 02 01, then slot 4; slot 1: 80 01 02 00; slot 4: black frames for zones
/// 10 to 15, 20 to 25 and 30 to 35.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run, and E_NOT_OPEN
/// when the channel closes while it waits. A null pointer or a value out of range gives E_INVALID_SET on a
/// set and E_INVALID_GET on a get, before anything is sent. No reply in time gives E_INVALID_GET, on a set
/// too. A device that refuses gives E_INVALID_GET, and its own code goes to the log: the operation's full
/// name, ", error code = " and the code. A reply that does not fit gives E_WRONG_REPLY. Outputs stay as they
/// were then.
///
/// Time: requests go out at least 32 ms apart; each waits up to 1 s for its reply, and up to 1 s before that
/// for a device that does not take it. Frames do not wait.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: bytes are given as payload of a 64-byte report with unnamed bytes 0; P0 is the first. A reply
/// repeats P0 and P1 of its request, P2 is 3, or 4 and the device's code where it refuses. A mask of the
/// request stands again at P3, and data begin at P4; without a mask they begin at P3.
struct STRANDHUB_Operations : DEV_LIGHTING {
    /// Slot 5. Sets the effect of a place.
    /// @note Wire: 80 03 02 M S effect speed-1 A red green blue B
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setEffectParameter(const StrandEffectParam* effect) = 0;

    /// Slot 6. Reads the effect of a place.
    /// @param effect  `port` and `subPort` filled in by the caller
    /// @note Wire: 80 03 01 M S, reply P5 to P11 as the request of slot 5
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getEffectParameter(StrandEffectParam* effect) = 0;

    /// Slot 7. Reads what a place has stored for one effect, whether it plays or not.
    /// @param effect  `effect`, `port` and `subPort` filled in by the caller
    /// @note Wire: 80 04 01 M S effect, reply as slot 6
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getAnyEffectParameter(StrandEffectParam* effect) = 0;

    /// Slot 8. Reads what a place has stored for ten effects.
    /// @param table  `port` and `subPort` filled in by the caller; the effects are written only when both
    ///               replies have come
    /// @note Wire: 80 0C 01 M S, reply from P6 on seven entries of eight bytes: effect speed-1 A red green
    ///       blue B and one more; then 81 0C 01 M S, reply from P5 on three entries
    /// @note Waits at most 4.032 s, 1.032 s for a device that answers nothing.
    virtual _error getAllEffectParameter(StrandEffectTable* table) = 0;

    /// Slot 9. Sets the color of each LED of a custom zone. A zone has as many LEDs as slots 12 and 13 have
    /// told, 4 before that; more than 60 are refused.
    /// @param zone  1 to 3: ports 1 to 3 themselves; 4 to 18: fans 1 to 5 of port 1, then of ports 2 and 3
    /// @return E_INVALID_GET also for an answer whose first byte is not that of the frame
    /// @note Wire: frames n 08 02 M S and up to 59 bytes of colors, in one stream; n counts from 0, with bit
    ///       7 set in the last one. Each is a request of its own, answered before the next goes out.
    /// @note Waits at most 8.032 s, 1.032 s for a device that answers nothing.
    virtual _error setEffectCustomize(std::uint8_t zone, const StrandCustomBuffer* buffer) = 0;

    /// Slot 10. Reads the colors that slot 9 sets. LEDs after those of the zone stay as they were.
    /// @note Wire: for each frame n 08 01 M S, answer the same with the colors from P5 on
    /// @note Waits at most 8.032 s, 1.032 s for a device that answers nothing.
    virtual _error getEffectCustomize(std::uint8_t zone, StrandCustomBuffer* buffer) = 0;

    /// Slot 11. Tells the controller the size of a first-generation strand. Where it is more than 60 LEDs in
    /// all, the LEDs of a device go out as 60 by `chainLength`, rounded down.
    /// @note Wire: 80 06 02 port-1 chain-length LEDs; port 255 goes out as FF. An index, not a mask.
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setGen1Size(const StrandGen1Size* size) = 0;

    /// Slot 12. Reads that size.
    /// @param size  `port`, 1 to 3, filled in by the caller
    /// @note Wire: 80 06 01 M, reply P4 chain length, P5 LEDs
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getGen1Size(StrandGen1Size* size) = 0;

    /// Slot 13. Reads the fans of a port.
    /// @param size  `port`, 1 to 3, filled in by the caller
    /// @return E_INVALID_GET also for a reply that tells of more than five fans
    /// @note Wire: 80 07 01 M, reply P4 count, P5 to P9 LEDs of each fan
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getGen2Size(StrandGen2Size* size) = 0;

    /// Slot 14. Gives the fans of a port other numbers.
    /// @param remap  `port` 1 to 3; the pairs are not checked
    /// @note Wire: 80 0D 02 M and five pairs of S, discovered and wanted
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error remapGen2SubPort(const StrandRemap* remap) = 0;

    /// Slot 15. Stores an id of 32 bytes for a port.
    /// @note Wire: 80 B5 02 M and the bytes
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setUID(std::uint8_t port, const std::uint8_t* id) = 0;

    /// Slot 16. Reads an id of 32 bytes.
    /// @note Wire: 80 B5 01, reply from P3 on
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getUID(std::uint8_t* id) = 0;

    /// Slot 17. Lets a place show itself.
    /// @param port  1 to 3 or 255
    /// @note Wire: 80 0A 02 M S
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setIdentify(std::uint8_t port, std::uint8_t subPort) = 0;

    /// Slot 18. Stores the settings in the device.
    /// @note Wire: 80 B0 02
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error saveConfig() = 0;

    /// Slot 19. Restores factory settings.
    /// @param value  0 to 2
    /// @note Wire: 80 B1 02 value
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error resetConfig(std::uint8_t value) = 0;

    /// Slot 20. Clears the device's data.
    /// @note Wire: 80 B6 02
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error resetData() = 0;

    /// Slot 21. Reads the firmware's version.
    /// @note Wire: 80 B4 01, reply P3 low, P4 high byte
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getVersion(std::uint16_t* version) = 0;

    /// Slot 22. Sets what is plugged into a port, and has the controller look at it again as slot 24 does,
    /// unless the device refuses the type. The result is that of the type alone.
    /// @param port  1 to 3 or 255
    /// @param type  the firmware's
    /// @note Wire: 80 0B 02 M type | 80 B2 02 M
    /// @note Waits at most 4.032 s, 1.032 s for a device that answers nothing.
    virtual _error setARGBType(std::uint8_t port, std::uint8_t type) = 0;

    /// Slot 23. Reads what is plugged into a port.
    /// @param port  1 to 3 or 255
    /// @note Wire: 80 0B 01 M, reply P4
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getARGBType(std::uint8_t port, std::uint8_t* type) = 0;

    /// Slot 24. Has the controller look again at what is plugged into a port.
    /// @param port  1 to 3 or 255; others give E_INVALID_GET
    /// @note Wire: 80 B2 02 M
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error refreshPortInfo(std::uint8_t port) = 0;

    /// Slot 25. Stores a callback. The device has no events: it is never called.
    virtual _error registerNotify(NotifyCallback callback) = 0;

    /// Slot 26. Takes the callback away.
    virtual _error unRegisterNotify() = 0;

    /// Slot 27. Closes the object: ends its threads and the channel; frames that wait are dropped. Always
    /// E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone. No goodbye is sent in either case.
    /// @note Calls that wait for a reply on other threads are given 2 s with `unplugged` 0, and end at once
    ///       otherwise.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

    /// Slot 28. Sets the multilayer mode.
    /// @note Wire: 80 C0 02 value
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setMultilayerMode(std::uint8_t value) = 0;

    /// Slot 29. Reads the multilayer mode.
    /// @note Wire: 80 C0 01, reply P3
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getMultilayerMode(std::uint8_t* value) = 0;

    /// Slot 30. Changes the effect of a place; what the place has stored for that effect comes into force.
    /// @param place   `port` and `subPort` filled in by the caller; gets the effect and its parameters
    /// @note Wire: 80 04 01 M S effect, reply as slot 6 | 80 03 02 ... as slot 5
    /// @note Waits at most 4.032 s, 1.032 s for a device that answers nothing.
    virtual _error setEffectMode(StrandEffectParam* place, std::uint8_t effect) = 0;

    /// Slot 31. Reads as slot 6, and gives the effect apart too.
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getEffectMode(StrandEffectParam* place, std::uint8_t* effect) = 0;

    /// Slot 32. Sets the overlay mode.
    /// @note Wire: 80 11 02 value 32
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setOverlayMode(std::uint8_t value) = 0;

    /// Slot 33. Reads the overlay mode.
    /// @note Wire: 80 11 01, reply P3
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getOverlayMode(std::uint8_t* value) = 0;

    /// Slot 34. Sets a port's overlay effect, and the overlay mode to 1 before; when that fails the call ends
    /// with its result.
    /// @note Wire: 80 11 02 01 32 | 80 10 02 M, 28 parameters, and the last byte at P32
    /// @note Waits at most 4.032 s, 1.032 s for a device that answers nothing.
    virtual _error setOverlayEffectParameter(const StrandOverlayParam* overlay) = 0;

    /// Slot 35. Reads a port's overlay effect.
    /// @param overlay  `port`, 1 to 3, filled in by the caller
    /// @note Wire: 80 10 01 M, reply P4 to P32 as the request of slot 34
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error getOverlayEffectParameter(StrandOverlayParam* overlay) = 0;

    /// Slot 36. Reads the overlay effects of ports 1 to 3, the port numbers included. The first request that
    /// fails ends the call with its result.
    /// @param overlays  room for three records
    /// @note Wire: slot 35 for each port
    /// @note Waits at most 6.032 s, 1.032 s for a device that answers nothing.
    virtual _error getOverlayEffectParameterAll(StrandOverlayParam* overlays) = 0;

protected:
    ~STRANDHUB_Operations() = default;
};

/// The strand controller STRANDHUB.
struct PYRUX_STRANDHUB_Base : STRANDHUB_Operations {
protected:
    ~PYRUX_STRANDHUB_Base() = default;
};
/// @note Does not wait.
PYRUX_API PYRUX_STRANDHUB_Base* strandhub(const char* path);

/// The strand controller STRANDHUBV2, function for function the same.
struct PYRUX_STRANDHUBV2_Base : STRANDHUB_Operations {
protected:
    ~PYRUX_STRANDHUBV2_Base() = default;
};
/// @note Does not wait.
PYRUX_API PYRUX_STRANDHUBV2_Base* strandhubv2(const char* path);
