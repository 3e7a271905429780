#pragma once

#include "tools/pyruxctl/value.h"

#include <vector>

namespace pyrux::fuzz {

/// The types of all arguments of all operations that pyruxctl knows.
const std::vector<const ctl::Type*>& argumentTypes();

} // namespace pyrux::fuzz
