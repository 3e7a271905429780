#include "fuzz/support/device_family.h"

/// The same of the wired keyboards.
FUZZ_FAMILY("keyboard_replies")
