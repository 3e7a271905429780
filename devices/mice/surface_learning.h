#pragma once

#include "devices/mice/mouse_performance.h"
#include "devices/mice/mouse_protocol.h"
#include "pyrux/error.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// How a mouse learns the surface below it. Sends 80 00 and 80 01; what it has learned stands in the
/// performance.
class SurfaceLearning {
public:
    SurfaceLearning(DeviceLink& link, MouseModes& modes, MousePerformance& performance)
        : link(link), modes(modes), performance(performance)
    {
    }

    _error startSurfaceLearning();
    _error stopSurfaceLearning();
    _error getSurfaceLearningStatus(std::uint8_t* status);
    _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b);

private:
    DeviceLink& link;
    MouseModes& modes;
    MousePerformance& performance;
};

} // namespace pyrux
