#pragma once

#include <filesystem>

namespace pyrux::platform {

/// The folder of data for all users: the known folder C:\ProgramData on Windows; on Linux PYRUX_DATA_DIR,
/// default /var/lib.
std::filesystem::path commonDataFolder();

} // namespace pyrux::platform
