#include "platform/linux/file_descriptor.h"
#include "platform/linux/runtime_folder.h"
#include "platform/linux/socket_address.h"
#include "platform/linux/socket_client.h"
#include "platform/linux/socket_peer.h"
#include "platform/pipe.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/time.h>
#include <thread>

namespace pyrux::platform {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// A point in time up to which system calls may wait.
class Deadline {
public:
    explicit Deadline(milliseconds limit) : end(Clock::now() + limit) {}

    bool passed() const { return Clock::now() >= end; }

    /// Limits the socket's next call to the time that is left.
    /// @param option  SO_SNDTIMEO (also limits a connect) or SO_RCVTIMEO
    void apply(int socketNumber, int option) const
    {
        // Zero would mean no limit.
        const auto left = std::max(std::chrono::ceil<microseconds>(end - Clock::now()), microseconds(1));
        const timeval value{static_cast<time_t>(left.count() / 1'000'000),
                            static_cast<suseconds_t>(left.count() % 1'000'000)};
        setsockopt(socketNumber, SOL_SOCKET, option, &value, sizeof value);
    }

    /// Pauses, but not beyond the deadline.
    void pause(milliseconds length) const
    {
        std::this_thread::sleep_until(std::min(end, Clock::now() + length));
    }

private:
    Clock::time_point end;
};

class SocketClient final : public PipeClient {
public:
    explicit SocketClient(FileDescriptor connected) : socket(std::move(connected)) {}

    bool write(std::string_view text, milliseconds limit) override
    {
        const Deadline deadline{limit};
        do {
            deadline.apply(socket.get(), SO_SNDTIMEO);
            if (send(socket.get(), text.data(), text.size(), MSG_NOSIGNAL) >= 0)
                return true;
        } while (errno == EINTR && !deadline.passed());
        return false;
    }

    std::optional<PipePiece> read(std::span<char> buffer, milliseconds limit) override
    {
        if (taken == message.size() && !receive(Deadline{limit}))
            return {};
        const std::size_t length = std::min(buffer.size(), message.size() - taken);
        std::copy_n(message.begin() + static_cast<std::ptrdiff_t>(taken), length, buffer.begin());
        taken += length;
        return PipePiece{length, taken < message.size()};
    }

private:
    /// Fetches the next message as a whole: the socket would drop what does not fit into a caller's buffer.
    bool receive(Deadline deadline)
    {
        const auto length = nextLength(deadline);
        if (!length)
            return false;
        message.resize(*length);
        taken = 0;
        return recv(socket.get(), message.data(), message.size(), 0) == static_cast<ssize_t>(*length);
    }

    std::optional<std::size_t> nextLength(Deadline deadline) const
    {
        do {
            deadline.apply(socket.get(), SO_RCVTIMEO);
            char none = 0;
            sockaddr_un sender{};
            socklen_t senderLength = sizeof sender;
            const ssize_t length = recvfrom(socket.get(), &none, 0, MSG_PEEK | MSG_TRUNC,
                                            reinterpret_cast<sockaddr*>(&sender), &senderLength);
            // An empty message has a sender, the end of the connection has none.
            if (length > 0 || (length == 0 && senderLength > 0))
                return static_cast<std::size_t>(length);
            if (length == 0)
                return {};
            // A peer that has gone without reading everything resets the connection once, in front of what it
            // wrote.
        } while (errno == ECONNRESET || (errno == EINTR && !deadline.passed()));
        return {};
    }

    FileDescriptor socket;
    std::string message;
    std::size_t taken = 0;
};

enum class Attempt { connected, missing, busy, refused };

/// Whether the one who listens is trusted, whatever has stood at the path a moment ago.
bool hasTrustedPeer(int socketNumber)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return getsockopt(socketNumber, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && isTrusted(peer.uid);
}

Attempt attempt(int socketNumber, const sockaddr_un& address)
{
    if (!isRuntimeFolderTrusted() || !isTrustedSocket(address.sun_path))
        return Attempt::missing;
    if (connect(socketNumber, generic(address), sizeof address) == 0)
        return hasTrustedPeer(socketNumber) ? Attempt::connected : Attempt::missing;
    switch (errno) {
    case EAGAIN:
    case EINTR:
        return Attempt::busy;
    case ECONNREFUSED: // nobody listens there (yet)
        return Attempt::busy;
    case ENOENT:
    case ENOTDIR:
        return Attempt::missing;
    default: // no permission, or a socket of another kind
        return Attempt::refused;
    }
}

bool waitUntilAccepted(int socketNumber, Deadline deadline)
{
    for (milliseconds pause{1}; !isAccepted(socketNumber); pause = std::min(pause * 2, milliseconds(20))) {
        if (deadline.passed())
            return false;
        deadline.pause(pause);
    }
    return true;
}

} // namespace

std::unique_ptr<PipeClient> clientOn(FileDescriptor connected)
{
    return std::make_unique<SocketClient>(std::move(connected));
}

PipeClient::Connection PipeClient::connect(std::string_view name, milliseconds limit)
{
    const auto address = socketAddress(name);
    if (!address)
        return {};
    const Deadline deadline{limit};
    for (;;) {
        FileDescriptor descriptor{::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
        if (!descriptor)
            return {};
        deadline.apply(descriptor.get(), SO_SNDTIMEO);
        switch (attempt(descriptor.get(), *address)) {
        case Attempt::connected:
            if (!waitUntilAccepted(descriptor.get(), deadline))
                return {};
            return {true, clientOn(std::move(descriptor))};
        case Attempt::missing:
            return {};
        case Attempt::refused:
            return {true, nullptr};
        case Attempt::busy:
            break;
        }
        if (deadline.passed())
            return {};
        deadline.pause(milliseconds(20));
    }
}

} // namespace pyrux::platform
