#pragma once

#include "devices/keyboards/keyboard_layout.h"
#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace pyrux {

/// A keyboard's lights under a host's control. Frames go through the link's queue, which it must have.
class DirectLighting {
public:
    DirectLighting(DeviceLink& link, const DirectLightRow& row) : link(link), row(row) {}

    _error init();
    _error uninit();
    _error paint(const std::uint8_t* rgb);
    _error paintKeys(const std::vector<DirectKeyColor>& list);
    _error turnOff();

private:
    DeviceLink& link;
    const DirectLightRow& row;
    std::mutex mutex; ///< Guards `frame`.
    Report frame;     ///< Of one color, as it was last.
};

} // namespace pyrux
