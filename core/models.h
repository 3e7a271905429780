#pragma once

#include "core/catalogue.h"
#include "core/log.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace pyrux {

/// One model family: everything that its factory and its host object say about it.
struct ModelRow {
    std::string_view exportName; ///< The factory.
    std::string_view model;      ///< Model text of the registry.
    std::int32_t deviceType;     ///< Index of the family's first row in `deviceCatalogue`.
    int logCategory;             ///< Category of its log lines, whose tag is the name of that row.
    std::string_view hostClass;  ///< Class of its host object, as log lines name it.
};

// PD110 and TZ880 log under categories without a tag, so their lines are dropped; MN41 has none: deliberate.
// clang-format off
inline constexpr std::array modelRows{std::to_array<ModelRow>({
    {"glow2", "GLOW HUB II", 20, 18, "PYRUX_GLOW2"},
    {"glow_hub", "GLOW HUB", 4, 5, "PYRUX_GLOW"},
    {"playdock", "PLAY DOCK", 86, 57, "PYRUX_PLAY_DOCK"},
    {"strandhub", "STRANDHUB", 47, 37, "PYRUX_STRANDHUB"},
    {"strandhubv2", "STRANDHUBV2", 81, 54, "PYRUX_STRANDHUBV2"},
    {"voxdock", "VOX DOCK", 27, 23, "PYRUX_VOXDOCK"},
    {"vk410", "VK410", 13, 9, "PYRUX_VK410"},
    {"hs110", "HS110", 84, 56, "PYRUX_HS110"},
    {"qw210", "QW210", 38, 31, "PYRUX_QW210"},
    {"qw220", "QW220", 39, 32, "PYRUX_QW220"},
    {"qw110", "QW110", 44, 36, "PYRUX_QW110"},
    {"qw310", "QW310", 71, 48, "PYRUX_QW310"},
    {"deckpanel", "DECKPANEL", 29, 25, "PYRUX_DECKPANEL"},
    {"kx9", "KX9", 28, 24, "PYRUX_KX9"},
    {"tz880", "TZ880", 19, 17, "PYRUX_TZ880"},
    {"tb310", "TB310", 37, 30, "PYRUX_TB310"},
    {"tb320", "TB320", 54, 43, "PYRUX_TB320"},
    {"mn41", "MN41", 79, noCategory, "PYRUX_MN41"},
    {"hs410", "HS410", 15, 11, "PYRUX_HS410"},
    {"vk320", "VK320", 16, 12, "PYRUX_VK320"},
    {"vk950", "VK950", 85, 55, "PYRUX_VK950"},
    {"fz140", "FZ140", 17, 15, "PYRUX_FZ140"},
    {"voltgrid", "VOLTGRID", 18, 16, "PYRUX_VOLTGRID"},
    {"hs210", "HS210", 24, 21, "PYRUX_HS210"},
    {"hs220", "HS220", 21, 19, "PYRUX_HS220"},
    {"hs310", "HS310", 3, 4, "PYRUX_HS310"},
    {"qw410", "QW410", 2, 3, "PYRUX_QW410"},
    {"fz280", "FZ280", 42, 34, "PYRUX_FZ280"},
    {"rd110", "RD110", 72, 49, "PYRUX_RD110"},
    {"rd210", "RD210", 31, 26, "PYRUX_RD210"},
    {"rd215", "RD215", 35, 28, "PYRUX_RD215"},
    {"rd220", "RD220", 74, 51, "PYRUX_RD220"},
    {"rd230", "RD230", 43, 35, "PYRUX_RD230"},
    {"rd240", "RD240", 52, 41, "PYRUX_RD240"},
    {"rd245", "RD245", 68, 46, "PYRUX_RD245"},
    {"rd115", "RD115", 77, 52, "PYRUX_RD115"},
    {"rd410", "RD410", 0, 1, "PYRUX_RD410"},
    {"rd415", "RD415", 36, 29, "PYRUX_RD415"},
    {"pd110", "PD110", 6, 7, "PYRUX_PD110"},
    {"pd120", "PD120", 32, 27, "PYRUX_PD120"},
    {"pd210", "PD210", 1, 2, "PYRUX_PD210"},
    {"psuCtrl", "PSUCTRL", 55, 44, "PYRUX_PSUCTRL"},
    {"tint_hub", "TINT HUB", 5, 6, "PYRUX_TINT"},
    {"qt120", "QT120", 45, 38, "PYRUX_QT120"},
    {"qt131", "QT131", 25, 22, "PYRUX_QT131"},
    {"qt122", "QT122", 40, 33, "PYRUX_QT122"},
    {"qt153", "QT153", 67, 45, "PYRUX_QT153"},
    {"qt151", "QT151", 22, 20, "PYRUX_QT151"},
    {"vk530", "VK530", 12, 8, "PYRUX_VK530"},
    {"viewsonic24", "VIEWSONIC24", 9, 13, "PYRUX_VIEWSONIC24"},
    {"viewsonic35", "VIEWSONIC35", 11, 14, "PYRUX_VIEWSONIC35"},
    {"pw520", "PW520", 14, 10, "PYRUX_PW520"},
})};
// clang-format on

/// The row of a factory. A name that is not there does not compile.
consteval const ModelRow& modelRow(std::string_view exportName)
{
    for (const ModelRow& row : modelRows)
        if (row.exportName == exportName)
            return row;
    throw "no such model";
}

/// The full name of a host operation, as log lines carry it.
inline std::string fullName(const ModelRow& model, std::string_view operation)
{
    std::string name = "PYRUX::";
    return name.append(model.hostClass).append("::").append(operation);
}

static_assert(modelRows.size() == 52);
static_assert(modelRow("rd210").deviceType == std::int32_t(rowOf("RD210")));

} // namespace pyrux
