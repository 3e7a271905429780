#include "platform/linux/access_watch.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>

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
    const int watch = inotify_add_watch(notify.get(), file.c_str(), IN_ATTRIB | IN_DELETE_SELF);
    if (watch < 0)
        return false;
    watches[watch] = {file, key};
    // The right may have come between the look and the watch.
    if (!mayOpen(file))
        return false;
    drop(watch);
    return true;
}

void AccessWatch::forget(const std::string& key)
{
    for (auto one = watches.begin(); one != watches.end();) {
        const auto [watch, watched] = *one++;
        if (watched.key == key)
            drop(watch);
    }
}

void AccessWatch::drop(int watch)
{
    inotify_rm_watch(notify.get(), watch);
    watches.erase(watch);
}

std::vector<std::string> AccessWatch::take()
{
    std::vector<std::string> keys;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (ssize_t length; (length = read(notify.get(), buffer.data(), buffer.size())) > 0;) {
        for (const char* place = buffer.data(); place < buffer.data() + length;) {
            inotify_event event;
            std::memcpy(&event, place, sizeof event);
            place += sizeof event + event.len;
            const auto found = watches.find(event.wd);
            if (found == watches.end())
                continue;
            if (event.mask & (IN_IGNORED | IN_DELETE_SELF)) {
                watches.erase(found);
            } else if (mayOpen(found->second.file)) {
                keys.push_back(found->second.key);
                drop(event.wd);
            }
        }
    }
    return keys;
}

} // namespace pyrux::platform
