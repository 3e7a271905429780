#include "fuzz/support/device_family.h"

/// The same of the wired mice with lights.
FUZZ_FAMILY("led_mouse_replies")
