#pragma once

#include "models.h"
#include "mouse_records.h"

#include <vector>

namespace pyrux::ctl {

/// Puts one list of operations after another.
inline std::vector<Operation>& operator+=(std::vector<Operation>& all, const std::vector<Operation>& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

template <class Interface>
std::vector<Operation> profileOperations()
{
    return {
        OP(changeProfileId, in("profile")).waiting(2),
        OP(getCurrProfileId, out("profile")).waiting(2),
        OP(resetProfile, in("all")).waiting(4),
        OP(resetPartial, in("part")).waiting({8, 0}, {3, 0}),
    };
}

/// What all wired mice do with buttons, macros and performance.
template <class Interface>
std::vector<Operation> mouseOperations()
{
    return {
        OP(setKeyMapping, in("button"), in("code")).waiting({7, 0}, {2, 0}),
        OP(setKeyMappingAll, in<13>("map")).waiting({42, 0}, {2, 0}),
        OP(getKeyMappingAll, out<13>("map")).waiting({56, 0}, {3, 0}),
        OP(setMouseCombo, in("on")).waiting({6, 0}, {3, 0}),
        OP(getMouseCombo, out("on")).waiting(2),
        OP(startRecordMacro).waiting(2),
        OP(stopRecordMacro).waiting(1),
        OP(setMacro, in("macro")).waiting({19, 0}, {2, 0}),
        OP(getMacro, inout("macro", {"button"})).waiting({46, 0}, {2, 0}),
        OP(clearMacro, in("button")).waiting({4, 0}, {2, 0}),
        OP(setPerformance, in("record")).waiting({6, 0}, {2, 0}),
        OP(getPerformance, out("record")).waiting({5, 0}, {2, 0}),
        OP(changeDpiLevel, in("level")).waiting({4, 0}, {3, 0}),
        OP(startSurfaceLearning).waiting(2),
        OP(stopSurfaceLearning).waiting(1),
        OP(getSurfaceLearningStatus, out("status")).waiting(2),
        OP(getSurfaceLearningResult, out("a"), out("b")).waiting({5, 0}, {2, 0}),
        OP(saveConfig).waiting(3),
    };
}

} // namespace pyrux::ctl
