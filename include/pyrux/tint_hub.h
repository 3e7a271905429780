#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/hub_records.h"
#include "pyrux/lighting.h"

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// A color for each of the four ports.
struct TintMultiColor {
    RgbColor ports[4];
    std::uint8_t brightness; ///< Level 1 to 5.
};

/// One layer of a layered effect.
struct TintLayer {
    std::uint8_t mode;
    std::uint8_t speed; ///< Level 1 to 5.
    std::uint8_t red, green, blue;
};

struct TintMultilayer {
    TintLayer layers[4];
    std::uint8_t red, green, blue;
    std::uint8_t last; ///< Carried through.
};

#pragma pack(pop)

static_assert(sizeof(TintMultiColor) == 13 && offsetof(TintMultiColor, ports) == 0 &&
              offsetof(TintMultiColor, brightness) == 12);
static_assert(sizeof(TintLayer) == 5 && offsetof(TintLayer, mode) == 0 && offsetof(TintLayer, speed) == 1);
static_assert(offsetof(TintLayer, red) == 2 && offsetof(TintLayer, green) == 3 &&
              offsetof(TintLayer, blue) == 4);
static_assert(sizeof(TintMultilayer) == 24 && offsetof(TintMultilayer, layers) == 0);
static_assert(offsetof(TintMultilayer, red) == 20 && offsetof(TintMultilayer, green) == 21);
static_assert(offsetof(TintMultilayer, blue) == 22 && offsetof(TintMultilayer, last) == 23);

/// The lighting controller TINT HUB: four plain RGB ports.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Lights (slots 0 to 4): zones 1 to 4 are the ports. Slot 2 takes a `LightingPortColorOf<4>` and writes at
/// once, without a queue; ports that it does not name keep their colors. Slot 3 does nothing and gives E_OK.
/// Wire of slot 0: 41 03 | C0 F0, then slot 4; of slot 1: 41 00; of slot 2: C0 02 with the four colors from
/// P4; of slot 4: C0 02. Before the first slot 0 the frames of slot 2 lack their C0 02.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run. A null pointer
/// gives E_INVALID_SET in a set and E_INVALID_GET in a get, nothing sent. A set does not wait for replies and
/// gives E_OK once it is written, also when the device did not take it. A get gives E_INVALID_GET when no
/// reply comes, E_NOT_OPEN when the channel closes while it waits.
///
/// Time: a get waits up to 1.5 s for each reply, and up to 1 s before that for a device that does not take
/// it.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: bytes are given as payload of a 64-byte report, P0 first, with unnamed bytes 0.
///
/// Levels: 1 to 5. Speeds go out as 60 55 49 44 38 (decimal) in mode 1, 150 140 128 110 104 in mode 2, 70 65
/// 60 55 50 in mode 3 and as they stand in others; brightness goes out as 63 90 127 153 255 in modes 0, 1 and
/// 3, as 63 90 127 153 223 in mode 2, and as it stands in modes above 3.
struct PYRUX_TINT_Base : DEV_LIGHTING {
    /// Slot 5. Sets the effect of all ports and stores it in the device.
    /// @param speed       level 1 to 5
    /// @param brightness  level 1 to 5; any byte in modes above 3
    /// @param rgb         three bytes; mode 2 has colors of its own
    /// @return E_INVALID_PARAM: a level out of range, after 41 01
    /// @note Wire: 41 01 | 51 2B 00 00 mode speed (20 in mode 1, else 00) (19 in mode 3, else FF) FF
    ///       brightness red green blue (FF FF FF in mode 2) | 51 28 00 00 mode | 50 55 | 41 00
    /// @note Waits at most 5 s.
    virtual _error setEffectParameter(std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                                      const std::uint8_t* rgb) = 0;

    /// Slot 6. Reads an effect. A speed without a level comes back as the device keeps it; deliberate: so
    /// does level 4 of mode 2, as 110, while 142 comes back as 4.
    /// @param mode  filled in by the caller with the mode to read; receives the mode that the reply tells of
    /// @return E_INVALID_PARAM: a brightness without a level in modes up to 3, the outputs as they were; E_OK
    ///         with the outputs as they were for a reply with another beginning
    /// @note Wire: 52 2C 00 00 mode, reply 52 2C: P3 mode, P4 speed, P8 brightness, P9 to P11 the color
    /// @note Waits at most 2.5 s, 1.5 s for a device that answers nothing.
    virtual _error getEffectParameter(std::uint8_t* mode, std::uint8_t* speed, std::uint8_t* brightness,
                                      std::uint8_t* rgb) = 0;

    /// Slot 7. Reads which effect the device plays.
    /// @note Wire: 52 28, reply 52 28: P3
    /// @note Waits at most 2.5 s, 1.5 s for a device that answers nothing.
    virtual _error getEffectStandardMode(std::uint8_t* mode) = 0;

    /// Slot 8. Gives each port a color. The device stores it when the object is closed, once.
    /// @param colors  a brightness level outside 1 to 5 goes out as 255
    /// @note Wire: 41 80 | 51 28 00 00 04 | 51 30 | 51 A8 with the twelve bytes from P4 | 51 2C 00 00 04 00
    ///       00 FF FF brightness FF FF FF 00 00 00 and FF to the end
    /// @note Waits at most 5 s.
    virtual _error setPortMultiColor(const TintMultiColor* colors) = 0;

    /// Slot 9. Reads the colors of the ports. Always E_OK: what the device does not tell stays as it was.
    /// @note Wire: 41 80 | 52 A8, reply 52 A8 with the twelve bytes from P3 | 52 2C FF FF 04 and FF to the
    ///       end, reply 52 2C: P8 brightness
    /// @note Waits at most 6 s, 3 s for a device that answers nothing.
    virtual _error getPortMultiColor(TintMultiColor* colors) = 0;

    /// Slot 10. Sets a layered effect and stores it. Always E_OK. Deliberate: a layer whose mode is not above
    /// 3, or whose speed is out of range, is not sent but for its 41 01.
    /// @note Wire: for each layer what slot 5 sends, with brightness FF and 51 2B 01; then 41 01 | 51 A0 01
    ///       00 00 01 00 00 red green blue last | 51 28 00 00 E0 | 50 55 | 41 00
    /// @note Waits at most 25 s.
    virtual _error setEffectMultilayer(const TintMultilayer* effect) = 0;

    /// Slot 11. Closes the object: ends its threads and the channel. Always E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone, nothing is sent to it, and calls that wait for a reply
    ///                   end at once; 0: they are given 2 s, colors of slot 8 are stored (50 55), and the
    ///                   device is told goodbye (41 00)
    /// @note The goodbye waits at most 2 s.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_TINT_Base() = default;
};

/// Factory of TINT HUB.
/// @note Waits at most 4 s, 2 s for a device that answers nothing.
PYRUX_API PYRUX_TINT_Base* tint_hub(const char* path);
