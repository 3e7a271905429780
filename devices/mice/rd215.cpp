#include "devices/mice/rd215.h"

#include "pyrux/pyrux.h"

#include <atomic>

namespace pyrux {

namespace {

std::atomic<bool> shift{false};
const LedMouseTraits rd215Traits = ledMouseTraits(RD215::model, shift, firstEffectModes);

} // namespace

RD215::RD215(const std::string& path) : LedMouse(path, rd215Traits) {}

} // namespace pyrux

PYRUX_FACTORY(rd215, pyrux::PYRUX_RD215)
