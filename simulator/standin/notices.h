#pragma once

#include "simulator/standin/device.h"

#include <string>

/// @file
/// The system's device notices, as the library in this process expects them.

namespace pyrux::sim {

/// Gives notice of one device interface. One system's side each: linux/ and windows/.
void announce(const std::string& path, bool plugged);

/// Gives notice of all interfaces of a device that has come or gone.
inline void announce(const Device& device, bool plugged)
{
    for (const Entry& entry : device.entries)
        announce(entry.path, plugged);
}

} // namespace pyrux::sim
