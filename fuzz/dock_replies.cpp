#include "fuzz/support/device_family.h"

/// The same of the dock.
FUZZ_FAMILY("dock_replies")
