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

/// Whether a file is a socket of a trusted user. Anything else is neither connected to nor replaced; so is a
/// link to one.
bool isTrustedSocket(const char* path);

} // namespace pyrux::platform
