#include "platform/dynamic_library.h"

#include <dlfcn.h>

namespace pyrux::platform {

std::string libraryFile(std::string_view name)
{
    return "lib" + std::string(name) + ".so";
}

DynamicLibrary::DynamicLibrary(const std::string& file)
    : handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
{
}

void* DynamicLibrary::address(const char* name) const
{
    return handle ? dlsym(handle, name) : nullptr;
}

} // namespace pyrux::platform
