#include "fuzz/support/input.h"
#include "fuzz/support/surroundings.h"
#include "platform/linux/socket_client.h"
#include "services/tw_service.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <vector>

using namespace pyrux;

namespace {

constexpr std::size_t queryPiece = 127;
constexpr std::size_t commandPiece = 256;
constexpr std::chrono::seconds limit{5};

/// A peer that has sent some messages and gone.
struct Peer {
    explicit Peer(const std::vector<std::string>& messages)
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
            std::abort();
        client = platform::clientOn(platform::FileDescriptor(ends[0]));
        own = platform::FileDescriptor(ends[1]);
        for (const std::string& message : messages)
            if (send(own.get(), message.data(), message.size(), MSG_NOSIGNAL) < 0)
                std::abort();
        shutdown(own.get(), SHUT_WR);
    }

    std::unique_ptr<platform::PipeClient> client;
    platform::FileDescriptor own;
};

/// What is left of a reply that is taken in pieces.
std::string lastPiece(const std::string& reply)
{
    return reply.substr((reply.size() - 1) / queryPiece * queryPiece).c_str();
}

bool isAcknowledged(const std::string& reply)
{
    for (std::size_t at = 0; at < reply.size(); at += commandPiece)
        if (!std::string_view(reply).substr(at, commandPiece).starts_with("TW_OK"))
            return false;
    return true;
}

} // namespace

/// Messages from the resident services and the control application: each a length of two bytes, and so many
/// bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    [[maybe_unused]] static const bool ready = (fuzz::beAlone(), true);
    fuzz::Input input({data, size});
    std::vector<std::string> messages;
    while (!input.empty() && messages.size() < 4) {
        const std::size_t length = std::size_t(input.byte() | input.byte() << 8);
        const std::string message(fuzz::textOf(input.take(length)));
        if (!message.empty())
            messages.push_back(message);
    }
    const bool answered = !messages.empty();
    {
        Peer peer(messages);
        std::string text = "temp";
        const _error result = queryOn(*peer.client, text, limit);
        if (result != (answered ? E_OK : E_PIPE_FAIL))
            std::abort();
        if (text != (answered ? lastPiece(messages.front()) : "temp"))
            std::abort();
    }
    Peer peer(messages);
    const bool accepted = answered && isAcknowledged(messages.front());
    if (commandOn(*peer.client, "{}", limit) != (accepted ? E_OK : E_PIPE_FAIL))
        std::abort();
    return 0;
}
