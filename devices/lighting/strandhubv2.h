#pragma once

#include "devices/lighting/strand_controller.h"

#include <string>

namespace pyrux {

class STRANDHUBV2 : public StrandController {
public:
    static constexpr const ModelRow& model = modelRow("strandhubv2");
    explicit STRANDHUBV2(const std::string& path) : StrandController(path, model) {}
};

class PYRUX_STRANDHUBV2 final : public StrandHost<STRANDHUBV2, PYRUX_STRANDHUBV2_Base> {
public:
    using StrandHost::StrandHost;
};

} // namespace pyrux
