#include "fuzz/support/device_family.h"

/// The same of the strand controllers.
FUZZ_FAMILY("strand_replies")
