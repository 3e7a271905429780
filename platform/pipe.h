#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

/// @file
/// Named pipes: `\\.\pipe\NAME` on Windows, a Unix-domain socket NAME in the runtime folder on Linux.

namespace pyrux::platform {

/// One piece of a message.
struct PipePiece {
    std::size_t length = 0;
    bool more = false; ///< The message goes on after this piece.
};

/// A client's end of a message pipe (SOCK_SEQPACKET on Linux). Closed by the destructor. For one thread at a
/// time.
class PipeClient {
public:
    /// What came of the way to a server.
    struct Connection {
        bool available = false;           ///< A server was there and became free within the limit.
        std::unique_ptr<PipeClient> pipe; ///< Open for reading and writing; null when it could not be opened.
    };

    /// Waits up to `limit` for a server that is there and busy, then connects. A pipe that is not there fails
    /// at once.
    static Connection connect(std::string_view name, std::chrono::milliseconds limit);

    virtual ~PipeClient() = default;

    /// Writes one message. False: the peer is gone, or has not taken it within `limit`.
    virtual bool write(std::string_view message, std::chrono::milliseconds limit) = 0;

    /// Reads the next piece of a message, as much as fits. No value: the peer is gone, or nothing came within
    /// `limit`.
    virtual std::optional<PipePiece> read(std::span<char> buffer, std::chrono::milliseconds limit) = 0;
};

/// The server's end of a byte pipe with one instance (SOCK_STREAM on Linux).
class PipeServer {
public:
    /// Makes the pipe; on Linux the runtime folder is made first (mode 0700) if it is missing, and a socket
    /// that nobody serves any more is replaced. Null when the pipe cannot be made, or is served already.
    /// @param bufferSize  bytes of buffer each way, where a pipe has such a size (Windows)
    static std::unique_ptr<PipeServer> create(std::string_view name, std::size_t bufferSize);

    virtual ~PipeServer() = default;

    /// Waits for a client, without limit. False: the system refuses.
    virtual bool accept() = 0;

    /// Reads from the client, waiting without limit; no value when it has gone.
    virtual std::optional<std::size_t> read(std::span<char> buffer) = 0;

    /// Ends the connection with the client.
    virtual void disconnect() = 0;
};

} // namespace pyrux::platform
