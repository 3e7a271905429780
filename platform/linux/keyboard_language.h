#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pyrux::platform {

/// The layout of a group in what an X server tells of its keyboard: rules, model, layouts, variants and
/// options, each ended by a NUL. The layouts stand between commas, one for each group.
std::string layoutOfGroup(std::string_view rulesNames, std::size_t group);

/// The current layout of the X server's keyboard, asked through the X library of this name: the one of the
/// current group among those that the server's "_XKB_RULES_NAMES" lists. Empty when there is none.
std::string serverKeyboardLayout(const char* library);

} // namespace pyrux::platform
