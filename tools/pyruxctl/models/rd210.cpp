#include "models.h"
#include "models/mouse_operations.h"

#include "pyrux/rd210.h"

namespace pyrux::ctl {

namespace {

Model rd210()
{
    using Interface = PYRUX_RD210_Base;
    std::vector<Operation> operations = profileOperations<Interface>();
    operations += mouseOperations<Interface>();
    operations += {OP(exit_device, in("unplugged")).waiting(2)};
    return {
        .command = "rd210",
        .summary = "Wired mouse RD210",
        .identities = {{"RD210", 0x3A7E, 0x012F}},
        .events = {{RD210_PROFILE_CHANGED, "profile changed"},
                   {RD210_DPI_CHANGED, "DPI level changed"},
                   {RD210_KEY_DOWN, "key down"},
                   {RD210_KEY_UP, "key up"}},
        .operations = std::move(operations),
        .calls = hostCalls<Interface>(),
        .timing = {.replyMs = 2000, .opening = {.all = {1, 4}, .unanswered = {1, 4}}},
    };
}

} // namespace

std::vector<Model> models_of::plainMice()
{
    return {rd210()};
}

} // namespace pyrux::ctl
