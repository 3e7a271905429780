#include "platform/linux/notice_socket.h"

#include "platform/linux/environment.h"
#include "platform/linux/socket_address.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace pyrux::platform {
namespace {

constexpr std::size_t longestMessage = 4096;

FileDescriptor connected(std::string_view path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() < 2 || path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.data(), path.size());
    auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    if (path[0] == '@')
        address.sun_path[0] = '\0';
    else
        ++length;
    FileDescriptor socket{::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    if (socket && connect(socket.get(), generic(address), length) != 0)
        socket.reset();
    return socket;
}

} // namespace

std::optional<Notice> parseNotice(std::string_view message)
{
    struct Verb {
        std::string_view word;
        DeviceChange change;
    };
    constexpr Verb verbs[]{{"add ", DeviceChange::arrival}, {"remove ", DeviceChange::removal}};
    for (const Verb& verb : verbs) {
        if (!message.starts_with(verb.word))
            continue;
        const std::string_view name = message.substr(verb.word.size());
        if (name.empty() || name.find('\0') != std::string_view::npos)
            return {};
        return Notice{std::string(name), verb.change};
    }
    return {};
}

NoticeSocket::NoticeSocket()
{
    if (const char* const path = environment("PYRUX_DEVICE_NOTICES"); *path)
        connection = connected(path);
}

std::optional<Notice> NoticeSocket::take()
{
    std::array<char, longestMessage> message;
    sockaddr_un sender{};
    socklen_t senderLength = sizeof sender;
    const ssize_t length = recvfrom(connection.get(), message.data(), message.size(), MSG_TRUNC,
                                    reinterpret_cast<sockaddr*>(&sender), &senderLength);
    if (length < 0 && (errno == EAGAIN || errno == EINTR))
        return {};
    // An empty message has a sender, the end of the connection has none.
    if (length < 0 || (length == 0 && senderLength == 0)) {
        connection.reset();
        return {};
    }
    if (static_cast<std::size_t>(length) > message.size())
        return {};
    return parseNotice({message.data(), static_cast<std::size_t>(length)});
}

} // namespace pyrux::platform
