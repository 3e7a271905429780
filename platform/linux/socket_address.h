#pragma once

#include <optional>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace pyrux::platform {

/// The socket `name` in the runtime folder. No value: the path is too long for a socket's address.
std::optional<sockaddr_un> socketAddress(std::string_view name);

inline const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

/// A file that is no socket is neither connected to nor replaced.
bool isSocket(const char* path);

} // namespace pyrux::platform
