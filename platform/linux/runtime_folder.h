#pragma once

#include <filesystem>

namespace pyrux::platform {

/// The folder of the sockets and lock files that programs meet at: PYRUX_RUNTIME_DIR, else pyrux in
/// XDG_RUNTIME_DIR, else /run/pyrux.
std::filesystem::path runtimeFolder();

/// Makes that folder if it is missing, for its owner alone. False when it cannot be made.
bool makeRuntimeFolder();

} // namespace pyrux::platform
