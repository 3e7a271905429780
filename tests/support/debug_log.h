#pragma once

#include <functional>
#include <string>
#include <vector>

namespace pyrux::test {

using Lines = std::vector<std::string>;

/// Forgets the debug output so far.
void forgetDebugOutput();

/// The debug output since `forgetDebugOutput`, a line per text, with "#" for the source line that a name ends
/// in: "[PYRUX][SYS]PYRUX::devNums, #".
Lines debugLines();

/// The same, when a line is there that equals `line` or time has run out.
Lines debugLinesWith(const std::string& line);

/// What a call writes to the debug output.
Lines debugLinesOf(const std::function<void()>& call);

} // namespace pyrux::test
