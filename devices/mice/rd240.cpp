#include "devices/mice/rd240.h"

#include "pyrux/pyrux.h"

#include <atomic>

namespace pyrux {

namespace {

std::atomic<bool> shift{false};
const LedMouseTraits rd240Traits = ledMouseTraits(RD240::model, shift, laterEffectModes);

} // namespace

RD240::RD240(const std::string& path) : LedMouse(path, rd240Traits) {}

} // namespace pyrux

PYRUX_FACTORY(rd240, pyrux::PYRUX_RD240)
