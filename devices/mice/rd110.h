#pragma once

#include "devices/mice/led_mouse.h"
#include "pyrux/rd110.h"

#include <string>

namespace pyrux {

/// Can be asked whether it is there; its host object also reads all macros at once.
class RD110 : public LedMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd110");
    explicit RD110(const std::string& path);

    _error test();
};

class PYRUX_RD110 final : public MouseMacroListHost<LedMouseHost<RD110, PYRUX_RD110_Base>> {
public:
    using MouseMacroListHost::MouseMacroListHost;

    _error test() override { return FORWARD(test()); }
};

} // namespace pyrux
