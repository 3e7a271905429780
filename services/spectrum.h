#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace pyrux {

/// Turns a spectrum into bars: bands of frequency, each with the height of its largest bin.
/// @param bins        amplitudes; bin i of n stands for i / n of 22050 Hz, whatever the real sample rate is
/// @param bandCount   number of bars. Below 3 there are no three decades to part: all bars are dark.
/// @param levelCount  heights of a bar
/// @return a level per band: the highest is levelCount - 1; a negative one is a dark bar
std::vector<std::int32_t> spectrumToLevels(std::span<const float> bins, int bandCount, int levelCount);

} // namespace pyrux
