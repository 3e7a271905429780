#include "fuzz/support/device_family.h"

/// The same of the hubs for lights.
FUZZ_FAMILY("hub_replies")
