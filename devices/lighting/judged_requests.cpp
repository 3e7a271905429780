#include "devices/lighting/judged_requests.h"

#include "core/log.h"

#include <string>

namespace pyrux {

namespace {

constexpr std::size_t requestMatch = 2; // bytes of a request that its reply repeats
constexpr std::uint8_t success = 3;
constexpr std::uint8_t refusal = 4;

} // namespace

ExchangeRules controllerRules(const ModelRow& model, std::chrono::milliseconds wait,
                              std::chrono::milliseconds gap)
{
    return {.wait = wait,
            .timeoutText = "cannot receive",
            .logCategory = model.logCategory,
            .runningMatchCount = true, // deliberate: a match may begin in the request before
            .gap = gap};
}

_error JudgedRequests::request(std::string_view operation, const Report& command, Reply& reply)
{
    const _error result = exchange.transact(command, requestMatch, reply);
    return result ? result : judge(operation, command, reply);
}

_error JudgedRequests::request(std::string_view operation, const Report& command)
{
    Reply reply;
    return request(operation, command, reply);
}

_error JudgedRequests::request(const Report& command, std::span<const std::uint8_t> pattern, Reply& reply)
{
    return exchange.transact(command, pattern, reply);
}

/// A reply that was matched need not begin as the request: the match may have begun in another.
_error JudgedRequests::judge(std::string_view operation, const Report& command, const Reply& reply) const
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
