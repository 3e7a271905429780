#pragma once

#include "devices/mice/led_mouse.h"
#include "pyrux/rd215.h"

#include <string>

namespace pyrux {

class RD215 : public LedMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd215");
    explicit RD215(const std::string& path);
};

class PYRUX_RD215 final : public LedMouseHost<RD215, PYRUX_RD215_Base> {
public:
    using LedMouseHost::LedMouseHost;
};

} // namespace pyrux
