#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace pyrux {

/// Bits of `DeviceRow::flags`.
enum RowFlag : std::uint32_t {
    none = 0,
    bluetooth = 1, ///< Has a Bluetooth module whose version `getBTVersion` can read.
    receiver = 4,  ///< Is a wireless receiver.
};

/// Stands in `DeviceRow::usagePage` for any page.
constexpr std::int32_t anyUsagePage = -1;

/// One USB HID interface that the library can drive.
struct DeviceRow {
    const char* name; ///< Model key; the text that the library reports for the device and shows in log tags.
    std::uint16_t vid;
    std::uint16_t pid;
    std::int32_t interface; ///< Interface number; -1: a device that is not composite. No wildcard.
    std::int32_t usagePage; ///< `anyUsagePage`, or what the interface's usage page must be.
    std::int32_t enabled;   ///< `devInfo` offers only rows with 1.
    std::uint32_t flags;    ///< `RowFlag`
};

// A row's index is the device type of the registry and names log categories: rows are never reordered.
// clang-format off
inline constexpr std::array<DeviceRow, 87> deviceCatalogue{{
    {"RD410", 0x3A7E, 0x006B, 1, anyUsagePage, 1, RowFlag::none},
    {"PD210", 0x3A7E, 0x006D, 1, anyUsagePage, 1, RowFlag::none},
    {"QW410", 0x3A7E, 0x0069, 1, anyUsagePage, 1, RowFlag::none},
    {"HS310", 0x3A7E, 0x0093, 3, 0xFF00, 1, RowFlag::none},
    {"GLOWHUB", 0x3A7E, 0x1011, 0, anyUsagePage, 1, RowFlag::none},
    {"TINTHUB", 0x3A7E, 0x004F, 1, anyUsagePage, 1, RowFlag::none},
    {"PD110M", 0x3A7E, 0x0105, -1, anyUsagePage, 1, RowFlag::none},
    {"PD110L", 0x3A7E, 0x0107, -1, anyUsagePage, 1, RowFlag::none},
    {"PD110XL", 0x3A7E, 0x0109, -1, anyUsagePage, 1, RowFlag::none},
    {"VIEWSONIC24", 0x3109, 0x2813, 0, anyUsagePage, 1, RowFlag::none},
    {"ACERRGB", 0x3A7E, 0x010B, 1, anyUsagePage, 1, RowFlag::none},
    {"VIEWSONIC35", 0x0813, 0x2109, 0, anyUsagePage, 1, RowFlag::none},
    {"VK530", 0x3A7E, 0x1006, -1, anyUsagePage, 1, RowFlag::none},
    {"VK410", 0x3A7E, 0x1004, 0, anyUsagePage, 1, RowFlag::none},
    {"PW520", 0x3A7E, 0x017B, 0, anyUsagePage, 1, RowFlag::none},
    {"HS410", 0x3A7E, 0x010D, 1, anyUsagePage, 1, RowFlag::none},
    {"VK320", 0x3A7E, 0x1001, 0, anyUsagePage, 1, RowFlag::none},
    {"FZ140", 0x3A7E, 0x1000, 0, anyUsagePage, 1, RowFlag::none},
    {"VOLTGRID", 0x3A7E, 0x0030, -1, anyUsagePage, 1, RowFlag::none},
    {"TZ880", 0x2D99, 0x0027, 0, anyUsagePage, 1, RowFlag::none},
    {"GLOWHUB2", 0x3A7E, 0x1007, 0, anyUsagePage, 1, RowFlag::none},
    {"HS220", 0x3A7E, 0x0113, 3, anyUsagePage, 1, RowFlag::none},
    {"QT151B", 0x3A7E, 0x0091, 1, anyUsagePage, 1, RowFlag::none},
    {"QT151W", 0x3A7E, 0x0127, 1, anyUsagePage, 1, RowFlag::none},
    {"HS210", 0x3A7E, 0x0111, -1, anyUsagePage, 1, RowFlag::none},
    {"QT131B", 0x3A7E, 0x008B, 1, anyUsagePage, 1, RowFlag::none},
    {"QT131W", 0x3A7E, 0x0125, 1, anyUsagePage, 1, RowFlag::none},
    {"VOXDOCK", 0x3A7E, 0xFFFF, 3, anyUsagePage, 1, RowFlag::none},
    {"KX9", 0x04D9, 0x026D, -1, anyUsagePage, 1, RowFlag::none},
    {"DECKPANELG", 0x3A7E, 0x012D, 1, anyUsagePage, 1, RowFlag::none},
    {"DECKPANELC", 0x3A7E, 0x007B, 1, anyUsagePage, 1, RowFlag::none},
    {"RD210", 0x3A7E, 0x012F, 1, anyUsagePage, 1, RowFlag::none},
    {"PD120M", 0x3A7E, 0x0137, 1, anyUsagePage, 1, RowFlag::none},
    {"PD120L", 0x3A7E, 0x0139, 1, anyUsagePage, 1, RowFlag::none},
    {"PD120XL", 0x3A7E, 0x013B, 1, anyUsagePage, 1, RowFlag::none},
    {"RD215", 0x3A7E, 0x0101, 1, anyUsagePage, 1, RowFlag::none},
    {"RD415", 0x3A7E, 0x011B, 1, anyUsagePage, 1, RowFlag::none},
    {"TB310", 0x3A7E, 0x1008, 0, anyUsagePage, 1, RowFlag::none},
    {"QW205V2", 0x3A7E, 0x0147, 1, anyUsagePage, 1, RowFlag::none},
    {"QW225V2", 0x3A7E, 0x0145, 1, anyUsagePage, 1, RowFlag::none},
    {"QT122B", 0x3A7E, 0x0149, 1, anyUsagePage, 1, RowFlag::bluetooth},
    {"QT122W", 0x3A7E, 0x014B, 1, anyUsagePage, 1, RowFlag::bluetooth},
    {"FZ280", 0x3A7E, 0x0155, 0, anyUsagePage, 1, RowFlag::none},
    {"RD230", 0x3A7E, 0x0141, 1, anyUsagePage, 1, RowFlag::none},
    {"QW110", 0x3A7E, 0x014F, 3, anyUsagePage, 1, RowFlag::none},
    {"QT120B", 0x3A7E, 0x0157, 1, anyUsagePage, 1, RowFlag::none},
    {"QT120W", 0x3A7E, 0x0159, 1, anyUsagePage, 1, RowFlag::none},
    {"STRANDHUB", 0x3A7E, 0x0173, 1, anyUsagePage, 1, RowFlag::none},
    {"PW510", 0x3A7E, 0x0179, 0, anyUsagePage, 1, RowFlag::none},
    {"PW530", 0x3A7E, 0x017D, 0, anyUsagePage, 1, RowFlag::none},
    {"QT154", 0x3A7E, 0x015B, 1, anyUsagePage, 1, RowFlag::bluetooth},
    {"QT152", 0x3A7E, 0x015D, 1, anyUsagePage, 1, RowFlag::bluetooth},
    {"RD240", 0x3A7E, 0x0165, 1, anyUsagePage, 1, RowFlag::none},
    {"TB305", 0x3A7E, 0x01A7, 0, anyUsagePage, 1, RowFlag::none},
    {"TB320", 0x3A7E, 0x01A9, 0, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_550_MULTI", 0x3A7E, 0x018D, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_650_MULTI", 0x3A7E, 0x018F, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_750_MULTI", 0x3A7E, 0x0191, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_850_MULTI", 0x3A7E, 0x0193, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_550_SINGLE", 0x3A7E, 0x0195, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_650_SINGLE", 0x3A7E, 0x0197, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_750_SINGLE", 0x3A7E, 0x0199, -1, anyUsagePage, 1, RowFlag::none},
    {"AU_LINE_850_SINGLE", 0x3A7E, 0x019B, -1, anyUsagePage, 1, RowFlag::none},
    {"SILENT_1300", 0x3A7E, 0x01A5, -1, anyUsagePage, 1, RowFlag::none},
    {"PT_LINE_650_MULTI", 0x3A7E, 0x019D, -1, anyUsagePage, 1, RowFlag::none},
    {"PT_LINE_750_MULTI", 0x3A7E, 0x019F, -1, anyUsagePage, 1, RowFlag::none},
    {"PT_LINE_850_MULTI", 0x3A7E, 0x01A1, -1, anyUsagePage, 1, RowFlag::none},
    {"QT153", 0x3A7E, 0x01AB, 1, anyUsagePage, 1, RowFlag::bluetooth},
    {"RD245", 0x3A7E, 0x0167, 3, anyUsagePage, 1, RowFlag::none},
    {"RD245_DONGLE", 0x3A7E, 0x0171, 3, anyUsagePage, 1, RowFlag::receiver},
    {"FZ140_OLD", 0x3A7E, 0x1000, -1, anyUsagePage, 1, RowFlag::none},
    {"QW310", 0x3A7E, 0x016D, 3, anyUsagePage, 1, RowFlag::none},
    {"RD110", 0x3A7E, 0x015F, 1, anyUsagePage, 1, RowFlag::none},
    {"QX310", 0x3A7E, 0x016F, 3, anyUsagePage, 1, RowFlag::none},
    {"RD220", 0x3A7E, 0x0169, 3, anyUsagePage, 1, RowFlag::none},
    {"RD220_DONGLE", 0x3A7E, 0x0187, 3, anyUsagePage, 1, RowFlag::receiver},
    {"UNIVERSAL_DONGLE", 0x3A7E, 0x01B7, 3, anyUsagePage, 1, RowFlag::receiver},
    {"RD115", 0x3A7E, 0x0161, 3, anyUsagePage, 1, RowFlag::none},
    {"RD115_DONGLE", 0x3A7E, 0x0181, 3, anyUsagePage, 1, RowFlag::receiver},
    {"MN41-QA", 0x3A7E, 0x01BB, 0, anyUsagePage, 1, RowFlag::none},
    {"MN58-QB", 0x3A7E, 0x01BF, 0, anyUsagePage, 1, RowFlag::none},
    {"STRANDHUBV2", 0x3A7E, 0x01C9, 1, anyUsagePage, 1, RowFlag::none},
    {"QW310_UNIVERSAL_DONGLE", 0x3A7E, 0x0183, 3, anyUsagePage, 1, RowFlag::receiver},
    {"QX310_UNIVERSAL_DONGLE", 0x3A7E, 0x01C3, 3, anyUsagePage, 1, RowFlag::receiver},
    {"HS110", 0x3A7E, 0x01C7, 3, anyUsagePage, 1, RowFlag::none},
    {"VK950", 0x3A7E, 0x01C1, 0, anyUsagePage, 1, RowFlag::none},
    {"PLAY_DOCK", 0x3A7E, 0x0153, 0, anyUsagePage, 1, RowFlag::none},
}};
// clang-format on

/// The audio function of a headset, as the system lists it beside the control interface.
struct AudioDeviceRow {
    const char* name;
    std::uint16_t vid, pid;         ///< Control interface, as in the catalogue.
    std::uint16_t chipVid, chipPid; ///< Audio function in the system's list of devices of the class "MEDIA".
    char manufacturer[512];         ///< Must equal the manufacturer property of the installed driver.
    const char* driverTag;          ///< Driver family; carried for the headsets, not read by the core.
    const char* friendlyName;       ///< Name in the system's list of Plug and Play entities.
};

inline constexpr std::array<AudioDeviceRow, 4> audioDeviceTable{{
    {"HS410", 0x3A7E, 0x010D, 0x0D8C, 0x0012, "C-MEDIA Inc.", "TWUAC", "USB Audio Device"},
    {"HS210", 0x3A7E, 0x0111, 0x3A7E, 0x0129, "Tessel Works", "TWTAC", "HS210"},
    {"HS220", 0x3A7E, 0x0113, 0x3A7E, 0x0113, "Tessel Works", "TWTAC", "HS220"},
    {"HS110", 0x3A7E, 0x01C7, 0x3A7E, 0x01C7, "Tessel Works", "TWTAC", "HS110"},
}};

/// The name under which a headset's endpoint is known among the system's audio endpoints.
struct AudioEndpointRow {
    const char* name;
    const char* endpointName;
    std::int32_t endpointNameLength; ///< Characters of `endpointName` to compare.
};

inline constexpr std::array<AudioEndpointRow, 5> audioEndpointTable{{
    {"HS310", "HS310", 5},
    {"HS410", "USB Audio Device", 16},
    {"HS210", "HS210", 5},
    {"HS220", "HS220", 5},
    {"HS110", "HS110", 5},
}};

/// Index of the row with a name; the number of rows when there is none.
constexpr std::size_t rowOf(std::string_view name)
{
    std::size_t row = 0;
    while (row < deviceCatalogue.size() && deviceCatalogue[row].name != name)
        ++row;
    return row;
}

consteval bool catalogueNamesAreUnique()
{
    for (std::size_t row = 0; row < deviceCatalogue.size(); ++row)
        if (rowOf(deviceCatalogue[row].name) != row)
            return false;
    return true;
}
static_assert(catalogueNamesAreUnique());
static_assert(rowOf("RD210") == 31 && rowOf("DECKPANELG") == 29 && rowOf("PLAY_DOCK") == 86);

/// Name of the first row with an identity, interface and usage page ignored; empty when there is none.
constexpr const char* findNameByVidPid(std::uint16_t vid, std::uint16_t pid)
{
    for (const DeviceRow& row : deviceCatalogue)
        if (row.vid == vid && row.pid == pid)
            return row.name;
    return "";
}

/// Identity of the row with a name; 0, 0 when there is none. Case counts.
constexpr void findVidPidByName(std::string_view name, std::uint16_t& vid, std::uint16_t& pid)
{
    const std::size_t row = rowOf(name);
    vid = row < deviceCatalogue.size() ? deviceCatalogue[row].vid : std::uint16_t{0};
    pid = row < deviceCatalogue.size() ? deviceCatalogue[row].pid : std::uint16_t{0};
}

} // namespace pyrux
