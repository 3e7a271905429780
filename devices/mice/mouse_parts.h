#pragma once

#include "core/models.h"
#include "devices/mice/button_map.h"
#include "devices/mice/dpi_order.h"
#include "devices/mice/mouse_bank.h"
#include "devices/mice/mouse_combo.h"
#include "devices/mice/mouse_macros.h"
#include "devices/mice/mouse_performance.h"
#include "devices/mice/mouse_protocol.h"
#include "devices/mice/mouse_reset.h"
#include "devices/mice/wheel_tilt.h"
#include "transport/device_link.h"

#include <atomic>

namespace pyrux {

/// What the working memory of a mouse holds, as parts that use each other: buttons, macros, performance. A
/// protocol class has this as a base after the one with the link; the host objects call the parts.
class MouseParts {
public:
    /// @param closed  whether nobody waits for a result any more
    MouseParts(DeviceLink& link, const ModelRow& model, const std::atomic<bool>& closed)
        : modes(link), bank(link), wheel(link), order(link), macros(link, modes, wheel, closed),
          buttonMap(link, modes, bank, wheel, order, macros), combo(modes, bank, buttonMap),
          performance(link, modes, bank, order, model), reset(link, modes, wheel, performance)
    {
    }
    MouseParts(const MouseParts&) = delete;
    MouseParts& operator=(const MouseParts&) = delete;

protected:
    ~MouseParts() = default;

    MouseModes modes;
    MouseBank bank;
    WheelTilt wheel;
    DpiOrder order;

public:
    MouseMacros macros;
    ButtonMap buttonMap;
    MouseCombo combo;
    MousePerformance performance;
    MouseReset reset;
};

} // namespace pyrux
