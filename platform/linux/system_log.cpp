#include "platform/linux/system_log.h"

#include "platform/linux/socket_address.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <syslog.h>

namespace pyrux::platform {
namespace {

/// Such as "<15>Jan  2 03:04:05 host: ", in English at any locale.
std::string heading()
{
    constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[64];
    std::snprintf(text, sizeof text, "<%d>%s %2d %02d:%02d:%02d ", LOG_USER | LOG_DEBUG,
                  months.at(static_cast<std::size_t>(local.tm_mon)), local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec);
    return text + std::string(program_invocation_short_name) + ": ";
}

} // namespace

const char* systemLogSocket = "/dev/log";

bool SystemLog::write(std::string_view text)
{
    const std::string message = heading().append(text.substr(0, text.find('\0')));
    const std::lock_guard lock(mutex);
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!socket && !connect())
            return true;
        // In a stream a NUL ends the text.
        const std::size_t size = message.size() + stream;
        const ssize_t sent = send(socket.get(), message.c_str(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent == static_cast<ssize_t>(size))
            return true;
        if (sent < 0 && (errno == EAGAIN || errno == ENOBUFS))
            return false;
        if (sent < 0 && errno == EMSGSIZE)
            return true;
        // The log has been started anew, or has got a part only.
        socket.reset();
        if (sent >= 0)
            return false;
    }
    return true;
}

bool SystemLog::connect()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, systemLogSocket, sizeof address.sun_path - 1);
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
        socket = FileDescriptor{::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
        stream = type == SOCK_STREAM;
        if (socket && ::connect(socket.get(), generic(address), sizeof address) == 0)
            return true;
        const bool otherType = errno == EPROTOTYPE;
        socket.reset();
        if (!otherType)
            return false;
    }
    return false;
}

} // namespace pyrux::platform
