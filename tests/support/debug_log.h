#pragma once

#include <functional>
#include <string>
#include <vector>

namespace pyrux::test {

/// Forgets the debug output so far.
void forgetDebugOutput();

/// The debug output since the last call, with "#" for the source line that a line of a name ends in:
/// "[PYRUX][SYS]PYRUX::devNums, #".
std::vector<std::string> debugLines();

/// The same, waiting until a line is there that equals `line`. Lines behind it are kept.
std::vector<std::string> debugLinesUntil(const std::string& line);

/// What a call writes to the debug output.
std::vector<std::string> debugLinesOf(const std::function<void()>& call);

} // namespace pyrux::test
