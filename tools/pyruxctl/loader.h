#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// @file
/// What loading at run time needs of the operating system.

namespace pyrux::ctl {

/// A library of the system, loaded at run time. It stays loaded to the end of the process: the objects of the
/// PYRUX library do, and its threads may.
class SharedLibrary {
public:
    /// Loads a file. Throws Failure with the system's reason.
    explicit SharedLibrary(const std::filesystem::path& file);

    /// An export by its name, or null.
    void* find(const char* symbol) const;

    const std::filesystem::path& file() const { return name; }

private:
    std::filesystem::path name;
    void* handle;
};

/// The folder of the running program.
std::filesystem::path programFolder();

/// Sets a variable of this process's environment.
void setEnvironment(const char* name, const char* value);

/// Loads the library that the environment variable names, otherwise the first of the candidates that exists.
/// A candidate without a folder is left to the system's own search. Throws Failure, which tells what was
/// tried.
SharedLibrary loadFirst(const char* variable, const std::vector<std::filesystem::path>& candidates);

} // namespace pyrux::ctl
