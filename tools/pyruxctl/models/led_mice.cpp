#include "lighting.h"
#include "models.h"
#include "models/mouse_operations.h"

#include "pyrux/led_mouse.h"
#include "pyrux/rd110.h"

namespace pyrux::ctl {

namespace {

template <class Interface>
Model ledMouse(std::string_view command, std::string_view summary, Identity identity,
               const std::vector<Operation>& more = {})
{
    std::vector<Operation> operations{
        OP(setLightingInit).waiting(0, 2),
        OP(setLightingUninit).waiting(0, 1),
        ledFrameOperation<Interface>(),
        OP(setLightingTurnOff),
    };
    operations += profileOperations<Interface>();
    operations += {
        OP(setEffectMode, in("mode")).waiting(2),
        OP(getEffectMode, out("mode")).waiting(2),
        OP(setGeneralEffect, in("effect")).waiting({4, 0}, {2, 0}),
        OP(getGeneralEffect, inout("effect", {"mode"})).waiting(2),
        OP(setCustomEffect, in<6>("colors")).waiting({4, 0}, {2, 0}),
        OP(getCustomEffect, out<6>("colors")).waiting(2),
    };
    operations += mouseOperations<Interface>();
    operations += more;
    operations += {OP(exit_device, in("unplugged")).waiting(2)};
    return {
        .command = command,
        .summary = summary,
        .identities = {identity},
        .events = {{LED_MOUSE_PROFILE_CHANGED, "profile changed"},
                   {LED_MOUSE_DPI_CHANGED, "DPI level changed"},
                   {LED_MOUSE_EFFECT_MODE_CHANGED, "effect mode changed"},
                   {LED_MOUSE_EFFECT_DATA_CHANGED, "effect data changed"},
                   {LED_MOUSE_KEY_DOWN, "key down"},
                   {LED_MOUSE_KEY_UP, "key up"}},
        .operations = std::move(operations),
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 2000, .opening = {.all = {1, 4}, .unanswered = {1, 4}}},
    };
}

std::vector<Operation> rd110Operations()
{
    using Interface = PYRUX_RD110_Base;
    return {OP(test).waiting(1), OP(getMacroAll, out("list")).waiting({586, 0}, {2, 0})};
}

} // namespace

std::vector<Model> models_of::ledMice()
{
    return {
        ledMouse<PYRUX_RD110_Base>("rd110", "Wired mouse RD110, with lights", {"RD110", 0x3A7E, 0x015F},
                                   rd110Operations()),
        ledMouse<PYRUX_RD215_Base>("rd215", "Wired mouse RD215, with lights", {"RD215", 0x3A7E, 0x0101}),
        ledMouse<PYRUX_RD230_Base>("rd230", "Wired mouse RD230, with lights", {"RD230", 0x3A7E, 0x0141}),
        ledMouse<PYRUX_RD240_Base>("rd240", "Wired mouse RD240, with lights", {"RD240", 0x3A7E, 0x0165}),
    };
}

} // namespace pyrux::ctl
