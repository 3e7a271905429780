#pragma once

namespace pyrux::platform {

/// Keeps the library loaded to the end of the process: objects that it has handed out and threads that hang
/// in the system outlive every unloading.
void keepLoaded();

} // namespace pyrux::platform
