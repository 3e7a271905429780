#include "models.h"
#include "mouse_records.h"

#include "pyrux/rd210.h"

namespace pyrux::ctl {

Model models_of::rd210()
{
    using Interface = PYRUX_RD210_Base;
    return {
        .command = "rd210",
        .summary = "Wired mouse RD210",
        .identities = {{"RD210", 0x3A7E, 0x012F}},
        .events = {{RD210_PROFILE_CHANGED, "profile changed"},
                   {RD210_DPI_CHANGED, "DPI level changed"},
                   {RD210_KEY_DOWN, "key down"},
                   {RD210_KEY_UP, "key up"}},
        .operations =
            {
                OP(changeProfileId, in("profile")),
                OP(getCurrProfileId, out("profile")),
                OP(resetProfile, in("all")),
                OP(resetPartial, in("part")),
                OP(setKeyMapping, in("button"), in("code")),
                OP(setKeyMappingAll, in<13>("map")),
                OP(getKeyMappingAll, out<13>("map")),
                OP(setMouseCombo, in("on")),
                OP(getMouseCombo, out("on")),
                OP(startRecordMacro),
                OP(stopRecordMacro),
                OP(setMacro, in("macro")),
                OP(getMacro, inout("macro", {"button"})),
                OP(clearMacro, in("button")),
                OP(setPerformance, in("record")),
                OP(getPerformance, out("record")),
                OP(changeDpiLevel, in("level")),
                OP(startSurfaceLearning),
                OP(stopSurfaceLearning),
                OP(getSurfaceLearningStatus, out("status")),
                OP(getSurfaceLearningResult, out("a"), out("b")),
                OP(saveConfig),
                OP(exit_device, in("unplugged")),
            },
        .calls = hostCalls<Interface>(),
    };
}

} // namespace pyrux::ctl
