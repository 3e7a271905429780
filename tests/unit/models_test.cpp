// The table of factories.

#include "core/models.h"

#include "core/log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace pyrux;

struct Expected {
    const char *exportName, *model;
    int deviceType;
    int category; ///< -1: one without a tag, so that nothing is logged.
};

// clang-format off
const Expected expected[]{
    {"glow2", "GLOW HUB II", 20, 18},
    {"glow_hub", "GLOW HUB", 4, 5},
    {"playdock", "PLAY DOCK", 86, 57},
    {"strandhub", "STRANDHUB", 47, 37},
    {"strandhubv2", "STRANDHUBV2", 81, 54},
    {"voxdock", "VOX DOCK", 27, 23},
    {"vk410", "VK410", 13, 9},
    {"hs110", "HS110", 84, 56},
    {"qw210", "QW210", 38, 31},
    {"qw220", "QW220", 39, 32},
    {"qw110", "QW110", 44, 36},
    {"qw310", "QW310", 71, 48},
    {"deckpanel", "DECKPANEL", 29, 25},
    {"kx9", "KX9", 28, 24},
    {"tz880", "TZ880", 19, 17},
    {"tb310", "TB310", 37, 30},
    {"tb320", "TB320", 54, 43},
    {"mn41", "MN41", 79, -1},
    {"hs410", "HS410", 15, 11},
    {"vk320", "VK320", 16, 12},
    {"vk950", "VK950", 85, 55},
    {"fz140", "FZ140", 17, 15},
    {"voltgrid", "VOLTGRID", 18, 16},
    {"hs210", "HS210", 24, 21},
    {"hs220", "HS220", 21, 19},
    {"hs310", "HS310", 3, 4},
    {"qw410", "QW410", 2, 3},
    {"fz280", "FZ280", 42, 34},
    {"rd110", "RD110", 72, 49},
    {"rd210", "RD210", 31, 26},
    {"rd215", "RD215", 35, 28},
    {"rd220", "RD220", 74, 51},
    {"rd230", "RD230", 43, 35},
    {"rd240", "RD240", 52, 41},
    {"rd245", "RD245", 68, 46},
    {"rd115", "RD115", 77, 52},
    {"rd410", "RD410", 0, 1},
    {"rd415", "RD415", 36, 29},
    {"pd110", "PD110", 6, 7},
    {"pd120", "PD120", 32, 27},
    {"pd210", "PD210", 1, 2},
    {"psuCtrl", "PSUCTRL", 55, 44},
    {"tint_hub", "TINT HUB", 5, 6},
    {"qt120", "QT120", 45, 38},
    {"qt131", "QT131", 25, 22},
    {"qt122", "QT122", 40, 33},
    {"qt153", "QT153", 67, 45},
    {"qt151", "QT151", 22, 20},
    {"vk530", "VK530", 12, 8},
    {"viewsonic24", "VIEWSONIC24", 9, 13},
    {"viewsonic35", "VIEWSONIC35", 11, 14},
    {"pw520", "PW520", 14, 10},
};
// clang-format on

TEST(Models, haveTheirRows)
{
    ASSERT_EQ(std::size(expected), 52u);
    ASSERT_EQ(modelRows.size(), 52u);
    for (const Expected& each : expected) {
        const auto row = std::ranges::find_if(
            modelRows, [&](const ModelRow& one) { return one.exportName == each.exportName; });
        ASSERT_NE(row, modelRows.end()) << each.exportName;
        EXPECT_EQ(row->model, each.model);
        EXPECT_EQ(row->deviceType, each.deviceType) << each.exportName;
        if (each.category >= 0) {
            EXPECT_EQ(row->logCategory, each.category) << each.exportName;
        } else {
            std::string tag;
            EXPECT_FALSE(categoryTag(row->logCategory, tag)) << each.exportName;
        }
    }
}

TEST(Models, nameTheHostClassOfRd210)
{
    const auto row =
        std::ranges::find_if(modelRows, [](const ModelRow& one) { return one.exportName == "rd210"; });
    ASSERT_NE(row, modelRows.end());
    EXPECT_EQ(row->hostClass, "PYRUX_RD210");
}

} // namespace
