#include "platform/linux/runtime_folder.h"

#include "platform/linux/environment.h"

#include <sys/stat.h>
#include <unistd.h>

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
    if (const char* const chosen = environment("PYRUX_RUNTIME_DIR"); *chosen)
        return chosen;
    if (const char* const session = environment("XDG_RUNTIME_DIR"); *session)
        return std::filesystem::path(session) / "pyrux";
    return "/run/pyrux";
}

bool isTrusted(unsigned int user)
{
    return user == 0 || user == geteuid();
}

bool isRuntimeFolderTrusted()
{
    const std::filesystem::path folder = runtimeFolder();
    struct stat itself {};
    struct stat found {};
    // In a folder with the sticky bit nobody replaces what is another's.
    return lstat(folder.c_str(), &itself) == 0 && stat(folder.c_str(), &found) == 0 &&
           isTrusted(itself.st_uid) && isTrusted(found.st_uid) && S_ISDIR(found.st_mode) &&
           ((found.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (found.st_mode & S_ISVTX) != 0);
}

bool makeRuntimeFolder()
{
    return makeFolder(runtimeFolder()) && isRuntimeFolderTrusted();
}

} // namespace pyrux::platform
