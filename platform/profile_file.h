#pragma once

#include <filesystem>
#include <string>

namespace pyrux::platform {

/// Reads an integer of an INI file in the dialect of the private-profile calls: section and key without
/// regard to case, blanks around "=" dropped, the value's leading decimal digits (after an optional minus
/// sign), else `fallback`. Also `fallback` when file, section or key is missing.
int readProfileInt(const std::filesystem::path& file, const std::string& section, const std::string& key,
                   int fallback);

} // namespace pyrux::platform
