#include "loader.h"

#include "failure.h"

#include <cstdlib>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace pyrux::ctl {

namespace fs = std::filesystem;

#if defined(_WIN32)

namespace {

void* load(const fs::path& file)
{
    // The library's own dependencies are looked for beside it. One that is loaded already, under the same
    // file name, comes first.
    const DWORD flags = file.is_absolute() ? LOAD_WITH_ALTERED_SEARCH_PATH : 0;
    return LoadLibraryExW(file.c_str(), nullptr, flags);
}

std::string reason()
{
    return std::system_category().message(static_cast<int>(GetLastError()));
}

} // namespace

void* SharedLibrary::find(const char* symbol) const
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), symbol));
}

fs::path programFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
            return fs::path(path.substr(0, length)).parent_path();
        path.resize(path.size() * 2);
    }
}

void setEnvironment(const char* name, const char* value)
{
    _putenv_s(name, value);
}

#else

namespace {

void* load(const fs::path& file)
{
    // Local: nothing else may bind to the library's exports, one of which is called "dprintf". The hidapi
    // stand-in still serves the library, which names a loaded library as its dependency.
    return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::string reason()
{
    const char* text = dlerror();
    return text ? text : "unknown reason";
}

} // namespace

void* SharedLibrary::find(const char* symbol) const
{
    return dlsym(handle, symbol);
}

fs::path programFolder()
{
    std::error_code none;
    return fs::read_symlink("/proc/self/exe", none).parent_path();
}

void setEnvironment(const char* name, const char* value)
{
    setenv(name, value, 1);
}

#endif

SharedLibrary::SharedLibrary(const fs::path& file) : name(file), handle(load(file))
{
    if (!handle)
        throw Failure(Exit::notLoaded, "cannot load " + file.string() + ": " + reason());
}

SharedLibrary loadFirst(const char* variable, const std::vector<fs::path>& candidates)
{
    if (const char* named = std::getenv(variable); named && *named)
        return SharedLibrary(fs::path(named));
    std::string tried;
    for (const fs::path& candidate : candidates) {
        if (!candidate.has_parent_path())
            return SharedLibrary(candidate);
        std::error_code none;
        if (fs::exists(candidate, none))
            return SharedLibrary(candidate.lexically_normal());
        tried += "\n  " + candidate.lexically_normal().string();
    }
    throw Failure(Exit::notLoaded,
                  "none of these is there, and " + std::string(variable) + " names no other:" + tried);
}

} // namespace pyrux::ctl
