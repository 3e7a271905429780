// The catalogue of devices, row by row, and its look-ups.

#include "core/catalogue.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace pyrux;

struct Row {
    const char* name;
    int vid, pid, interface, usagePage;
    unsigned flags;
};

// clang-format off
const Row rows[]{
    {"RD410", 0x3A7E, 0x006B, 1, -1, 0}, // 0
    {"PD210", 0x3A7E, 0x006D, 1, -1, 0}, // 1
    {"QW410", 0x3A7E, 0x0069, 1, -1, 0}, // 2
    {"HS310", 0x3A7E, 0x0093, 3, 0xFF00, 0}, // 3
    {"GLOWHUB", 0x3A7E, 0x1011, 0, -1, 0}, // 4
    {"TINTHUB", 0x3A7E, 0x004F, 1, -1, 0}, // 5
    {"PD110M", 0x3A7E, 0x0105, -1, -1, 0}, // 6
    {"PD110L", 0x3A7E, 0x0107, -1, -1, 0}, // 7
    {"PD110XL", 0x3A7E, 0x0109, -1, -1, 0}, // 8
    {"VIEWSONIC24", 0x3109, 0x2813, 0, -1, 0}, // 9
    {"ACERRGB", 0x3A7E, 0x010B, 1, -1, 0}, // 10
    {"VIEWSONIC35", 0x0813, 0x2109, 0, -1, 0}, // 11
    {"VK530", 0x3A7E, 0x1006, -1, -1, 0}, // 12
    {"VK410", 0x3A7E, 0x1004, 0, -1, 0}, // 13
    {"PW520", 0x3A7E, 0x017B, 0, -1, 0}, // 14
    {"HS410", 0x3A7E, 0x010D, 1, -1, 0}, // 15
    {"VK320", 0x3A7E, 0x1001, 0, -1, 0}, // 16
    {"FZ140", 0x3A7E, 0x1000, 0, -1, 0}, // 17
    {"VOLTGRID", 0x3A7E, 0x0030, -1, -1, 0}, // 18
    {"TZ880", 0x2D99, 0x0027, 0, -1, 0}, // 19
    {"GLOWHUB2", 0x3A7E, 0x1007, 0, -1, 0}, // 20
    {"HS220", 0x3A7E, 0x0113, 3, -1, 0}, // 21
    {"QT151B", 0x3A7E, 0x0091, 1, -1, 0}, // 22
    {"QT151W", 0x3A7E, 0x0127, 1, -1, 0}, // 23
    {"HS210", 0x3A7E, 0x0111, -1, -1, 0}, // 24
    {"QT131B", 0x3A7E, 0x008B, 1, -1, 0}, // 25
    {"QT131W", 0x3A7E, 0x0125, 1, -1, 0}, // 26
    {"VOXDOCK", 0x3A7E, 0xFFFF, 3, -1, 0}, // 27
    {"KX9", 0x04D9, 0x026D, -1, -1, 0}, // 28
    {"DECKPANELG", 0x3A7E, 0x012D, 1, -1, 0}, // 29
    {"DECKPANELC", 0x3A7E, 0x007B, 1, -1, 0}, // 30
    {"RD210", 0x3A7E, 0x012F, 1, -1, 0}, // 31
    {"PD120M", 0x3A7E, 0x0137, 1, -1, 0}, // 32
    {"PD120L", 0x3A7E, 0x0139, 1, -1, 0}, // 33
    {"PD120XL", 0x3A7E, 0x013B, 1, -1, 0}, // 34
    {"RD215", 0x3A7E, 0x0101, 1, -1, 0}, // 35
    {"RD415", 0x3A7E, 0x011B, 1, -1, 0}, // 36
    {"TB310", 0x3A7E, 0x1008, 0, -1, 0}, // 37
    {"QW205V2", 0x3A7E, 0x0147, 1, -1, 0}, // 38
    {"QW225V2", 0x3A7E, 0x0145, 1, -1, 0}, // 39
    {"QT122B", 0x3A7E, 0x0149, 1, -1, 1}, // 40
    {"QT122W", 0x3A7E, 0x014B, 1, -1, 1}, // 41
    {"FZ280", 0x3A7E, 0x0155, 0, -1, 0}, // 42
    {"RD230", 0x3A7E, 0x0141, 1, -1, 0}, // 43
    {"QW110", 0x3A7E, 0x014F, 3, -1, 0}, // 44
    {"QT120B", 0x3A7E, 0x0157, 1, -1, 0}, // 45
    {"QT120W", 0x3A7E, 0x0159, 1, -1, 0}, // 46
    {"STRANDHUB", 0x3A7E, 0x0173, 1, -1, 0}, // 47
    {"PW510", 0x3A7E, 0x0179, 0, -1, 0}, // 48
    {"PW530", 0x3A7E, 0x017D, 0, -1, 0}, // 49
    {"QT154", 0x3A7E, 0x015B, 1, -1, 1}, // 50
    {"QT152", 0x3A7E, 0x015D, 1, -1, 1}, // 51
    {"RD240", 0x3A7E, 0x0165, 1, -1, 0}, // 52
    {"TB305", 0x3A7E, 0x01A7, 0, -1, 0}, // 53
    {"TB320", 0x3A7E, 0x01A9, 0, -1, 0}, // 54
    {"AU_LINE_550_MULTI", 0x3A7E, 0x018D, -1, -1, 0}, // 55
    {"AU_LINE_650_MULTI", 0x3A7E, 0x018F, -1, -1, 0}, // 56
    {"AU_LINE_750_MULTI", 0x3A7E, 0x0191, -1, -1, 0}, // 57
    {"AU_LINE_850_MULTI", 0x3A7E, 0x0193, -1, -1, 0}, // 58
    {"AU_LINE_550_SINGLE", 0x3A7E, 0x0195, -1, -1, 0}, // 59
    {"AU_LINE_650_SINGLE", 0x3A7E, 0x0197, -1, -1, 0}, // 60
    {"AU_LINE_750_SINGLE", 0x3A7E, 0x0199, -1, -1, 0}, // 61
    {"AU_LINE_850_SINGLE", 0x3A7E, 0x019B, -1, -1, 0}, // 62
    {"SILENT_1300", 0x3A7E, 0x01A5, -1, -1, 0}, // 63
    {"PT_LINE_650_MULTI", 0x3A7E, 0x019D, -1, -1, 0}, // 64
    {"PT_LINE_750_MULTI", 0x3A7E, 0x019F, -1, -1, 0}, // 65
    {"PT_LINE_850_MULTI", 0x3A7E, 0x01A1, -1, -1, 0}, // 66
    {"QT153", 0x3A7E, 0x01AB, 1, -1, 1}, // 67
    {"RD245", 0x3A7E, 0x0167, 3, -1, 0}, // 68
    {"RD245_DONGLE", 0x3A7E, 0x0171, 3, -1, 4}, // 69
    {"FZ140_OLD", 0x3A7E, 0x1000, -1, -1, 0}, // 70
    {"QW310", 0x3A7E, 0x016D, 3, -1, 0}, // 71
    {"RD110", 0x3A7E, 0x015F, 1, -1, 0}, // 72
    {"QX310", 0x3A7E, 0x016F, 3, -1, 0}, // 73
    {"RD220", 0x3A7E, 0x0169, 3, -1, 0}, // 74
    {"RD220_DONGLE", 0x3A7E, 0x0187, 3, -1, 4}, // 75
    {"UNIVERSAL_DONGLE", 0x3A7E, 0x01B7, 3, -1, 4}, // 76
    {"RD115", 0x3A7E, 0x0161, 3, -1, 0}, // 77
    {"RD115_DONGLE", 0x3A7E, 0x0181, 3, -1, 4}, // 78
    {"MN41-QA", 0x3A7E, 0x01BB, 0, -1, 0}, // 79
    {"MN58-QB", 0x3A7E, 0x01BF, 0, -1, 0}, // 80
    {"STRANDHUBV2", 0x3A7E, 0x01C9, 1, -1, 0}, // 81
    {"QW310_UNIVERSAL_DONGLE", 0x3A7E, 0x0183, 3, -1, 4}, // 82
    {"QX310_UNIVERSAL_DONGLE", 0x3A7E, 0x01C3, 3, -1, 4}, // 83
    {"HS110", 0x3A7E, 0x01C7, 3, -1, 0}, // 84
    {"VK950", 0x3A7E, 0x01C1, 0, -1, 0}, // 85
    {"PLAY_DOCK", 0x3A7E, 0x0153, 0, -1, 0}, // 86
};
// clang-format on

