// The plain exports.

#include "tests/support/data_folder.h"
#include "tests/support/debug_log.h"
#include "tests/support/mouse.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fstream>
#include <set>

namespace pyrux::test {
namespace {

/// Device paths of a model, as hidapi and the hotplug records write them.
std::string pathOf(const std::string& identity)
{
    return "\\\\?\\HID#" + identity + "#7&1a2b3c4d&0&0000#{4d1e55b2-f16f-11cf-88cb-001111000030}";
}

std::string consoleOf(const std::function<void()>& call)
{
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

TEST(Exports, tellTheVersionAsAFloat)
{
    float version = 0;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(pyrux_version(&version), &version); }), Lines{});
    EXPECT_EQ(version, 3.86F);
    std::uint32_t bits = 0;
    std::memcpy(&bits, &version, sizeof bits);
    EXPECT_EQ(bits, 0x40770A3Du);
}

TEST(Exports, giveTheBackgroundFlagBack)
{
    EXPECT_EQ(debugLinesOf([&] {
                  EXPECT_EQ(pyrux_background(1), 1u);
                  EXPECT_EQ(pyrux_background(200), 200u);
                  EXPECT_EQ(pyrux_background(255), 255u);
                  EXPECT_EQ(pyrux_background(0), 0u);
              }),
              Lines{});
}

TEST(Exports, logTheirNames)
{
    DevInfoRecord* const none = nullptr;
    char text[64];
    std::uint16_t words[2];
    std::uint8_t byte;
    std::int32_t first = 0;
    std::int32_t second = 0;
    float version = 0;
    sim::reset();
    EXPECT_EQ(debugLinesOf([] { devNums(); }), (Lines{"[PYRUX][SYS]PYRUX::devNums, #"}));
    EXPECT_EQ(debugLinesOf([&] { devInfo(none); }).front(), "[PYRUX][SYS]PYRUX::devInfo, #");
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(registerDevNotify([](HotplugEvent) {}), 0); }),
              (Lines{"[PYRUX][SYS]PYRUX::registerDevNotify, #"}));
    EXPECT_EQ(debugLinesOf([&] { getBTVersion("", text); }).front(), "[PYRUX][SYS]PYRUX::getBTVersion, #");
    EXPECT_EQ(debugLinesOf([&] { getDGVersion("", words); }).front(), "[PYRUX][SYS]PYRUX::getDGVersion, #");
    EXPECT_EQ(debugLinesOf([&] { getDriverVersion("", &byte); }).front(),
              "[PYRUX][SYS]PYRUX::getDriverVersion, #");
    EXPECT_EQ(debugLinesOf([&] { getSysTemp(&first, &second); }).front(), "[PYRUX][SYS]PYRUX::getSysTemp, #");
    EXPECT_EQ(debugLinesOf([&] { getSysCore(&first, &second); }).front(), "[PYRUX][SYS]PYRUX::getSysCore, #");
    EXPECT_EQ(debugLinesOf([&] { getVersion(&version); }).front(), "[PYRUX][SYS]PYRUX::getVersion, #");
    EXPECT_EQ(debugLinesOf([] { fakeTempEnable(); }).front(), "[PYRUX][SYS]PYRUX::fakeTempEnable, #");
    EXPECT_EQ(debugLinesOf([] { fakeTempStep(); }).front(), "[PYRUX][SYS]PYRUX::fakeTempStep, #");
}

TEST(Exports, missTheResidentService)
{
    std::int32_t first = 77;
    std::int32_t second = 78;
    float version = 79;
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(getSysTemp(&first, &second), -3);
                  EXPECT_EQ(getSysCore(&first, &second), -3);
                  EXPECT_EQ(getVersion(&version), -3);
                  EXPECT_EQ(fakeTempEnable(), -3);
                  EXPECT_EQ(fakeTempStep(), -3);
              }),
              2900);
    EXPECT_EQ(first, 77);
    EXPECT_EQ(second, 78);
    EXPECT_EQ(version, 79);
    EXPECT_EQ(getSysTemp(nullptr, nullptr), -3);
    EXPECT_EQ(getSysCore(&first, nullptr), -3);
    EXPECT_EQ(getVersion(nullptr), -3);
}

TEST(Dprintf, writesBehindTheTag)
{
    EXPECT_EQ(debugLinesOf([] {
                  pyrux_dprintf("plain");
                  pyrux_dprintf("%d %s %5.2f %c %%", -7, "text", 2.5, 'x');
                  pyrux_dprintf("%s", "");
                  pyrux_dprintf("line\n");
              }),
              (Lines{"[PYRUX]plain", "[PYRUX]-7 text  2.50 x %", "[PYRUX]", "[PYRUX]line"}));
}

