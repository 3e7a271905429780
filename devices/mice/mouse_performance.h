#pragma once

#include "core/models.h"
#include "devices/mice/dpi_order.h"
#include "devices/mice/mouse_bank.h"
#include "devices/mice/mouse_protocol.h"
#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// The surface values that stand for a mouse that has learned none.
struct SurfaceDefaults {
    static constexpr std::uint8_t a = 10;
    static constexpr std::uint8_t b = 16;
};

/// The DPI levels of a mouse, its surface values, and the settings that go with them. Sends 51 40, 52 40,
/// 51 F0 and 52 F0; the order of the levels goes to the order table, a setting to the bank, and pointer speed
/// and double-click time to the system. The model is for the log.
class MousePerformance {
public:
    MousePerformance(DeviceLink& link, MouseModes& modes, MouseBank& bank, DpiOrder& order,
                     const ModelRow& model)
        : link(link), modes(modes), bank(bank), order(order), model(model)
    {
    }

    _error setPerformance(const PerformanceRecord* record);
    _error getPerformance(PerformanceRecord* record);
    _error changeDpiLevel(std::uint8_t level);

    /// What a partial reset writes anew, on a device that accepts configuration.
    /// @return E_INVALID_SET: something of it has failed, and what follows is not written
    _error restoreDefaults();

private:
    struct Read;

    _error read(Read& values);

    DeviceLink& link;
    MouseModes& modes;
    MouseBank& bank;
    DpiOrder& order;
    const ModelRow& model;
};

} // namespace pyrux
