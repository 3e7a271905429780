#pragma once

namespace pyrux::fuzz {

/// Keeps a target away from the machine's log, pipes, files and desktop: to be called before anything of the
/// library.
void beAlone();

} // namespace pyrux::fuzz
