#pragma once

#include "devices/mice/mouse_host.h"
#include "devices/mice/wired_mouse.h"
#include "pyrux/rd210.h"

#include <string>

namespace pyrux {

/// The wired mouse without lights: the family's core as it is.
class RD210 : public WiredMouse {
public:
    static constexpr const ModelRow& model = modelRow("rd210");
    explicit RD210(const std::string& path);
};

class PYRUX_RD210 final : public MouseHost<RD210, PYRUX_RD210_Base> {
public:
    using MouseHost::MouseHost;
};

} // namespace pyrux
