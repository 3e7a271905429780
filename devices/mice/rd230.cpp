#include "devices/mice/rd230.h"

#include "pyrux/pyrux.h"

#include <atomic>

namespace pyrux {

namespace {

std::atomic<bool> shift{false};
const LedMouseTraits rd230Traits = ledMouseTraits(RD230::model, shift, firstEffectModes);

} // namespace

RD230::RD230(const std::string& path) : LedMouse(path, rd230Traits) {}

} // namespace pyrux

PYRUX_FACTORY(rd230, pyrux::PYRUX_RD230)
