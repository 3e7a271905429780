#pragma once

#include "devices/keyboards/keyboard_host.h"
#include "pyrux/qw220.h"

#include <string>

namespace pyrux {

class QW220 : public Keyboard {
public:
    static constexpr const ModelRow& model = modelRow("qw220");
    explicit QW220(const std::string& path);
};

class PYRUX_QW220 final : public FullKeyboardHost<QW220, PYRUX_QW220_Base> {
public:
    using DirectLightHost::DirectLightHost;
};

} // namespace pyrux