TEST(Dprintf, takesTextsOfAnyLength)
{
    for (const std::size_t length : {127u, 128u, 255u, 256u, 1023u, 1024u, 4096u, 100000u}) {
        const std::string text(length, 'y');
        EXPECT_EQ(debugLinesOf([&] { pyrux_dprintf("%s", text.c_str()); }), (Lines{"[PYRUX]" + text}))
            << length;
    }
}

TEST(GetDGVersion, tellsReceiversFromDevices)
{
    struct Case {
        const char *identity, *console;
    };
    for (const Case& each : {Case{"VID_3A7E&PID_0171&MI_03", "is a dongle dev:RD245_DONGLE\n"},
                             Case{"VID_3A7E&PID_01B7&MI_03", "is a dongle dev:UNIVERSAL_DONGLE\n"},
                             Case{"VID_3A7E&PID_0187", "is a dongle dev:RD220_DONGLE\n"},
                             Case{"VID_3A7E&PID_012F&MI_01", "is not a dongle dev:RD210\n"},
                             Case{"VID_3A7E&PID_0149&MI_01", "is not a dongle dev:QT122B\n"},
                             Case{"VID_3A7E&PID_1000", "is not a dongle dev:FZ140\n"},
                             Case{"VID_3A7E&PID_9999&MI_01", "is not a dongle dev:\n"},
                             Case{"vid_3a7e&pid_012f&mi_01", "is not a dongle dev:\n"}}) {
        std::array<std::uint16_t, 2> version{0xEEEE, 0xEEEE};
        EXPECT_EQ(consoleOf([&] { getDGVersion(pathOf(each.identity).c_str(), version.data()); }),
                  each.console);
        EXPECT_EQ(version[0], 0) << each.identity;
        EXPECT_EQ(version[1], 0) << each.identity;
    }
}

TEST(GetBTVersion, logsWhatItIsAskedFor)
{
    char text[64];
    std::memset(text, 0x7E, sizeof text);
    EXPECT_EQ(
        debugLinesOf([&] { getBTVersion(pathOf("VID_3A7E&PID_012F&MI_01").c_str(), text); }),
        (Lines{"[PYRUX][SYS]PYRUX::getBTVersion, #", "[PYRUX][SYS]vid=14974,pid=303,device_name=RD210"}));
    EXPECT_EQ(text[0], 0);
    EXPECT_EQ(text[1], 0x7E);
    EXPECT_EQ(debugLinesOf([&] { getBTVersion(pathOf("VID_3A7E&PID_9999&MI_01").c_str(), text); }),
              (Lines{"[PYRUX][SYS]PYRUX::getBTVersion, #", "[PYRUX][SYS]vid=14974,pid=39321,device_name="}));
    // Parsed strictly: lower case names nothing.
    EXPECT_EQ(debugLinesOf([&] { getBTVersion("\\\\?\\hid#vid_3a7e&pid_012f&mi_01#x#{}", text); }),
              (Lines{"[PYRUX][SYS]PYRUX::getBTVersion, #", "[PYRUX][SYS]vid=0,pid=0,device_name="}));
    EXPECT_EQ(debugLinesOf([&] { getBTVersion("\\\\?\\USB#VID_3A7E&PID_012F&MI_01#x#{}", text); }),
              (Lines{"[PYRUX][SYS]PYRUX::getBTVersion, #", "[PYRUX][SYS]vid=0,pid=0,device_name="}));
}

/// What `getDriverVersion` makes of a localdevice.ini. Null: there is no file.
int driverVersion(const char* content, const std::string& identity = "VID_3A7E&PID_01C1&MI_00")
{
    const auto file = dataFolder() / "TesselWorks" / "LumaDesk" / "localdevice.ini";
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);
    if (content)
        std::ofstream(file, std::ios::binary) << content;
    std::uint8_t version = 0xEE;
    getDriverVersion(pathOf(identity).c_str(), &version);
    std::filesystem::remove(file);
    return version;
}

TEST(GetDriverVersion, readsTheVersionOfVk950)
{
    EXPECT_EQ(driverVersion("[VK950_VERSION]\r\nversion=7\r\n"), 7);
    EXPECT_EQ(driverVersion("[OTHER]\nversion=3\n[VK950_VERSION]\nother=4\nversion=255\n"), 255);
    EXPECT_EQ(driverVersion("[VK950_VERSION]\nversion=300\n"), 44); // the low 8 bits
    EXPECT_EQ(driverVersion("[vk950_version]\nVERSION = 9\n"), 9);
    EXPECT_EQ(driverVersion("[VK950_VERSION]\nversion=12abc\n"), 12);
}

