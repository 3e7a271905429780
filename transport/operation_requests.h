#pragma once

#include "core/models.h"
#include "pyrux/error.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>

namespace pyrux {

/// How a link works over which the frames `80 cmd op` go: operation 1 reads, 2 writes.
LinkRules operationLinkRules(const ModelRow& model);

/// Sends a read and hands its reply to `take`, if that begins `80 answer 03`. Deliberate: what `take` sets
/// stays as it was for another reply, and that is no error.
template <class Take>
_error readOperation(DeviceLink& link, const Report& command, std::uint8_t answer, Take take)
{
    Reply reply;
    const _error result = link.get(command, reply);
    if (!result && reply.begins({0x80, answer, 0x03}))
        take(reply);
    return result;
}
template <class Take>
_error readOperation(DeviceLink& link, const Report& command, Take take)
{
    return readOperation(link, command, command[2], take);
}

/// Least time between requests that are judged.
inline constexpr std::chrono::milliseconds requestGap{32};

/// Requests of the form `80 cmd op` whose replies tell how the device has taken them: P0 and P1 repeat the
/// request, P2 is 3 for success and 4 for a refusal, with its reason in P3.
class OperationRequests {
public:
    /// @param link  whose rules have `requestGap`
    OperationRequests(DeviceLink& link, const ModelRow& model) : link(link), model(model) {}

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

    DeviceLink& link;
    const ModelRow& model;
};

} // namespace pyrux
