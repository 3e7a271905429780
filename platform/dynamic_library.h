#pragma once

#include <string>
#include <string_view>

/// @file
/// Libraries that are loaded by name where they exist.

namespace pyrux::platform {

/// The file of a library of its own: "tw-hook.dll" on Windows, "libtw-hook.so" on Linux.
std::string libraryFile(std::string_view name);

/// A library, found as the system finds libraries. It stays loaded to the end of the process.
class DynamicLibrary {
public:
    explicit DynamicLibrary(const std::string& file);

    explicit operator bool() const { return handle != nullptr; }

    /// Null: the library is not there or has no such function.
    template <class Function>
    Function* find(const char* name) const
    {
        return reinterpret_cast<Function*>(address(name));
    }

private:
    void* address(const char* name) const;

    void* handle;
};

} // namespace pyrux::platform
