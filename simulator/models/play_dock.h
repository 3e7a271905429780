#pragma once

#include "simulator/models/table_firmware.h"

/// @file
/// Firmware model of PLAY_DOCK: a desk dock with three zones of light on top and body, and a light at its
/// bottom.
///
/// Commands; bytes are payload bytes, counted from 0. All but the frames are answered: 80 command 03 and what
/// is named after the arrow, or 80 command 04 01 for a value that the device does not have.
///
///     80 01 02 v            v 1: the host drives the zones; 0: the device does
///     80 03 02 FF effect settings
///                           chooses effect 0 to 8 and sets it; 26 bytes from byte 5 on: speed (effect 0:
///                           rate), 0 to 3 (0 to 7), red, green, blue, color count, and 21 bytes that are
///                           only kept
///     80 03 01 FF           -> the effect in byte 3, its settings from byte 4 on
///     80 04 01 FF effect    -> the same of any effect
///     80 06 02 FF effect    chooses an effect
///     80 11 02 FF red green blue, 80 11 01 FF
///                           -> the bottom's color, from byte 3 on
///     80 B0 02              saves the working settings
///     80 B1 02              the saved settings are the working ones again
///     80 B6 02              factory settings, saved
///     80 B4 01              -> version, low and high
///     80 09 zone flag red green blue
///                           a frame for zone 1 to 3; shown while the host drives the zones
///
/// Factory settings: effect 1; every effect is white, as is the bottom.

namespace pyrux::sim {

class PlayDockFirmware final : public TableFirmware {
public:
    static constexpr std::size_t zoneCount = 3;
    static constexpr std::size_t effectCount = 9;
    static constexpr std::uint16_t version = 0x0107;

    using Effect = std::array<std::uint8_t, 26>; ///< As on the wire, after the effect's number.

    struct Settings {
        std::uint8_t effect = 1;
        std::array<Effect, effectCount> effects;
        std::array<std::uint8_t, 3> bottom{0xFF, 0xFF, 0xFF};

        Settings();
        bool operator==(const Settings&) const = default;
    };

    /// Events "effect MODE": the button chooses effect 0 to 8; "speed VALUE": it gives the current effect the
    /// speed 0 to 3 (effect 0: the rate 0 to 7); "bottom RED GREEN BLUE": it gives the bottom a color. The
    /// zones of the picture are "zone 1" to "zone 3" and "bottom", one LED each.
    PlayDockFirmware();

    Settings settings() const { return copyOf(working); }
    Settings savedSettings() const { return copyOf(saved); }
    bool driven() const { return copyOf(drivenByHost); }   ///< The host drives the zones.
    std::uint8_t flag() const { return copyOf(lastFlag); } ///< Byte 3 of the last frame.

private:
    std::vector<Event> buttonEvents();
    void restart() override;
    Picture drawn() const override;
    void takeFrame(const Command& command);
    Answer current() const;

    Settings working;
    Settings saved;
    bool drivenByHost = false;
    std::uint8_t lastFlag = 0;
    std::array<Light, zoneCount> shown{};
};

} // namespace pyrux::sim
