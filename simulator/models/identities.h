#pragma once

#include "simulator/firmware.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pyrux::sim {

/// What a device tells of itself whose serial number is its name with "-000001", made once for each product
/// id. Never destroyed: a write may hang in a model to the end of the process.
const Identity& standingIdentity(const std::string& name, std::uint16_t pid, std::uint16_t release,
                                 const std::vector<Collection>& collections, int controlInterface);

} // namespace pyrux::sim
