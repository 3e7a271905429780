// The keyboards with a status effect that have nothing of their own.

#include "devices/keyboards/keyboard_host.h"
#include "devices/keyboards/matrix_keys.h"
#include "devices/variant.h"
#include "pyrux/qw_keyboard.h"

namespace pyrux {

namespace {

constexpr KeyboardLayout qw210Row{
    .model = modelRow("qw210"),
    .lights = DirectLightRow{},
    .keys = KeyReportRow{.usages = fullSizeKeys},
    .status = {.serviceName = "qw210"},
};

/// QW210's keys without F2, F3, F0 and F4, which stand at places 108 to 111.
constexpr auto qw220Keys = [] {
    auto keys = fullSizeKeys;
    for (std::size_t place = 108; place < 112; ++place)
        keys[place] = USAGE_NO_KEY;
    return keys;
}();

constexpr KeyboardLayout qw220Row{
    .model = modelRow("qw220"),
    .effects = {.maskBytes = 20, .zoneBytes = 160},
    .lights = DirectLightRow{.leds = 137},
    .keys = KeyReportRow{.usages = qw220Keys},
    .status = {.serviceName = "qw220",
               .otherTypes = OtherStatusTypes::endEffect,
               .customEnds = true,
               .chart = {.columns = 23, .firstLed = 0, .ledsPerColumn = 6, .ledsSent = 138}},
};

template <const KeyboardLayout& row, class Interface>
using FullKeyboard = VariantHost<FullKeyboardHost, Variant<Keyboard, row>, Interface>;

} // namespace

} // namespace pyrux

PYRUX_FACTORY(qw210, pyrux::FullKeyboard<pyrux::qw210Row, PYRUX_QW210_Base>)
PYRUX_FACTORY(qw220, pyrux::FullKeyboard<pyrux::qw220Row, PYRUX_QW220_Base>)
