#pragma once

#include "devices/keyboards/keyboard_host.h"
#include "pyrux/qw210.h"

#include <string>

namespace pyrux {

class QW210 : public Keyboard {
public:
    static constexpr const ModelRow& model = modelRow("qw210");
    explicit QW210(const std::string& path);
};

class PYRUX_QW210 final : public FullKeyboardHost<QW210, PYRUX_QW210_Base> {
public:
    using DirectLightHost::DirectLightHost;
};

} // namespace pyrux
