#include "fuzz/support/device_family.h"

/// Everything that the wired mouse without lights can send, as a reply and by itself.
FUZZ_FAMILY("mouse_replies")
