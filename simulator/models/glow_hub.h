#pragma once

#include "simulator/models/table_firmware.h"

/// @file
/// Firmware model of GLOW_HUB: four addressable ports of 48 LEDs and a plain RGB strip.
///
/// Commands; bytes are payload bytes, counted from 0. A mask has bits 0 to 3 for the ports. Only what is
/// marked with an arrow is answered.
///
///     80 01 01 v            the ports play their own effects (v not 2), or show frames of the host (v 2)
///     80 01 02              the ports follow the board that feeds them: mode 12
///     80 01 03 v            the same as 80 01 01 for the strip
///     80 01 04 01           the strip follows the board: its mode 7
///     80 01 05 03           -> 80 01 05 03 strip ports: 0 own effects, 1 following, 2 frames of the host
///     80 0B 02 mask mode source speed brightness red green blue
///                           effect of the ports in the mask, modes 0 to 11
///     80 0B 01 mask         -> 80 0B 03 mask and the same seven bytes
///     80 20 mask mode       only the mode. Mode 7 shows the custom colors.
///     80 04 mode source speed brightness red green blue, 80 21 00 mode
///                           effect of the strip, modes 0 to 6
///     80 0A 01              -> 80 0A 03 and the seven bytes
///     80 0D 02 mask a b     size of what hangs at a port
///     80 0D 01 mask         -> 80 0D 03 mask a b
///     80 0C 02 .., 80 0C 01 -> 80 0C 03 ..: 32 bytes of the owner's, from byte 3 on
///     80 15 5E v            identify
///     80 12 5A A5           saves the working settings
///     80 13 55 AA v         factory settings, not saved, whatever v is
///     80 16 56 78           factory settings, saved
///     80 14 01              -> 80 14 03 low high: version
///     80 17 02 v, 80 17 01  -> 80 17 03 v: multilayer mode
///     00 10 02 port 30 | 01 | 82
///                           custom colors of a port (0 to 3) from byte 5, 1 and 1 on: 59, 63 and 22 bytes
///     80 10 01 port 30      -> 00 10 03 port 30 | 01 | 82: the same
///     00 07 port 30 | 01 | 82
///                           a frame for a port, from byte 4, 1 and 1 on: 60, 63 and 21 bytes
///     80 05 red green blue  a frame for the strip
///
/// A read with a mask of other than one port is refused: 80 command 04 01. Frames are shown only after 80 01
/// 01 02 and 80 01 03 02.
///
/// Factory settings: mode 0 and a rainbow everywhere, at full brightness.

namespace pyrux::sim {

class GlowHubFirmware final : public TableFirmware {
public:
    static constexpr std::size_t portCount = 4;
    static constexpr std::size_t ledCount = 48;
    static constexpr std::uint16_t version = 0x0203;

    /// Who lights a channel. The values are those of the status report.
    enum class Driver : std::uint8_t { device = 0, board = 1, host = 2 };

    using Effect = std::array<std::uint8_t, 7>; ///< As on the wire, from the mode on.
    using Colors = std::array<std::uint8_t, 3 * ledCount>;

    struct Port {
        Effect effect{0, 0, 2, 0xFF, 0xFF, 0xFF, 0xFF};
        std::array<std::uint8_t, 2> size{1, 48};
        Colors custom{};
        bool operator==(const Port&) const = default;
    };
    struct Settings {
        std::array<Port, portCount> ports{};
        Effect strip{0, 0, 2, 0xFF, 0xFF, 0xFF, 0xFF};
        std::array<std::uint8_t, 32> owner{};
        std::uint8_t multilayer = 0;
        bool operator==(const Settings&) const = default;
    };

    /// Events "effect MODE": the button gives all ports effect 0 to 11; "rgb MODE": it gives the strip effect
    /// 0 to 6. The zones of the picture are "port 1" to "port 4" and "strip".
    GlowHubFirmware();

    Settings settings() const { return copyOf(working); }
    Settings savedSettings() const { return copyOf(saved); }
    Driver portDriver() const { return copyOf(now.ports); }
    Driver stripDriver() const { return copyOf(now.strip); }
    int identified() const { return copyOf(now.identified); } ///< Last value since power-on; 0: none.

private:
    /// What lasts as long as the power.
    struct Session {
        Driver ports = Driver::device;
        Driver strip = Driver::device;
        std::array<Colors, portCount> shown{};
        Light shownStrip;
        int identified = 0;
        Transfer transfer;
        bool transferIsCustom = false;
        std::size_t transferPort = 0;
    };

    std::vector<Row> effectRows();
    std::vector<Row> deviceRows();
    void restart() override;
    Picture drawn() const override;
    void forPorts(std::uint8_t mask, const auto& change);
    Port* onePort(std::uint8_t mask);
    Answer tellCustom(const Command& command) const;
    void takePart(const Command& command);
    void takeTransfer();

    Settings working;
    Settings saved;
    Session now;
};

} // namespace pyrux::sim
