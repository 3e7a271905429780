#pragma once

#include "devices/lighting/strand_controller.h"

#include <string>

namespace pyrux {

class STRANDHUB : public StrandController {
public:
    static constexpr const ModelRow& model = modelRow("strandhub");
    explicit STRANDHUB(const std::string& path) : StrandController(path, model) {}
};

class PYRUX_STRANDHUB final : public StrandHost<STRANDHUB, PYRUX_STRANDHUB_Base> {
public:
    using StrandHost::StrandHost;
};

} // namespace pyrux
