#pragma once

#include "tests/support/scripted_device.h"

#include <array>
#include <string>

/// @file
/// Effect memories of the keyboards, byte for byte.

namespace pyrux::test {

struct EffectImage {
    std::array<const char*, 21> descriptors; ///< Frames, extra words, header pointer, word.
    std::array<const char*, 33> pages;       ///< Without the zeros at their ends.
};

/// All effects white on black at full brightness, speed 3, option and direction 0; layers and zones empty,
/// custom colors black. The masks of QW220 are shorter.
extern const EffectImage factoryImage210, factoryImage220;

/// What a keyboard with an empty memory is given: all records 0 but those that the rule for a missing rain
/// effect names.
extern const EffectImage bareImage210, bareImage220;

/// Effect i with the color {10 + i, 20 + i, 30 + i}, speed 1 + i % 5, brightness A0 + i, direction i % 2,
/// background {40 + i, 50 + i, 60 + i} and its brightness 70 + i; option 7 of effect 1, 4 of 13. Layers 0, 2,
/// 16, 13; zones 0, 5, 16, 9; zone z has the LEDs z, z + 4 and so on. Byte k of the custom colors is
/// 7 * k + 3. Effect 20 is its number alone.
extern const EffectImage changedImage210, changedImage220;

/// Lets a device hold an image: it answers the reads of the effect memory with it.
void holdImage(ScriptedDevice& device, const EffectImage& image);

/// The reports that write it: 56 15 for each effect, 56 21 for each page.
std::string storingOf(const EffectImage& image);

/// The reports that read any: 56 14 for each effect, 56 20 for each page.
std::string readingOfImage();

} // namespace pyrux::test
