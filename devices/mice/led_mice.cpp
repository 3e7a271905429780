// The wired mice with lights that have nothing of their own.

#include "devices/mice/led_mouse.h"
#include "devices/variant.h"

namespace pyrux {

namespace {

constexpr LedMouseTraits rd215Row{modelRow("rd215"), firstEffectModes};
constexpr LedMouseTraits rd230Row{modelRow("rd230"), firstEffectModes};
constexpr LedMouseTraits rd240Row{modelRow("rd240"), laterEffectModes};

template <const LedMouseTraits& row, class Interface>
using Mouse = VariantHost<LedMouseHost, Variant<LedMouse, row>, Interface>;

} // namespace

} // namespace pyrux

PYRUX_FACTORY(rd215, pyrux::Mouse<pyrux::rd215Row, PYRUX_RD215_Base>)
PYRUX_FACTORY(rd230, pyrux::Mouse<pyrux::rd230Row, PYRUX_RD230_Base>)
PYRUX_FACTORY(rd240, pyrux::Mouse<pyrux::rd240Row, PYRUX_RD240_Base>)
