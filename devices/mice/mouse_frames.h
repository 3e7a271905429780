#pragma once

#include "pyrux/error.h"
#include "pyrux/lighting.h"
#include "transport/device_link.h"

#include <cstdint>
#include <vector>

namespace pyrux {

/// The frames that a host shows on a mouse with lights. They go through the queue of the link, as C0 00 and
/// C0 01; the start and the end of it are written at once, as 41 02, C0 F0 and 41 00.
class MouseFrames {
public:
    static constexpr std::int32_t idlePaceMs = 100; ///< Of the queue while no host drives the lights.

    explicit MouseFrames(DeviceLink& link) : link(link) {}

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

private:
    DeviceLink& link;
};

} // namespace pyrux
