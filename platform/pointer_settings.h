#pragma once

#include <optional>

/// @file
/// The desktop's pointer settings. On Linux those of GNOME where the session has that desktop; elsewhere the
/// platform keeps the two values itself, beginning with speed 10 and 550 ms, so that the operations work on a
/// headless machine.

namespace pyrux::platform {

/// The pointer speed on Windows' scale, 1 to 20. No value: it cannot be read.
std::optional<int> pointerSpeed();

/// False: not between 1 and 20, or the system refuses.
bool setPointerSpeed(int speed);

/// The double-click time in ms. No value: it cannot be read.
std::optional<int> doubleClickTimeMs();

/// False: below 1, or the system refuses.
bool setDoubleClickTimeMs(int ms);

} // namespace pyrux::platform