TEST(Catalogue, hasItsRowsInTheirOrder)
{
    ASSERT_EQ(deviceCatalogue.size(), 87u);
    ASSERT_EQ(std::size(rows), 87u);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const DeviceRow& row = deviceCatalogue[i];
        EXPECT_EQ(std::string(row.name), rows[i].name) << i;
        EXPECT_EQ(row.vid, rows[i].vid) << i;
        EXPECT_EQ(row.pid, rows[i].pid) << i;
        EXPECT_EQ(row.interface, rows[i].interface) << i;
        EXPECT_EQ(row.usagePage, rows[i].usagePage) << i;
        EXPECT_EQ(row.enabled, 1) << i;
        EXPECT_EQ(row.flags, rows[i].flags) << i;
    }
}

TEST(Catalogue, hasFieldsOfTheirWidthInTheirOrder)
{
    static_assert(std::is_same_v<decltype(DeviceRow::vid), std::uint16_t>);
    static_assert(std::is_same_v<decltype(DeviceRow::pid), std::uint16_t>);
    static_assert(std::is_same_v<decltype(DeviceRow::interface), std::int32_t>);
    static_assert(std::is_same_v<decltype(DeviceRow::usagePage), std::int32_t>);
    static_assert(std::is_same_v<decltype(DeviceRow::enabled), std::int32_t>);
    static_assert(std::is_same_v<decltype(DeviceRow::flags), std::uint32_t>);
    static_assert(offsetof(DeviceRow, name) < offsetof(DeviceRow, vid) &&
                  offsetof(DeviceRow, vid) < offsetof(DeviceRow, pid) &&
                  offsetof(DeviceRow, pid) < offsetof(DeviceRow, interface) &&
                  offsetof(DeviceRow, interface) < offsetof(DeviceRow, usagePage) &&
                  offsetof(DeviceRow, usagePage) < offsetof(DeviceRow, enabled) &&
                  offsetof(DeviceRow, enabled) < offsetof(DeviceRow, flags));
}

