#include "platform/linux/access_watch.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace pyrux::platform {
namespace {

bool mayOpen(const std::string& file)
{
    return faccessat(AT_FDCWD, file.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
}

} // namespace

AccessWatch::AccessWatch() : notify(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

bool AccessWatch::accessible(const std::string& file, const std::string& key)
{
    if (mayOpen(file))
        return true;
    watchFolderOf(file);
    // The right may have come between the look and the watch.
    if (mayOpen(file))
        return true;
    waitingFor[key] = file;
    return false;
}

void AccessWatch::watchFolderOf(const std::string& file)
{
    const std::string folder = std::filesystem::path(file).parent_path();
    if (folders.contains(folder))
        return;
    const int watch = inotify_add_watch(notify.get(), folder.c_str(), IN_ATTRIB);
    if (watch >= 0)
        folders[folder] = watch;
}

void AccessWatch::forget(const std::string& key)
{
    waitingFor.erase(key);
}

std::vector<std::string> AccessWatch::take()
{
    std::array<char, 4096> events;
    while (read(notify.get(), events.data(), events.size()) > 0) {
    }
    std::vector<std::string> keys;
    std::erase_if(waitingFor, [&](const auto& waiting) {
        const bool may = mayOpen(waiting.second);
        if (may)
            keys.push_back(waiting.first);
        return may;
    });
    // Without a file to wait for the folders are left alone.
    if (waitingFor.empty())
        for (const auto& [folder, watch] : std::exchange(folders, {}))
            inotify_rm_watch(notify.get(), watch);
    return keys;
}

} // namespace pyrux::platform
