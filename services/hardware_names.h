#pragma once

#include "platform/hardware_facts.h"
#include "pyrux/error.h"
#include "pyrux/sys_info.h"

#include <functional>

namespace pyrux {

using AskHardware = std::function<platform::HardwareFacts(platform::Hardware)>;

/// Asks for the parts, all at once, each on a thread of its own, and fills in their names. What fails is told
/// on the standard output and the debug output, and leaves its names empty.
/// @return E_OK; E_INVALID_GET, with nothing filled in: a question could not be put at all
_error collectHardwareNames(const AskHardware& ask, SysHardwareNames& names);

} // namespace pyrux