TEST(GetDriverVersion, givesZeroWithoutOne)
{
    EXPECT_EQ(driverVersion(nullptr), 0);
    EXPECT_EQ(driverVersion(""), 0);
    EXPECT_EQ(driverVersion("[VK950_VERSION]\n"), 0);
    EXPECT_EQ(driverVersion("[VK950]\nversion=7\n"), 0);
    EXPECT_EQ(driverVersion("[VK950_VERSION]\nversion=abc\n"), 0);
}

TEST(GetDriverVersion, givesZeroForOtherDevices)
{
    const char* content = "[VK950_VERSION]\nversion=7\n[RD210_VERSION]\nversion=8\n";
    EXPECT_EQ(driverVersion(content, "VID_3A7E&PID_012F&MI_01"), 0);
    EXPECT_EQ(driverVersion(content, "VID_3A7E&PID_9999&MI_01"), 0);
    EXPECT_EQ(driverVersion(content, "vid_3a7e&pid_01c1&mi_00"), 0);
    EXPECT_EQ(driverVersion(content, ""), 0);
    EXPECT_EQ(driverVersion(content), 7);
}

TEST(VersionExports, standWithoutAPlaceOrAPath)
{
    const std::string path = pathOf("VID_3A7E&PID_01C1&MI_00");
    char text[8] = "x";
    std::uint16_t words[2] = {1, 1};
    std::uint8_t byte = 1;
    testing::internal::CaptureStdout();
    getBTVersion(path.c_str(), nullptr);
    getDGVersion(path.c_str(), nullptr);
    getDriverVersion(path.c_str(), nullptr);
    getBTVersion(nullptr, text);
    getDGVersion(nullptr, words);
    getDriverVersion(nullptr, &byte);
    pyrux_version(nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(text[0], 0);
    EXPECT_EQ(words[0], 0);
    EXPECT_EQ(words[1], 0);
    EXPECT_EQ(byte, 0);
}

/// A device with nothing behind it.
std::string plugged(std::uint16_t vid, std::uint16_t pid, std::vector<sim::Collection> collections,
                    const std::function<void(sim::Identity&)>& change = {})
{
    sim::Identity identity;
    identity.vid = vid;
    identity.pid = pid;
    identity.release = 0x0205;
    identity.serial = "SN-01";
    identity.product = "Product";
    identity.manufacturer = "Maker";
    identity.collections = std::move(collections);
    identity.controlInterface = identity.collections.front().interface;
    if (change)
        change(identity);
    return sim::plug(std::make_shared<ScriptedDevice>(identity));
}

std::string lower(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return text;
}

class Enumeration : public testing::Test {
protected:
    Enumeration() { sim::reset(); }
    ~Enumeration() override { sim::reset(); }

    /// The records of `devInfo`, in room for exactly what `devNums` has counted.
    static std::vector<DevInfoRecord> records()
    {
        std::vector<DevInfoRecord> all(std::size_t(devNums()) + 1);
        std::memset(all.data(), 0xEE, all.size() * sizeof(DevInfoRecord));
        const std::int32_t written = devInfo(all.data());
        EXPECT_GE(written, 0);
        EXPECT_LT(std::size_t(written), all.size());
        const DevInfoRecord& behind = all.back();
        EXPECT_EQ(std::uint8_t(behind.path[0]), 0xEE);
        all.resize(std::size_t(written));
        return all;
    }
};

TEST_F(Enumeration, isEmptyWithoutDevices)
{
    EXPECT_EQ(devNums(), 0);
    EXPECT_EQ(devInfo(nullptr), 0);
    EXPECT_TRUE(records().empty());
}

TEST_F(Enumeration, tellsAllOfADevice)
{
    const std::string path = plugged(0x3A7E, 0x012F, {{1}});
    const auto found = records();
    ASSERT_EQ(found.size(), 1u);
    const DevInfoRecord& record = found[0];
    EXPECT_EQ(std::string(record.path), lower(path));
    EXPECT_NE(std::string(record.path), path);
    EXPECT_EQ(std::string(record.serial), "SN-01");
    EXPECT_EQ(std::string(record.product), "Product");
    EXPECT_EQ(std::string(record.vendor), "Maker");
    // The numbers where a host without headers looks for them.
    ByteVector tail(14);
    std::memcpy(tail.data(), reinterpret_cast<const std::uint8_t*>(&record) + 2560, tail.size());
    EXPECT_EQ(hex(tail), "05 02 2F 01 7E 3A 01 00 00 00 01 00 00 00");
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&record) + 1024, "SN-01", 6), 0);
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&record) + 1536, "Product", 8), 0);
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&record) + 2048, "Maker", 6), 0);
}

