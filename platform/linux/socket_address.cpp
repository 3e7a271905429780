#include "platform/linux/socket_address.h"

#include "platform/linux/runtime_folder.h"

#include <cstring>
#include <string>
#include <sys/stat.h>

namespace pyrux::platform {

std::optional<sockaddr_un> socketAddress(std::string_view name)
{
    const std::string path = runtimeFolder() / name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

bool isTrustedSocket(const char* path)
{
    struct stat found {};
    return lstat(path, &found) == 0 && S_ISSOCK(found.st_mode) && isTrusted(found.st_uid);
}

} // namespace pyrux::platform
