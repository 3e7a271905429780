#pragma once

#include <filesystem>

namespace pyrux::platform {

/// The folder of the sockets and lock files that programs meet at: PYRUX_RUNTIME_DIR, else pyrux in
/// XDG_RUNTIME_DIR, else /run/pyrux.
std::filesystem::path runtimeFolder();

/// Whether a user's word counts: the one that the host runs as, and root.
bool isTrusted(unsigned int user);

/// Whether that folder is there and nobody else can put anything in the place of what is in it.
bool isRuntimeFolderTrusted();

/// Makes that folder if it is missing, for its owner alone. False when it cannot be made, or is not to be
/// trusted.
bool makeRuntimeFolder();

} // namespace pyrux::platform
