#pragma once

#include "devices/mice/led_mouse.h"
#include "pyrux/rd240.h"

#include <string>

namespace pyrux {

class RD240 : public LedMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd240");
    explicit RD240(const std::string& path);
};

class PYRUX_RD240 final : public LedMouseHost<RD240, PYRUX_RD240_Base> {
public:
    using LedMouseHost::LedMouseHost;
};

} // namespace pyrux
