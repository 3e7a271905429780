#pragma once

#include "platform/pipe.h"
#include "pyrux/error.h"

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace pyrux {

/// Longest waits for a peer.
struct PipeLimits {
    std::chrono::milliseconds free{3000};  ///< For a pipe that is there and busy.
    std::chrono::milliseconds reply{3000}; ///< For the peer to take the request, and again for its reply.
};

/// What passes on a connection, from the request to the last piece of its reply. The results are those of
/// `TW_SERVICE`.
_error commandOn(platform::PipeClient& pipe, std::string_view text, std::chrono::milliseconds limit);
_error queryOn(platform::PipeClient& pipe, std::string& text, std::chrono::milliseconds limit);

/// Client of the resident services and of the control application. One connection carries one request, a
/// plain text without terminator, and its reply, one message.
class TW_SERVICE {
public:
    explicit TW_SERVICE(PipeLimits waits = {}) : limits(waits) {}

    /// Commands. The reply must begin with "TW_OK", each 256 bytes of it. The connection stays open until the
    /// object goes away or is used again.
    /// @return E_OK; E_PIPE_FAIL: no peer, no reply in time, or another reply
    _error sendToService(std::string_view text);
    _error sendToDeskService(std::string_view text);
    _error sendToControlApp(std::string_view text);

    /// A command to the resident service of the host that is installed: the LumaDesk host's when the current
    /// directory has the file "TWRelease.ini", otherwise the ATRIUM host's.
    _error sendToHostService(std::string_view text);

    /// Queries: `text` goes out and is replaced by the reply, whose pieces of 127 bytes replace each other,
    /// so that of a longer reply only the last piece is left. The connection stays open as with a command.
    /// @return E_OK; E_INVALID_GET: no peer, nothing sent; E_PIPE_FAIL: the exchange failed
    _error queryService(std::string& text);

    /// The same with the other service, and a connection that is closed when the query has succeeded.
    _error queryDeskService(std::string& text);

private:
    /// @return whether a peer was there and free in time
    bool connect(std::string_view name);
    _error command(std::string_view name, std::string_view text);
    _error query(std::string_view name, std::string& text);

    PipeLimits limits;
    std::unique_ptr<platform::PipeClient> pipe;
};

/// The text of a command by which an application hands a device's operation over to the resident service.
/// @param device     the model, in lower case
/// @param arguments  names and values
std::string deviceCommand(std::string_view device, std::string_view operation,
                          std::initializer_list<std::pair<std::string_view, std::uint32_t>> arguments);

} // namespace pyrux
