#pragma once

#include "simulator/models/rd210.h"

#include <map>

/// @file
/// The firmware model of the wired mice with lights.
///
/// They are RD210 and take these commands beside its own; bytes are payload bytes, counted from 0.
///
///     41 02                 the state becomes live, in which the host drives the lights. Taken in any state.
///     42 10 00              acknowledges an event of the kinds profile, effect mode and effect data
///     51/52 28              4: effect mode of the current profile. A mode that the model does not have is
///                           met with silence.
///     51/52 2B .. .. mode   5-12: parameters of an effect: speed, direction, two unused, brightness, red,
///                           green, blue. They come back as they were written.
///     51/52 A8              4-9: colors of the two LEDs in the custom effect
///     C0 F0 .. .. v         live state only: v 1 the frames that follow are shown
///     C0 00 .. .. r g b     frame: all LEDs
///     C0 01 n               frame: n (0 to 15) LEDs from byte 4 on, each index, red, green, blue; LEDs that
///                           are not listed are dark, and those that the mouse does not have are skipped
///
/// Frames are not answered. Effects are settings of a profile: they are saved and reset with it.
///
/// Factory settings: mode 1; white in all effects; the custom colors are black.

namespace pyrux::sim {

class LedMouseFirmware final : public RD210Firmware {
public:
    static constexpr std::size_t ledCount = 2;

    /// Events of RD210, and "effect MODE": the effect button makes MODE current; "brightness VALUE": it sets
    /// the brightness of the current effect; "switch N": profile N becomes current, and the one report tells
    /// that its effect is another too.
    ///
    /// The picture has one zone, "mouse". While the host drives the lights: its last frame; else the current
    /// effect, in its color and brightness or in the custom colors. Mode 254 is dark.
    LedMouseFirmware(const char* name, std::uint16_t pid, std::vector<std::uint8_t> effectModes);

    /// The effects of one profile, as bytes of the reports that carry them.
    struct Effects {
        std::uint8_t mode = 1;
        std::map<std::uint8_t, std::array<std::uint8_t, 8>> parameters; ///< By mode: bytes 5 to 12 of 2B.
        std::array<std::uint8_t, 3 * ledCount> custom{};                ///< Bytes 4 to 9 of A8.

        bool operator==(const Effects&) const = default;
    };

    Effects effects(int profile) const { return copyOf(working.at(std::size_t(profile))); }
    Effects savedEffects(int profile) const { return copyOf(saved.at(std::size_t(profile))); }
    bool driven() const { return copyOf(drivenByHost); } ///< The host drives the lights.

private:
    using AllEffects = std::array<Effects, profileCount>;

    void restart() override;
    void enter(State next) override;
    void resetProfile() override;
    void resetEverything() override;
    void save() override;
    Picture drawn() const override;

    std::vector<Event> effectEvents();
    Effects factoryEffects() const;
    Effects& current() { return working[currentProfile()]; }
    bool hasMode(int mode) const;
    void takeLeds(const Command& command);

    const std::vector<std::uint8_t> modes;
    AllEffects working;
    AllEffects saved;
    bool drivenByHost = false;
    std::array<Light, ledCount> shown{};
};

} // namespace pyrux::sim
