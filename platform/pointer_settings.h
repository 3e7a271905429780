#pragma once

#include <optional>

/// @file
/// The desktop's pointer settings. On Linux: GNOME's settings through `gsettings`' library where a session
/// offers them; elsewhere the platform keeps the two values itself, so that the operations work on a headless
/// machine.

namespace pyrux::platform {

/// The pointer speed on Windows' scale, 1 to 20. No value: it cannot be read.
std::optional<int> pointerSpeed();
bool setPointerSpeed(int speed);

/// The double-click time in ms. No value: it cannot be read.
std::optional<int> doubleClickTimeMs();
bool setDoubleClickTimeMs(int ms);

} // namespace pyrux::platform
