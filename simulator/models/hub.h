#pragma once

#include "simulator/firmware.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

/// @file
/// What the models of the lighting controllers have in common. Bytes are payload bytes, counted from 0.
///
/// Most of them speak in frames `80 command operation ...`: operation 1 reads, 2 writes; a reply has 3 for
/// success, or 4 and a code for a refusal.

namespace pyrux::sim {

/// Base of the lighting controllers: one command at a time, any number of reports for it.
class HubFirmware : public Firmware {
public:
    void output(Bytes payload) final;

    int frames() const; ///< Complete frames of the host that were shown, since power-on.

protected:
    using Payload = std::array<std::uint8_t, 64>;
    using Replies = std::vector<Payload>;

    /// Code of a refusal: a value that the device does not have.
    static constexpr std::uint8_t badValue = 1;

    // Called with `mutex` held.

    /// Takes a command and appends what the device says to it.
    virtual void take(const Payload& command, Replies& replies) = 0;
    void countFrame() { ++frameCount; }
    void forgetFrames() { frameCount = 0; }

    /// `80 command 03`, and `data` from byte `at` on.
    static Payload success(const Payload& command, std::span<const std::uint8_t> data = {},
                           std::size_t at = 3);
    /// `80 command 04 code`.
    static Payload refusal(const Payload& command, std::uint8_t code = badValue);

    mutable std::mutex mutex;

private:
    int frameCount = 0;
};

// Still pictures of what a device plays by itself.

/// A color at a brightness of 0 to 255.
Light dimmed(Light color, int brightness);

/// The colors of the rainbow, from red on.
std::vector<Light> spectrum(std::size_t leds, int brightness);

/// LEDs from bytes red, green, blue.
std::vector<Light> lightsOf(std::span<const std::uint8_t> colors);

} // namespace pyrux::sim
