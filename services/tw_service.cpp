#include "services/tw_service.h"

#include "core/log.h"

#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

namespace pyrux {
namespace {

using platform::PipePiece;

namespace peer {
constexpr std::string_view service = "twservicepipe";       // resident service of the ATRIUM host
constexpr std::string_view deskService = "twldservicepipe"; // resident service of the LumaDesk host
constexpr std::string_view controlApp = "twironwoodpipe";   // control application
} // namespace peer

constexpr const char* releaseFile = "TWRelease.ini";
constexpr std::string_view acknowledgement = "TW_OK";
constexpr std::size_t commandPiece = 256;
constexpr std::size_t queryPiece = 127;

} // namespace

_error TW_SERVICE::sendToService(std::string_view text)
{
    return command(peer::service, text);
}

_error TW_SERVICE::sendToDeskService(std::string_view text)
{
    return command(peer::deskService, text);
}

_error TW_SERVICE::sendToControlApp(std::string_view text)
{
    return command(peer::controlApp, text);
}

_error TW_SERVICE::sendToHostService(std::string_view text)
{
    std::error_code unknown;
    return std::filesystem::exists(releaseFile, unknown) ? sendToDeskService(text) : sendToService(text);
}

_error TW_SERVICE::queryService(std::string& text)
{
    return query(peer::service, text);
}

_error TW_SERVICE::queryDeskService(std::string& text)
{
    const _error result = query(peer::deskService, text);
    if (result == E_OK)
        pipe.reset();
    return result;
}

bool TW_SERVICE::connect(std::string_view name)
{
    pipe.reset(); // a connection of an earlier call would keep the peer busy
    auto connection = platform::PipeClient::connect(name, limits.free);
    pipe = std::move(connection.pipe);
    return connection.available;
}

_error TW_SERVICE::command(std::string_view name, std::string_view text)
{
    connect(name);
    return pipe ? commandOn(*pipe, text, limits.reply) : E_PIPE_FAIL;
}

_error TW_SERVICE::query(std::string_view name, std::string& text)
{
    if (!connect(name))
        return E_INVALID_GET;
    return pipe ? queryOn(*pipe, text, limits.reply) : E_PIPE_FAIL;
}

_error commandOn(platform::PipeClient& pipe, std::string_view text, std::chrono::milliseconds limit)
{
    if (!pipe.write(text, limit))
        return E_PIPE_FAIL;
    std::array<char, commandPiece> buffer;
    for (std::optional<PipePiece> piece; !piece || piece->more;) {
        piece = pipe.read(buffer, limit);
        if (!piece || !std::string_view(buffer.data(), piece->length).starts_with(acknowledgement))
            return E_PIPE_FAIL;
    }
    return E_OK;
}

_error queryOn(platform::PipeClient& pipe, std::string& text, std::chrono::milliseconds limit)
{
    if (!pipe.write(text, limit))
        return E_PIPE_FAIL;
    for (std::optional<PipePiece> piece; !piece || piece->more;) {
        std::array<char, queryPiece + 1> buffer{};
        piece = pipe.read(std::span(buffer).first(queryPiece), limit);
        if (!piece) {
            consoleLine("error read ");
            return E_PIPE_FAIL;
        }
        text = buffer.data(); // deliberate: replaced, not appended, and at an end that the peer sends it ends
    }
    return E_OK;
}

std::string deviceCommand(std::string_view device, std::string_view operation,
                          std::initializer_list<std::pair<std::string_view, std::uint32_t>> arguments)
{
    // In the order of the alphabet, each name once, as the service's host writes it. No name needs an escape.
    std::map<std::string_view, std::uint32_t> ordered;
    for (const auto& [name, value] : arguments)
        ordered[name] = value;
    std::string text = R"({"func":")";
    text.append(operation).append(R"(","mod":")").append(device).append(R"(","param":{)");
    const char* separator = "\"";
    for (const auto& [name, value] : ordered) {
        text.append(separator).append(name).append("\":").append(std::to_string(value));
        separator = ",\"";
    }
    return text.append("}}");
}

} // namespace pyrux
