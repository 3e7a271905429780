#pragma once

#include "devices/mice/mouse_performance.h"
#include "devices/mice/mouse_protocol.h"
#include "devices/mice/wheel_tilt.h"
#include "pyrux/error.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// The reset of a part of the current profile. Sends 51 98, and after it writes the wheel and the performance
/// anew.
class MouseReset {
public:
    MouseReset(DeviceLink& link, MouseModes& modes, WheelTilt& wheel, MousePerformance& performance)
        : link(link), modes(modes), wheel(wheel), performance(performance)
    {
    }

    _error resetPartial(std::uint8_t part);

private:
    DeviceLink& link;
    MouseModes& modes;
    WheelTilt& wheel;
    MousePerformance& performance;
};

} // namespace pyrux
