#pragma once

#include "core/models.h"
#include "devices/linked_device.h"
#include "devices/mice/mouse_keys.h"
#include "devices/mice/mouse_parts.h"
#include "devices/mice/mouse_profiles.h"
#include "devices/mice/surface_learning.h"
#include "pyrux/records.h"
#include "transport/report.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace pyrux {

/// What the host is told of a change without a value.
template <std::uint32_t event>
NotifyRecord changed(const Reply&)
{
    return {.event = event, .value = 0};
}

/// What tells one kind of mouse of the family from another.
struct MouseTraits {
    std::span<const Report> startUp; ///< Written at the start, without waiting for replies.
    std::span<const DeviceEvent<NotifyRecord>> events;
    MouseKeyFacts keys;
    std::optional<std::int32_t> paceMs{}; ///< Of the queue for frames; none: there is none.
};

/// The protocol of the wired mice: start, events and end, and the parts whose operations the host objects
/// call. Arguments, results and bytes stand in the host interfaces' headers.
///
/// Every command waits for its reply, which repeats its first two bytes, or as many as its call names, so
/// that a reply that does not begin as asked for shows as a missing one.
class WiredMouse : public NotifyingDevice<NotifyCallback>, public MouseParts {
public:
    WiredMouse(const std::string& path, const ModelRow& model, const MouseTraits& traits);
    ~WiredMouse() override;

    void sayGoodbye() override;

    MouseProfiles profiles{link, modes, row};
    SurfaceLearning learning{link, modes, performance};

private:
    void take(const Reply& reply);

    const MouseTraits& traits;
    MouseKeys keys;
};

} // namespace pyrux
