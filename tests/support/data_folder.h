#pragma once

#include <filesystem>

namespace pyrux::test {

/// The folder of data for all users, as the library sees it during a test run.
std::filesystem::path dataFolder();

} // namespace pyrux::test
