#pragma once

#include "core/models.h"
#include "pyrux/error.h"
#include "transport/exchange.h"
#include "transport/report.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>

namespace pyrux {

/// How the lighting controllers pair requests with replies.
/// @param gap  least time between two requests, behind the write of the first; 0 for none
ExchangeRules controllerRules(const ModelRow& model,
                              std::chrono::milliseconds wait = std::chrono::milliseconds(1000),
                              std::chrono::milliseconds gap = std::chrono::milliseconds(0));

/// Least time between the requests of the controllers that judge their replies.
inline constexpr std::chrono::milliseconds requestGap{32};

/// Requests of the form `80 cmd op` whose replies tell how the device has taken them: P0 and P1 repeat the
/// request, P2 is 3 for success and 4 for a refusal, with its reason in P3.
class JudgedRequests {
public:
    /// @param exchange  whose rules have `requestGap`
    JudgedRequests(Exchange& exchange, const ModelRow& model) : exchange(exchange), model(model) {}

    /// Sends a request and judges its reply.
    /// @param operation  the host operation that asks, as `__func__` names it; a refusal is logged under it
    /// @return E_OK; E_INVALID_GET: no reply, or a refusal; E_WRONG_REPLY: a reply that does not fit;
    ///         E_NOT_OPEN: the channel is, or was meanwhile, closed
    _error request(std::string_view operation, const Report& command, Reply& reply);
    _error request(std::string_view operation, const Report& command);

    /// Sends a request and waits for a reply with a beginning of its own, which is not judged: a frame of a
    /// transfer over several frames.
    /// @return E_OK; E_INVALID_GET: no reply; E_NOT_OPEN
    _error request(const Report& command, std::span<const std::uint8_t> pattern, Reply& reply);

private:
    _error judge(std::string_view operation, const Report& command, const Reply& reply) const;

    Exchange& exchange;
    const ModelRow& model;
};

} // namespace pyrux
