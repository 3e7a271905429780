#pragma once

#include <string>

namespace pyrux::platform {

/// The current layout of the X server's keyboard, asked through the X library of this name: the one of the
/// current group among those that the server's "_XKB_RULES_NAMES" lists. Empty when there is none.
std::string serverKeyboardLayout(const char* library);

} // namespace pyrux::platform
