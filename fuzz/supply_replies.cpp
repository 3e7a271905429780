#include "fuzz/support/device_family.h"

/// The same of the power supplies.
FUZZ_FAMILY("supply_replies")
