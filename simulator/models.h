#pragma once

#include "simulator/firmware.h"

#include <memory>
#include <string>
#include <vector>

/// @file
/// The firmware models by name.

namespace pyrux::sim {

/// Makes a firmware model by its name on the command line ("rd210"); null for an unknown name.
std::shared_ptr<Firmware> makeFirmware(const std::string& name);

/// The names of `makeFirmware`.
std::vector<std::string> firmwareNames();

} // namespace pyrux::sim
