#pragma once

#include "devices/mice/led_mouse.h"
#include "pyrux/rd110.h"

#include <string>

namespace pyrux {

/// Also reads all macros at once, and can be asked whether it is there.
class RD110 : public LedMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd110");
    explicit RD110(const std::string& path);

    _error test();
    _error getMacroAll(MouseMacroList* list);
};

class PYRUX_RD110 final : public LedMouseHost<RD110, PYRUX_RD110_Base> {
public:
    using LedMouseHost::LedMouseHost;

    _error test() override { return FORWARD(test()); }
    _error getMacroAll(MouseMacroList* list) override { return FORWARD(getMacroAll(list)); }
};

} // namespace pyrux
