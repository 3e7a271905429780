#pragma once

#include <cstdint>

namespace pyrux {

/// Index of the middle row: what 0 and unknown values stand for, and what a reset sets.
constexpr std::uint8_t middleSpeed = 6;

/// Sets the system's pointer speed and double-click time by index, 1 to 11.
/// @return false when the system refuses one
bool setSystemPointer(std::uint8_t pointerSpeed, std::uint8_t doubleClickSpeed);

/// The system's pointer speed as an index; a speed between two rows reads as the lower one. 0: it cannot be
/// read.
std::uint8_t systemPointerSpeed();

/// The system's double-click time as an index. 0: it cannot be read.
std::uint8_t systemDoubleClickSpeed();

} // namespace pyrux
