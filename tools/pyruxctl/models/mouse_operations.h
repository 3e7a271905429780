#pragma once

#include "models.h"
#include "mouse_records.h"

#include <vector>

namespace pyrux::ctl {

/// Puts one list of operations behind another.
inline std::vector<Operation>& operator+=(std::vector<Operation>& all, const std::vector<Operation>& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

template <class Interface>
std::vector<Operation> profileOperations()
{
    return {
        OP(changeProfileId, in("profile")),
        OP(getCurrProfileId, out("profile")),
        OP(resetProfile, in("all")),
        OP(resetPartial, in("part")),
    };
}

/// What all wired mice do with buttons, macros and performance.
template <class Interface>
std::vector<Operation> mouseOperations()
{
    return {
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
    };
}

} // namespace pyrux::ctl
