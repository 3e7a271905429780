#pragma once

#include "simulator/models/table_firmware.h"

#include <map>

/// @file
/// Firmware model of TINT_HUB: four plain RGB ports. Commands begin with a letter: A session, P store, Q
/// write, R read.
///
/// Commands; bytes are payload bytes, counted from 0. Only the reads are answered.
///
///     41 session            00 none, 01 effect, 03 host, 80 color
///     51 28 .. .. mode      effect session or color session: the mode that is played; 04 the four colors,
///                           E0 the layers
///     51 2B .. layer .. mode speed a b c brightness red green blue
///                           (layer in byte 2, mode in byte 4) the same sessions: parameters of a mode, or
///                           with layer 1 one of the four layers, in turn
///     51 30                 the colors follow
///     51 A8                 4 to 15: the four colors, after 51 30
///     51 2C .. .. 04        parameters of mode 4, placed as in 51 2B
///     51 A0 .. 01           effect session: ends the layers; 8 to 11 are kept
///     50 55                 stores mode, parameters, colors and layers
///     52 2C .. .. mode      -> 52 2C 00 and bytes 4 to 12 of 51 2B, from byte 3 on
///     52 28                 -> 52 28 00 and the mode
///     52 A8                 -> 52 A8 00 and the colors
///     C0 F0                 host session: frames are shown
///     C0 02                 4 to 15: a frame, four ports of red, green, blue
///
/// Factory settings: mode 0; every mode is white at full brightness, as are the four colors.

namespace pyrux::sim {

class TintHubFirmware final : public TableFirmware {
public:
    static constexpr std::size_t portCount = 4;

    enum Session : States { none = 1, effect = 2, host = 4, color = 8 };

    using Effect = std::array<std::uint8_t, 8>; ///< Bytes 5 to 12 of 51 2B.
    using Colors = std::array<std::uint8_t, 3 * portCount>;

    /// A mode and its parameters: bytes 4 to 12 of 51 2B.
    struct Layer {
        std::uint8_t mode = 0;
        Effect effect{};
        bool operator==(const Layer&) const = default;
    };

    struct Settings {
        std::uint8_t mode = 0;
        std::map<std::uint8_t, Effect> effects; ///< Of the modes that were ever written.
        Colors colors;
        std::vector<Layer> layers; ///< The newest four.
        std::array<std::uint8_t, 4> layersEnd{};

        Settings() { colors.fill(0xFF); }
        Effect effect(std::uint8_t of) const;
        bool operator==(const Settings&) const = default;
    };

    static constexpr Effect factoryEffect{0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

    /// There are no events. The zones of the picture are "port 1" to "port 4", one LED each.
    TintHubFirmware();

    Settings settings() const { return copyOf(working); }
    Settings savedSettings() const { return copyOf(saved); }
    Session session() const { return Session(stateNow()); }
    bool driven() const { return copyOf(framesShown); } ///< The host drives the ports.
    int stores() const { return copyOf(storeCount); }   ///< Since power-on.

private:
    void restart() override;
    Picture drawn() const override;
    void enter(Session next);
    void addLayer(const Command& command);

    Settings working;
    Settings saved;
    bool framesShown = false;
    bool colorsFollow = false;
    int storeCount = 0;
    Colors shown{};
};

} // namespace pyrux::sim
