#include "devices/mice/rd110.h"

#include "pyrux/pyrux.h"

#include <atomic>

namespace pyrux {

namespace {

std::atomic<bool> shift{false};
const LedMouseTraits rd110Traits = ledMouseTraits(RD110::model, shift, laterEffectModes);

} // namespace

RD110::RD110(const std::string& path) : LedMouse(path, rd110Traits) {}

_error RD110::test()
{
    Reply reply;
    return link.get(modes::configOn, reply);
}

} // namespace pyrux

PYRUX_FACTORY(rd110, pyrux::PYRUX_RD110)
