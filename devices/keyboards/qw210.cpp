#include "devices/keyboards/qw210.h"

#include "devices/keyboards/matrix_keys.h"
#include "pyrux/pyrux.h"

namespace pyrux {

namespace {

std::atomic<bool> fnHeld{false};

constexpr KeyboardLayout ownLayout{
    .model = QW210::model,
    .lights = DirectLightRow{},
    .keys = KeyReportRow{.usages = fullSizeKeys, .fnHeld = fnHeld},
    .status = {.serviceName = "qw210"},
};

} // namespace

QW210::QW210(const std::string& path) : Keyboard(path, ownLayout) {}

} // namespace pyrux

PYRUX_FACTORY(qw210, pyrux::PYRUX_QW210)
