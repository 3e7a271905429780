#pragma once

#include "command_line.h"
#include "failure.h"

#include <string>
#include <string_view>
#include <vector>

namespace pyrux::ctl {

/// Runs a script: commands of pyruxctl, one a line, in one session, with a few more that a session makes
/// possible. Ends at the first line that fails.
/// @param file  its name, or "-" for the standard input
Exit runScript(Session& session, const std::string& file, const Style& style);

/// Splits a line into words: at blanks outside '...' and "...". Throws UsageError for an open quote.
std::vector<std::string> splitWords(std::string_view line);

} // namespace pyrux::ctl
