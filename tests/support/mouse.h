#pragma once

#include "tests/support/opened_device.h"
#include "tests/support/timing.h"

namespace pyrux::test {

struct RD210Model : ModelOf<&rd210> {};

/// RD210, opened.
using Mouse = Opened<RD210Model>;

} // namespace pyrux::test
