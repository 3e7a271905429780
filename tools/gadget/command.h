#pragma once

#include "served_model.h"

#include <string>
#include <string_view>

/// @file
/// The commands that a running pyrux-gadget takes, one per line.

namespace pyrux::gadget {

struct Answer {
    std::string text; ///< "ok", "ok TEXT" or "error TEXT"; empty for a line without a command.
    bool quit = false;
};

/// Carries a command out. `#` begins a comment.
Answer execute(std::string_view line, ServedModel& device);

} // namespace pyrux::gadget
