#include "devices/mice/rd110.h"

#include "pyrux/pyrux.h"

#include <atomic>
#include <iterator>

namespace pyrux {

namespace {

constexpr std::uint8_t noMacro = 3; // mode of a button without one

std::atomic<bool> shift{false};
const LedMouseTraits rd110Traits = ledMouseTraits(RD110::model, shift, laterEffectModes);

} // namespace

RD110::RD110(const std::string& path) : LedMouse(path, rd110Traits) {}

_error RD110::test()
{
    Reply reply;
    return get(cmd::configOn, reply);
}

_error RD110::getMacroAll(MouseMacroList* list)
{
    if (!list)
        return E_INVALID_GET;
    list->count = 0;
    set(cmd::configOn);
    for (std::uint8_t button = 0; button < std::size(list->macros); ++button) {
        MouseMacroRecord macro{};
        macro.button = button;
        if (const _error result = readMacro(macro))
            return result;
        if (macro.mode != noMacro)
            list->macros[list->count++] = macro;
    }
    return E_OK;
}

} // namespace pyrux

PYRUX_FACTORY(rd110, pyrux::PYRUX_RD110)
