#include "platform/linux/runtime_folder.h"

#include <cstdlib>
#include <sys/stat.h>

namespace pyrux::platform {
namespace {

bool makeFolder(const std::filesystem::path& folder)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored))
        return true;
    if (folder.has_parent_path() && folder.parent_path() != folder && !makeFolder(folder.parent_path()))
        return false;
    return mkdir(folder.c_str(), 0700) == 0 || std::filesystem::is_directory(folder, ignored);
}

} // namespace

std::filesystem::path runtimeFolder()
{
    if (const char* chosen = std::getenv("PYRUX_RUNTIME_DIR"); chosen && *chosen)
        return chosen;
    if (const char* session = std::getenv("XDG_RUNTIME_DIR"); session && *session)
        return std::filesystem::path(session) / "pyrux";
    return "/run/pyrux";
}

bool makeRuntimeFolder()
{
    return makeFolder(runtimeFolder());
}

} // namespace pyrux::platform
