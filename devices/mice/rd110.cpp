#include "devices/mice/rd110.h"

namespace pyrux {

namespace {

constexpr LedMouseTraits rd110Row{RD110::model, laterEffectModes};

} // namespace

RD110::RD110(const std::string& path) : LedMouse(path, rd110Row) {}

_error RD110::test()
{
    Reply reply;
    return link.get(modes::configOn, reply);
}

} // namespace pyrux

PYRUX_FACTORY(rd110, pyrux::PYRUX_RD110)