TEST(Catalogue, namesTheFirstRowOfAnIdentity)
{
    std::set<std::pair<int, int>> seen;
    for (const Row& row : rows)
        if (seen.emplace(row.vid, row.pid).second) {
            EXPECT_EQ(std::string(findNameByVidPid(std::uint16_t(row.vid), std::uint16_t(row.pid))),
                      row.name);
        }
    EXPECT_EQ(seen.size(), 86u);
    EXPECT_EQ(std::string(findNameByVidPid(0x3A7E, 0x1000)), "FZ140"); // FZ140_OLD has the same
    EXPECT_EQ(std::string(findNameByVidPid(0x3A7E, 0xFFFF)), "VOXDOCK");
}

TEST(Catalogue, namesNothingElse)
{
    EXPECT_EQ(std::string(findNameByVidPid(0, 0)), "");
    EXPECT_EQ(std::string(findNameByVidPid(0x3A7E, 0)), "");
    EXPECT_EQ(std::string(findNameByVidPid(0x012F, 0x3A7E)), "");
    EXPECT_EQ(std::string(findNameByVidPid(0x3A7F, 0x012F)), "");
    EXPECT_EQ(std::string(findNameByVidPid(0xFFFF, 0xFFFF)), "");
}

std::pair<int, int> identityOfName(const char* name)
{
    std::uint16_t vid = 0xEEEE;
    std::uint16_t pid = 0xEEEE;
    findVidPidByName(name, vid, pid);
    return {vid, pid};
}

TEST(Catalogue, findsTheIdentityOfAName)
{
    for (const Row& row : rows)
        EXPECT_EQ(identityOfName(row.name), std::pair(row.vid, row.pid)) << row.name;
}

TEST(Catalogue, comparesNamesAsAWhole)
{
    for (const char* name :
         {"rd210", "Rd210", "RD21", "RD2100", "RD210 ", " RD210", "", "FZ140_old", "RD210_DONGLE"})
        EXPECT_EQ(identityOfName(name), std::pair(0, 0)) << name;
}

TEST(AudioDeviceTable, hasItsRows)
{
    struct Expected {
        const char* name;
        int vid, pid, chipVid, chipPid;
        const char *manufacturer, *driverTag, *friendlyName;
    };
    const Expected expected[]{
        {"HS410", 0x3A7E, 0x010D, 0x0D8C, 0x0012, "C-MEDIA Inc.", "TWUAC", "USB Audio Device"},
        {"HS210", 0x3A7E, 0x0111, 0x3A7E, 0x0129, "Tessel Works", "TWTAC", "HS210"},
        {"HS220", 0x3A7E, 0x0113, 0x3A7E, 0x0113, "Tessel Works", "TWTAC", "HS220"},
        {"HS110", 0x3A7E, 0x01C7, 0x3A7E, 0x01C7, "Tessel Works", "TWTAC", "HS110"},
    };
    ASSERT_EQ(audioDeviceTable.size(), std::size(expected));
    static_assert(sizeof(AudioDeviceRow::manufacturer) == 512);
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const AudioDeviceRow& row = audioDeviceTable[i];
        EXPECT_EQ(std::string(row.name), expected[i].name);
        EXPECT_EQ(row.vid, expected[i].vid);
        EXPECT_EQ(row.pid, expected[i].pid);
        EXPECT_EQ(row.chipVid, expected[i].chipVid);
        EXPECT_EQ(row.chipPid, expected[i].chipPid);
        EXPECT_EQ(std::string(row.manufacturer), expected[i].manufacturer);
        EXPECT_EQ(std::string(row.driverTag), expected[i].driverTag);
        EXPECT_EQ(std::string(row.friendlyName), expected[i].friendlyName);
    }
}

TEST(AudioEndpoints, haveTheirRows)
{
    struct Expected {
        const char *name, *endpointName;
        int length;
    };
    const Expected expected[]{{"HS310", "HS310", 5},
                              {"HS410", "USB Audio Device", 16},
                              {"HS210", "HS210", 5},
                              {"HS220", "HS220", 5},
                              {"HS110", "HS110", 5}};
    ASSERT_EQ(audioEndpointTable.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(std::string(audioEndpointTable[i].name), expected[i].name);
        EXPECT_EQ(std::string(audioEndpointTable[i].endpointName), expected[i].endpointName);
        EXPECT_EQ(audioEndpointTable[i].endpointNameLength, expected[i].length);
    }
}

} // namespace
