// Device paths: strict parsing for the version exports, any case for classes that look at their own.

#include "transport/device_path.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace pyrux;

void expectPath(const std::string& path, int vid, int pid, int interface)
{
    const PathIdentity identity = parseDevicePath(path);
    EXPECT_EQ(identity.vid, vid) << path.substr(0, 100);
    EXPECT_EQ(identity.pid, pid) << path.substr(0, 100);
    EXPECT_EQ(identity.interface, interface) << path.substr(0, 100);
    const PathIdentity alone = parseVidPid(path);
    EXPECT_EQ(alone.vid, vid) << path.substr(0, 100);
    EXPECT_EQ(alone.pid, pid) << path.substr(0, 100);
    EXPECT_EQ(alone.interface, -1) << path.substr(0, 100);
}

TEST(DevicePath, tellsIdentityAndInterface)
{
    expectPath("\\\\?\\HID#VID_3A7E&PID_0169&MI_03&Col01#7&1&0&0000#{4d1e}", 0x3A7E, 0x0169, 3);
    expectPath("\\\\?\\HID#VID_3A7E&PID_012F&MI_01#7&1&0&0000#{4d1e}", 0x3A7E, 0x012F, 1);
    expectPath("\\\\?\\HID#VID_04D9&PID_026D&MI_00#x#{}", 0x04D9, 0x026D, 0);
    expectPath("\\\\?\\HID#VID_FFFF&PID_FFFF&MI_09#x#{}", 0xFFFF, 0xFFFF, 9);
}

TEST(DevicePath, givesNoInterfaceToADeviceThatIsNotComposite)
{
    expectPath("\\\\?\\HID#VID_3A7E&PID_0105#7&1&0&0000#{4d1e}", 0x3A7E, 0x0105, -1);
}

TEST(DevicePath, dropsBackslashesAndQuestionMarksAnywhere)
{
    expectPath("HID#VID_3A7E&PID_012F&MI_01#x", 0x3A7E, 0x012F, 1);
    expectPath("H\\I?D#VID_3?A7E&PI\\\\D_012F&M?I_01#x", 0x3A7E, 0x012F, 1);
    expectPath("????HID\\#VID_3A7E&PID_012F?", 0x3A7E, 0x012F, -1);
}

TEST(DevicePath, wantsHidAsItsFirstPart)
{
    for (const char* path :
         {"\\\\?\\USB#VID_3A7E&PID_012F&MI_01#x#{}", "\\\\?\\hid#VID_3A7E&PID_012F&MI_01#x#{}",
          "\\\\?\\HIDX#VID_3A7E&PID_012F&MI_01#x#{}", "#HID#VID_3A7E&PID_012F#x", " HID#VID_3A7E&PID_012F#x",
          "/dev/hidraw0", "VID_3A7E&PID_012F&MI_01"})
        expectPath(path, 0, 0, -1);
}

TEST(DevicePath, wantsUpperCaseKeys)
{
    expectPath("\\\\?\\hid#vid_3a7e&pid_012f&mi_01#x#{}", 0, 0, -1);
}

TEST(DevicePath, readsDigitsInAnyCase)
{
    expectPath("HID#VID_3a7e&PID_012f&MI_01#x", 0x3A7E, 0x012F, 1);
}

TEST(DevicePath, standsWhatIsCutOff)
{
    expectPath("", 0, 0, -1);
    expectPath("HID", 0, 0, -1);
    expectPath("HID#", 0, 0, -1);
    expectPath("HID##", 0, 0, -1);
    expectPath("HID#VID_3A7E", 0, 0, -1);
    expectPath("HID#VID_3A7E&", 0, 0, -1);
    expectPath("HID#VID_3A7E&PID_012", 0, 0, -1); // fewer than 8 characters
    expectPath("HID#VID_3A7E&PID_012F", 0x3A7E, 0x012F, -1);
    expectPath("HID#&", 0, 0, -1);
    expectPath("HID#&&", 0, 0, -1);
    expectPath("#", 0, 0, -1);
    expectPath("&", 0, 0, -1);
    expectPath("\\\\??", 0, 0, -1);
}

TEST(DevicePath, readsFourDigits)
{
    expectPath("HID#VID_3A7E99&PID_012F99&MI_01#x", 0x3A7E, 0x012F, 1);
    expectPath("HID#VID_ZZZZ&PID_012F&MI_01#x", 0, 0x012F, 1);
    expectPath("HID#VID_3A7E&PID_ZZZZ&MI_01#x", 0x3A7E, 0, 1);
    expectPath("HID#VID_3AZZ&PID_012F&MI_01#x", 0x003A, 0x012F, 1); // as a number is read from a text
}

