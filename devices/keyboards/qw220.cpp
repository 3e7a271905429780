#include "devices/keyboards/qw220.h"

#include "devices/keyboards/matrix_keys.h"
#include "pyrux/pyrux.h"

namespace pyrux {

namespace {

std::atomic<bool> fnHeld{false};

/// QW210's keys without F2, F3, F0 and F4, which stand at places 108 to 111.
constexpr auto keyUsages = [] {
    auto keys = fullSizeKeys;
    for (std::size_t place = 108; place < 112; ++place)
        keys[place] = USAGE_NO_KEY;
    return keys;
}();

constexpr KeyboardLayout ownLayout{
    .model = QW220::model,
    .effects = {.maskBytes = 20, .zoneBytes = 160},
    .lights = DirectLightRow{.leds = 137},
    .keys = KeyReportRow{.usages = keyUsages, .fnHeld = fnHeld},
    .status = {.serviceName = "qw220",
               .otherTypes = OtherStatusTypes::endEffect,
               .customEnds = true,
               .chart = {.columns = 23, .firstLed = 0, .ledsPerColumn = 6, .ledsSent = 138}},
};

} // namespace

QW220::QW220(const std::string& path) : Keyboard(path, ownLayout) {}

} // namespace pyrux

PYRUX_FACTORY(qw220, pyrux::PYRUX_QW220)
