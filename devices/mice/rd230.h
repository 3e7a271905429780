#pragma once

#include "devices/mice/led_mouse.h"
#include "pyrux/rd230.h"

#include <string>

namespace pyrux {

class RD230 : public LedMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd230");
    explicit RD230(const std::string& path);
};

class PYRUX_RD230 final : public LedMouseHost<RD230, PYRUX_RD230_Base> {
public:
    using LedMouseHost::LedMouseHost;
};

} // namespace pyrux