TEST(DevicePath, takesTheInterfaceAsADecimalNumber)
{
    EXPECT_EQ(parseDevicePath("HID#VID_3A7E&PID_012F&MI_00#x").interface, 0);
    EXPECT_EQ(parseDevicePath("HID#VID_3A7E&PID_012F&MI_02#x").interface, 2);
    EXPECT_EQ(parseDevicePath("HID#VID_3A7E&PID_012F&MI_0MI_03#x").interface, 3); // every occurrence goes
    EXPECT_EQ(parseDevicePath("HID#VID_3A7E&PID_012F&MI_012#x").interface, 12);
}

TEST(DevicePath, standsThousandsOfPieces)
{
    const std::string head = "HID#VID_3A7E&PID_012F&MI_01";
    expectPath(head + std::string(100000, '&') + "#x", 0x3A7E, 0x012F, 1);
    expectPath(head + std::string(100000, '#'), 0x3A7E, 0x012F, 1);
    expectPath(std::string(100000, '\\') + head, 0x3A7E, 0x012F, 1);
    expectPath(std::string(100000, '#') + head, 0, 0, -1);
    expectPath(std::string(100000, '&') + head, 0, 0, -1);
    expectPath("HID#" + std::string(100000, '&'), 0, 0, -1);
    std::string mixed;
    for (int i = 0; i < 20000; ++i)
        mixed += "#&MI_0?\\";
    expectPath(head + mixed, 0x3A7E, 0x012F, 1);
}

TEST(DevicePath, standsBytesOfAllKinds)
{
    for (int byte = 1; byte < 256; ++byte) {
        const char c = char(byte);
        std::string path = "HID#VID_3A7E&PID_012F&MI_01#x";
        for (std::size_t i = 0; i < path.size(); ++i) {
            std::string changed = path;
            changed[i] = c;
            parseDevicePath(changed);
            parseVidPid(changed);
            identityOf(changed);
            registryKey(changed);
        }
    }
    const std::string withNul("HID#VID_3A7E\0&PID_012F&MI_01#x", 30);
    parseDevicePath(withNul);
}

TEST(DevicePath, tellsItsOwnIdentityInAnyCase)
{
    for (const char* path :
         {"\\\\?\\HID#VID_3A7E&PID_01AB&MI_03#x#{}", "\\\\?\\hid#vid_3a7e&pid_01ab&mi_03#x#{}",
          "\\\\?\\Hid#Vid_3a7E&pId_01aB&Mi_03#x#{}"}) {
        const PathIdentity identity = identityOf(path);
        EXPECT_EQ(identity.vid, 0x3A7E) << path;
        EXPECT_EQ(identity.pid, 0x01AB) << path;
        EXPECT_EQ(identity.interface, 3) << path;
    }
}

TEST(DongleMark, isSeenInAnyCase)
{
    for (const char* path : {"x&ISDONGLE", "x&isdongle", "x&IsDongle", "&ISDONGLE"}) {
        EXPECT_TRUE(hasDongleMark(path)) << path;
        EXPECT_EQ(withoutDongleMark(path), std::string(path).substr(0, std::string(path).size() - 9)) << path;
    }
    for (const char* path : {"", "x", "x&ISDONGLE1", "ISDONGLE", "x&ISDONGL", "x&ISDONGLE#x"}) {
        EXPECT_FALSE(hasDongleMark(path)) << path;
        EXPECT_EQ(withoutDongleMark(path), path) << path;
    }
}

TEST(RegistryKey, marksReceivers)
{
    // The six receivers of the catalogue, in any case.
    for (const char* pid : {"0171", "0187", "01B7", "0181", "0183", "01C3", "01b7", "01c3"}) {
        const std::string upper = std::string("\\\\?\\HID#VID_3A7E&PID_") + pid + "&MI_03#x#{}";
        const std::string lower = std::string("\\\\?\\hid#vid_3a7e&pid_") + pid + "&mi_03#x#{}";
        EXPECT_EQ(registryKey(upper), upper + "&ISDONGLE");
        EXPECT_EQ(registryKey(lower), lower + "&ISDONGLE");
        EXPECT_EQ(registryKey(upper + "&ISDONGLE"), upper + "&ISDONGLE");
    }
}

TEST(RegistryKey, leavesOtherPathsAsTheyAre)
{
    for (const char* path :
         {"\\\\?\\HID#VID_3A7E&PID_012F&MI_01#x#{}", "\\\\?\\hid#vid_3a7e&pid_012f&mi_01#x#{}",
          "\\\\?\\HID#VID_3A7F&PID_0171&MI_03#x#{}", "/dev/hidraw0", "",
          "\\\\?\\HID#VID_3A7E&PID_012F&MI_01#x#{}&ISDONGLE"})
        EXPECT_EQ(registryKey(path), path) << path;
}

} // namespace
