#pragma once

#include "simulator/models/table_firmware.h"

/// @file
/// Firmware models of the strand controllers STRANDHUB and STRANDHUBV2: three ports, each with a
/// first-generation strand or a chain of up to five fans.
///
/// Commands; bytes are payload bytes, counted from 0. M has bits 0 to 2 for the ports, S bits 0 to 4 for the
/// fans of a chain; FF is all, S 0 the port itself. Each is answered: `80 command 03` with what is behind the
/// arrow, or `80 command 04 code`. A question about several places is answered for the first one.
///
///     80 01 02 v            v 1 the host drives the lights, 0 the device does
///     80 03 02 M S effect speed A red green blue B
///                           effect 0 to 9 comes into force with these, and the place keeps them
///     80 03 01 M S          -> M S and the same seven bytes
///     80 04 01 M S effect   -> the same, as the place keeps them for an effect
///     80 0C 01 M S          -> M S 0A and the entries of effects 0 to 6: effect, six parameters, 0
///     81 0C 01 M S          -> M S and the entries of effects 7 to 9
///     80 06 02 port chain leds
///                           size of a strand: port 0 to 2 or FF, 1 to 10 devices, 4 to 60 LEDs,
///                           60 in all at most
///     80 06 01 M            -> M chain leds
///     80 07 01 M            -> M count and the LEDs of each fan
///     80 0D 02 M (old new) x 5
///                           fans, as bits of S, get other numbers; 0 0 is no pair
///     80 B5 02 M ..         32 bytes of the owner's, from byte 4 on
///     80 B5 01              -> the same, from byte 3 on
///     80 0A 02 M S          identify
///     80 B0 02              saves the working settings
///     80 B1 02 v            factory settings, not saved: v 0 all, 1 effects and colors, 2 sizes,
///                           types and numbers
///     80 B6 02              factory settings, saved
///     80 B4 01              -> low high: version
///     80 0B 02 M type       what hangs at a port: 1 a strand, 2 fans
///     80 0B 01 M            -> M type
///     80 B2 02 M            looks which fans are there; else that is done only when power comes
///     80 C0 02 v            multilayer mode
///     80 C0 01              -> v
///     80 11 02 v 32         overlay mode
///     80 11 01              -> v
///     80 10 02 M ..         29 bytes of a port's overlay, from byte 4 on
///     80 10 01 M            -> M and the same
///     n 08 02 M S ..        custom colors, 59 bytes a report from byte 5 on; n counts from 0, with 80
///                           in the last
///     n 08 01 M S           -> M S and 59 bytes
///     00 09 M S 3C | 01 09 | 82 09
///                           a frame of 60 LEDs, from byte 5, 2 and 2 on. Not answered.
///
/// What is written to a port itself is written to its fans too; a frame for the port itself runs through the
/// chain.
///
/// Factory settings: fans at port 1, strands of 2 times 20 and 1 time 30 LEDs at ports 2 and 3; effect 0, a
/// rainbow. Effect 9 shows the custom colors, the others their color. Three fans are plugged into port 1.

namespace pyrux::sim {

class StrandFirmware final : public TableFirmware {
public:
    /// Events "attach PORT LEDS": a fan more at the end of a port's chain; "detach PORT": the last fan is
    /// pulled off. The zones of the picture are "port 1" to "port 3" for strands, "port 1 fan 1" and so on
    /// for fans.
    StrandFirmware(const char* name, std::uint16_t pid);

    static constexpr std::size_t portCount = 3;
    static constexpr std::size_t fanCount = 5;
    static constexpr std::size_t effectCount = 10;
    static constexpr std::size_t ledCount = 60;
    static constexpr std::uint16_t version = 0x0105;

    /// Codes of refusals.
    enum Refusal : std::uint8_t {
        badPort = 1,
        badSubPort = 2,
        badEffect = 3,
        badSize = 4,
        badType = 5,
        badPart = 6
    };

    enum Type : std::uint8_t { strand = 1, fans = 2 };

    using Parameters = std::array<std::uint8_t, 6>; ///< Speed, A, red, green, blue, B, as on the wire.
    using Colors = std::array<std::uint8_t, 3 * ledCount>;

    /// A place that has an effect of its own.
    struct Zone {
        std::uint8_t effect = 0;
        std::array<Parameters, effectCount> effects{};
        Colors custom{};
        bool operator==(const Zone&) const = default;
    };
    struct Port {
        std::uint8_t type = strand;
        std::uint8_t chainLength = 1;
        std::uint8_t leds = 30;
        std::array<std::uint8_t, fanCount> order{0, 1, 2, 3, 4}; ///< By number: the place in the chain.
        std::array<Zone, 1 + fanCount> zones{};                  ///< The port itself, then its fans.
        std::array<std::uint8_t, 29> overlay{};
        bool operator==(const Port&) const = default;
    };
    struct Settings {
        std::array<Port, portCount> ports{};
        std::array<std::uint8_t, 32> owner{};
        std::uint8_t multilayer = 0;
        std::uint8_t overlayMode = 0;
        bool operator==(const Settings&) const = default;
    };

    Settings settings() const { return copyOf(working); }
    Settings savedSettings() const { return copyOf(saved); }
    bool driven() const { return copyOf(now.drivenByHost); } ///< The host drives the lights.
    /// M and S of the last identify since power-on.
    std::array<std::uint8_t, 2> identified() const { return copyOf(now.identified); }

private:
    using Chain = std::vector<std::uint8_t>; ///< LEDs of each fan.
    using Ports = std::vector<std::size_t>;
    using Zones = std::vector<Zone*>;

    /// Reports that belong together, for the places of two masks.
    struct PlaceTransfer : Transfer {
        std::uint8_t ports = 0, subPorts = 0;
    };

    /// What lasts as long as the power.
    struct Session {
        bool drivenByHost = false;
        PlaceTransfer custom;
        PlaceTransfer frame;
        std::array<std::array<Colors, 1 + fanCount>, portCount> shown{};
        std::array<std::uint8_t, 2> identified{};
    };

    std::vector<Row> effectRows();
    std::vector<Row> portRows();
    std::vector<Row> deviceRows();
    void restart() override;
    Picture drawn() const override;

    /// Handlers that get the ports, or the zones, that a command names; none is refused.
    template <class Act>
    auto onPorts(Act act);
    template <class Act>
    auto onZones(Act act);

    Answer tellEffects(const Command& command, const Zone& zone) const;
    Answer takeSize(const Command& command);
    Answer takeNumbers(const Command& command, const Ports& ports);
    Answer takeCustom(const Command& command, const Zones& zones);
    Answer tellCustom(const Command& command, const Zones& zones);
    void takeFrame(const Command& command);
    void show(const PlaceTransfer& frame);
    void restore(std::uint8_t what);
    void discover(const Ports& ports);

    static Ports portsOf(std::uint8_t mask);
    static std::vector<std::size_t> subPortsOf(std::uint8_t mask);
    Zones zonesOf(std::uint8_t ports, std::uint8_t subPorts);
    std::vector<std::uint8_t> fanLeds(std::size_t port) const;

    Settings working;
    Settings saved;
    std::array<Chain, portCount> attached;
    std::array<Chain, portCount> discovered;
    Session now;
};

} // namespace pyrux::sim
