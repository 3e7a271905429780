#include "platform/linux/socket_peer.h"

#include "platform/linux/file_descriptor.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <optional>
#include <poll.h>
#include <span>
#include <sys/socket.h>
#include <sys/stat.h>

namespace pyrux::platform {
namespace {

struct PeerRequest {
    nlmsghdr header;
    unix_diag_req request;
};

PeerRequest peerRequest(std::uint32_t inode)
{
    PeerRequest message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.header.nlmsg_flags = NLM_F_REQUEST;
    message.request.sdiag_family = AF_UNIX;
    message.request.udiag_states = ~0U;
    message.request.udiag_ino = inode;
    message.request.udiag_show = UDIAG_SHOW_PEER;
    message.request.udiag_cookie[0] = ~0U; // any
    message.request.udiag_cookie[1] = ~0U;
    return message;
}

/// The peer's inode in the kernel's answer.
std::optional<std::uint32_t> peerInode(std::span<const std::byte> answer)
{
    nlmsghdr header;
    constexpr std::size_t attributesAt = NLMSG_LENGTH(sizeof(unix_diag_msg));
    if (answer.size() < attributesAt)
        return {};
    std::memcpy(&header, answer.data(), sizeof header);
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY)
        return {};
    for (auto rest = answer.subspan(attributesAt); rest.size() >= sizeof(rtattr);) {
        rtattr attribute;
        std::memcpy(&attribute, rest.data(), sizeof attribute);
        if (attribute.rta_len < sizeof attribute || attribute.rta_len > rest.size())
            return {};
        if (attribute.rta_type == UNIX_DIAG_PEER && attribute.rta_len >= RTA_LENGTH(sizeof(std::uint32_t))) {
            std::uint32_t inode;
            std::memcpy(&inode, rest.data() + RTA_LENGTH(0), sizeof inode);
            return inode;
        }
        rest = rest.subspan(std::min<std::size_t>(RTA_ALIGN(attribute.rta_len), rest.size()));
    }
    return {};
}

/// The kernel's word on the inode at the server's side of the connection; 0 while nobody has accepted it.
std::optional<std::uint32_t> askForPeerInode(int socketNumber)
{
    struct stat own {};
    const FileDescriptor diagnosis{socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG)};
    if (!diagnosis || fstat(socketNumber, &own) != 0)
        return {};
    const PeerRequest request = peerRequest(static_cast<std::uint32_t>(own.st_ino));
    std::array<std::byte, 512> answer;
    ssize_t length = send(diagnosis.get(), &request, sizeof request, 0);
    if (length >= 0)
        length = recv(diagnosis.get(), answer.data(), answer.size(), 0);
    if (length < 0)
        return {};
    return peerInode(std::span(answer).first(static_cast<std::size_t>(length)));
}

bool hasHungUp(int socketNumber)
{
    pollfd state{socketNumber, 0, 0};
    return poll(&state, 1, 0) == 1 && (state.revents & POLLHUP);
}

} // namespace

bool isAccepted(int socketNumber)
{
    // A peer that has gone has no inode either.
    return askForPeerInode(socketNumber) != 0U || hasHungUp(socketNumber);
}

} // namespace pyrux::platform
