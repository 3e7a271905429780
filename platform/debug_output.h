#pragma once

#include <string>

namespace pyrux::platform {

/// Hands one text to the system's debug output: OutputDebugStringA on Windows. On Linux PYRUX_DEBUG_OUTPUT,
/// read at the first call, chooses: "syslog" (default), "stderr", "none", or the name of a file that is
/// appended to; one line per text, a line feed at the text's end is not doubled. Never fails, safe from any
/// thread.
void debugOutput(const std::string& text);

} // namespace pyrux::platform
