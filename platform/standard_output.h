#pragma once

#include <string_view>

namespace pyrux::platform {

/// Writes a line, which brings no line end, to the standard output at once, after what the host has put into
/// the C library's stream. A reader that does not read is waited for at most 100 ms; then the line is lost,
/// and so are those after it, without a wait, until there is room. A reader that has gone raises no signal.
/// Safe from any thread.
void standardOutput(std::string_view line);

} // namespace pyrux::platform
