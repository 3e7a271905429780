#pragma once

namespace pyrux::platform {

/// Whether this process was forked off by one that had loaded the library. Only the thread that forked is here
/// then: the library's others are missing, and locks may be held for ever.
bool inForkedChild();

} // namespace pyrux::platform
