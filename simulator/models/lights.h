#pragma once

#include "simulator/firmware.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// @file
/// Still pictures of what a device plays by itself.

namespace pyrux::sim {

/// A color at a brightness of 0 to 255.
Light dimmed(Light color, int brightness);

/// The colors of the rainbow, from red on.
std::vector<Light> spectrum(std::size_t leds, int brightness);

/// LEDs from bytes red, green, blue.
std::vector<Light> lightsOf(std::span<const std::uint8_t> colors);

} // namespace pyrux::sim