TEST_F(Enumeration, givesAPathThatTheFactoryTakes)
{
    plugged(0x3A7E, 0x012F, {{1}, {0}});
    const auto found = records();
    ASSERT_EQ(found.size(), 1u);
    PYRUX_RD210_Base* host = rd210(found[0].path);
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(host->changeProfileId(1), E_OK);
    EXPECT_EQ(host->exit_device(1), E_OK);
}

TEST_F(Enumeration, leavesMissingTextsEmpty)
{
    plugged(0x3A7E, 0x012F, {{1}}, [](sim::Identity& identity) {
        identity.serial.clear();
        identity.product.clear();
        identity.manufacturer.clear();
    });
    const auto found = records();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].serial[0], 0);
    EXPECT_EQ(found[0].product[0], 0);
    EXPECT_EQ(found[0].vendor[0], 0);
}

TEST_F(Enumeration, cutsTextsThatAreTooLong)
{
    plugged(0x3A7E, 0x012F, {{1}}, [](sim::Identity& identity) {
        identity.serial = std::string(511, 's');
        identity.product = std::string(512, 'p');
        identity.manufacturer = std::string(2000, 'm');
    });
    const auto found = records();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(std::string(found[0].serial), std::string(511, 's'));
    EXPECT_EQ(std::string(found[0].product), std::string(511, 'p'));
    EXPECT_EQ(std::string(found[0].vendor), std::string(511, 'm'));
}

TEST_F(Enumeration, countsLooserThanItLists)
{
    // HS310: three collections on its interface, of which the row takes one by its usage page.
    plugged(0x3A7E, 0x0093, {{3, 0x000C}, {3, 0xFF01}, {3, 0xFF00}});
    EXPECT_EQ(devNums(), 3);
    const auto found = records();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_NE(std::string(found[0].path).find("&col03#"), std::string::npos);
}

TEST_F(Enumeration, listsEachCollectionWhereAnyUsagePageCounts)
{
    plugged(0x3A7E, 0x012F, {{1, 0xFF00}, {1, 0x000C}, {0, 0x0001}});
    EXPECT_EQ(devNums(), 2);
    const auto found = records();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NE(std::string(found[0].path), std::string(found[1].path));
}

TEST_F(Enumeration, takesTheInterfaceForNoWildcard)
{
    plugged(0x3A7E, 0x012F, {{0}}); // RD210 is on interface 1
    plugged(0x3A7E, 0x012F, {{-1}});
    plugged(0x3A7E, 0x012F, {{2}});
    plugged(0x3A7E, 0x0105, {{0}}); // PD110M is not composite
    plugged(0x3A7E, 0x1234, {{1}}); // no row
    plugged(0x3A7F, 0x012F, {{1}}); // another vendor
    EXPECT_EQ(devNums(), 0);
    EXPECT_TRUE(records().empty());
    plugged(0x3A7E, 0x0105, {{-1}});
    EXPECT_EQ(devNums(), 1);
}

TEST_F(Enumeration, takesADeviceWithTwoRowsByItsInterface)
{
    plugged(0x3A7E, 0x1000, {{0}});
    plugged(0x3A7E, 0x1000, {{-1}});
    EXPECT_EQ(devNums(), 2);
    EXPECT_EQ(records().size(), 2u);
}

TEST_F(Enumeration, listsDevicesOfOtherVendors)
{
    plugged(0x3109, 0x2813, {{0}});
    plugged(0x0813, 0x2109, {{0}});
    plugged(0x04D9, 0x026D, {{-1}});
    plugged(0x2D99, 0x0027, {{0}});
    plugged(0x3A7E, 0xFFFF, {{3}});
    EXPECT_EQ(devNums(), 5);
    std::set<std::pair<int, int>> identities;
    for (const DevInfoRecord& record : records())
        identities.emplace(record.vid, record.pid);
    EXPECT_EQ(identities,
              (std::set<std::pair<int, int>>{
                  {0x3109, 0x2813}, {0x0813, 0x2109}, {0x04D9, 0x026D}, {0x2D99, 0x0027}, {0x3A7E, 0xFFFF}}));
}

TEST_F(Enumeration, scansAnew)
{
    const std::string first = plugged(0x3A7E, 0x012F, {{1}});
    EXPECT_EQ(devNums(), 1);
    plugged(0x3A7E, 0x0101, {{1}});
    EXPECT_EQ(devNums(), 2);
    sim::unplug(first);
    EXPECT_EQ(devNums(), 1);
    EXPECT_EQ(+records().at(0).pid, 0x0101);
}

TEST_F(Enumeration, needsNoPlaceForNothing)
{
    plugged(0x3A7E, 0x012F, {{1}});
    EXPECT_LE(devInfo(nullptr), 0);
}

} // namespace
} // namespace pyrux::test
