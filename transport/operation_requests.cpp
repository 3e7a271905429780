#include "transport/operation_requests.h"

#include "core/log.h"

#include <string>

namespace pyrux {

namespace {

constexpr std::uint8_t success = 3;
constexpr std::uint8_t refusal = 4;

} // namespace

LinkRules operationLinkRules(const ModelRow& model)
{
    return {.model = model,
            .failureLogged = false,
            .mode = usbHid::Mode::timed,
            .wait = std::chrono::milliseconds(1000),
            .timeoutText = "cannot receive",
            .runningMatchCount = true, // deliberate: a match may begin in the request before
            .survivedFailures = 29};   // the 30th ends the reader
}

_error OperationRequests::request(std::string_view operation, const Report& command, Reply& reply)
{
    const _error result = link.get(command, reply);
    return result ? result : judge(operation, command, reply);
}

_error OperationRequests::request(std::string_view operation, const Report& command)
{
    Reply reply;
    return request(operation, command, reply);
}

_error OperationRequests::request(const Report& command, std::span<const std::uint8_t> pattern, Reply& reply)
{
    return link.get(command, pattern, reply);
}

/// A reply that was matched need not begin as the request: the match may have begun in another.
_error OperationRequests::judge(std::string_view operation, const Report& command, const Reply& reply) const
{
    const auto sent = command.payload();
    if (reply[0] != sent[0] || reply[1] != sent[1])
        return E_WRONG_REPLY;
    if (reply[2] == success)
        return E_OK;
    if (reply[2] != refusal)
        return E_WRONG_REPLY;
    log(model.logCategory,
        [&] { return fullName(model, operation) + ", error code = " + std::to_string(reply[3]); });
    return E_INVALID_GET;
}

} // namespace pyrux
