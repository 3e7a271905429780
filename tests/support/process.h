#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace pyrux::test {

/// What a program that has ended leaves behind.
struct Ended {
    int exitCode = -1;
    std::string output; ///< Standard output and error.
};

/// Runs a program, in the environment of this one.
Ended run(const std::filesystem::path& program, const std::vector<std::string>& arguments);

/// The file of this program.
std::filesystem::path thisProgram();

} // namespace pyrux::test
