#pragma once

namespace pyrux {

/// The bodies of `pyrux_init` and `pyrux_exit`, after their first log line.
void startLibrary();
void stopLibrary();

} // namespace pyrux
