#include "platform/dynamic_library.h"

#include <windows.h>

namespace pyrux::platform {

std::string libraryFile(std::string_view name)
{
    return std::string(name) + ".dll";
}

DynamicLibrary::DynamicLibrary(const std::string& file) : handle(LoadLibraryA(file.c_str())) {}

void* DynamicLibrary::address(const char* name) const
{
    return handle ? reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name)) : nullptr;
}

} // namespace pyrux::platform
