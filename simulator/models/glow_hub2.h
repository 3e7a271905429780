#pragma once

#include "simulator/models/table_firmware.h"

/// @file
/// Firmware model of GLOW_HUB2: four ports of twelve LEDs that play one effect, and a plain RGB strip.
///
/// Commands; bytes are payload bytes, counted from 0. Only what is marked with an arrow is answered;
/// "success" stands for 80 command 03.
///
///     80 0B 02 mask effect param speed flag level
///                           -> success. Effect 0 to 8, param one of eight colors, speed 0 to 4, flag 0 or 1,
///                           level 0 to 3; else refused (80 0B 04 01). Effect 3 takes any param.
///     80 0B 01 mask         -> 80 0B 03 mask and the same five bytes
///     80 10 02 mask 0C ..   the twelve colors of effect 8, from byte 5 on
///     80 10 01 mask 0C      -> 80 10 03 mask 0C and the colors
///     80 17 v               layer
///     80 0A 02 mode param speed
///                           -> success. Mode 0 to 6, param 0 to 7 (mode 0: 0 to 4), speed 0 to 4; else
///                           refused
///     80 0A 01              -> 80 0A 03 and the same three bytes
///     80 11 02 red green blue
///                           the color of mode 4
///     80 11 01              -> 80 11 03 and the color
///     80 18 02 source flag speed
///                           how the strip follows the ports
///     80 18 01              -> 80 18 03 and the same three bytes
///     80 16 02 02 port red green blue, 80 16 02 01 00 red green blue
///                           a frame for a port (0 to 3), for the strip. From the first one on the host
///                           drives the lights, until
///     80 16 02 04           gives them back
///
/// What is set is kept without power. Factory settings: effect 0 in color 0, a rainbow, at full brightness.

namespace pyrux::sim {

class GlowHub2Firmware final : public TableFirmware {
public:
    static constexpr std::size_t portCount = 4;
    static constexpr std::size_t ledCount = 12;

    struct Settings {
        std::array<std::uint8_t, 5> effect{0, 0, 2, 0, 3};
        std::array<std::uint8_t, 3 * ledCount> custom{};
        std::uint8_t layer = 0;
        std::array<std::uint8_t, 3> strip{0, 0, 2};
        std::array<std::uint8_t, 3> stripColor{0xFF, 0xFF, 0xFF};
        std::array<std::uint8_t, 3> follow{};
        bool operator==(const Settings&) const = default;
    };

    /// Events "effect MODE": the button gives the ports effect 0 to 8; "rgb MODE": it gives the strip mode 0
    /// to 6. The zones of the picture are "port 1" to "port 4" and "strip".
    GlowHub2Firmware();

    Settings settings() const { return copyOf(kept); }
    bool driven() const { return copyOf(drivenByHost); } ///< The host drives the lights.

private:
    void restart() override;
    Picture drawn() const override;
    void show(std::size_t place, const Command& command);

    Settings kept;
    bool drivenByHost = false;
    std::array<Light, portCount + 1> shown{}; ///< The strip last.
};

} // namespace pyrux::sim
