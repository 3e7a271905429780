#include "transport/dongle_manager.h"

#include "pyrux/pyrux.h"
#include "tests/support/debug_capture.h"
#include "tests/support/plain_device.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace pyrux;
using namespace pyrux::test;

constexpr const char* mouseReceiver = R"(\\?\hid#vid_3a7e&pid_0171&mi_03#a#{c})";
constexpr const char* universal = R"(\\?\hid#vid_3a7e&pid_01b7&mi_03#b#{c})";
constexpr const char* keyboards = R"(\\?\hid#vid_3a7e&pid_0183&mi_03#c#{c})";

DevInfoRecord record(std::uint16_t pid, std::uint16_t release, const std::string& path = "x")
{
    DevInfoRecord one{};
    path.copy(one.path, sizeof one.path - 1);
    one.vid = 0x3A7E;
    one.pid = pid;
    one.release = release;
    return one;
}

class Dongles : public testing::Test {
protected:
    void link(ReceiverKind kind, std::uint32_t product)
    {
        struct Link final : ReceiverLink {
            explicit Link(std::uint32_t number) : number(number) {}
            std::uint32_t linkedProduct() override { return number; }
            std::uint32_t number;
        };
        manager.setLinkMaker(kind, [this, product](const std::string& path) {
            asked.push_back(path);
            return std::make_unique<Link>(product);
        });
    }

    /// The identity that a receiver is shown with.
    std::uint16_t shown(std::uint16_t pid, const char* path)
    {
        std::uint16_t vid = 0x3A7E;
        EXPECT_GE(manager.ChangeDonglePidVidToDevicePidVid(vid, pid, false, path), 1);
        EXPECT_EQ(vid, 0x3A7E);
        return pid;
    }

    DongleDeviceManger manager;
    std::vector<std::string> asked;
};

TEST_F(Dongles, leavesWhatIsNoReceiver)
{
    std::uint16_t vid = 0x3A7E;
    std::uint16_t pid = 0x012F;
    EXPECT_EQ(manager.ChangeDonglePidVidToDevicePidVid(vid, pid, false, "x"), 0);
    EXPECT_EQ(vid, 0x3A7E);
    EXPECT_EQ(pid, 0x012F);
}

TEST_F(Dongles, countsAReceiverThatCannotBeAskedAsNotLinked)
{
    DebugCapture capture;
    EXPECT_EQ(shown(0x0171, mouseReceiver), 0x0171);
    EXPECT_EQ(shown(0x0183, keyboards), 0x0183);
    EXPECT_EQ(capture.texts(),
              (std::vector<std::string>{
                  "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
                  "[PYRUX]GetMutiDeviceLinkStatus", "[PYRUX]RD245_obj == NULL, connect_device=0",
                  "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
                  "[PYRUX]GetMutiDeviceLinkStatus", "[PYRUX]QW310_obj == NULL, connect_device=0"}));
    EXPECT_EQ(manager.linkEntry(mouseReceiver), 1U);
}

TEST_F(Dongles, namesTheMouseOfEachProductNumber)
{
    constexpr std::uint16_t products[]{0x01B7, 0x0167, 0x0169, 0x0161, 0x01B7};
    for (std::uint32_t number = 0; number < std::size(products); ++number) {
        link(ReceiverKind::mouse, number);
        EXPECT_EQ(shown(0x01B7, universal), products[number]) << number;
        EXPECT_EQ(manager.linkEntry(universal), number == 0 || number == 4 ? 1U : 0U);
    }
    EXPECT_EQ(asked[0], std::string(universal) + "&ISDONGLE");
}

TEST_F(Dongles, namesTheKeyboardOfEachProductNumber)
{
    constexpr std::uint16_t products[]{0x0183, 0x016D, 0x016F, 0x0183};
    for (std::uint32_t number = 0; number < std::size(products); ++number) {
        link(ReceiverKind::keyboard, number);
        EXPECT_EQ(shown(0x0183, keyboards), products[number]) << number;
    }
}

TEST_F(Dongles, takesAnyMouseForTheLinkOfAReceiverOfOne)
{
    constexpr std::uint16_t products[]{0x0187, 0x0169, 0x0169, 0x0169, 0x0187};
    for (std::uint32_t number = 0; number < std::size(products); ++number) {
        link(ReceiverKind::mouse, number);
        EXPECT_EQ(shown(0x0187, R"(\\?\HID#VID_3A7E&PID_0187&MI_03#d#{c})"), products[number]) << number;
    }
}

TEST_F(Dongles, knowsAReceiverByItsPathInAnyCaseWithAndWithoutMark)
{
    EXPECT_TRUE(manager.setLink(universal, 0x3A7E, 0x0161));
    std::uint16_t vid = 0x3A7E;
    std::uint16_t pid = 0x01B7;
    manager.ChangeDonglePidVidToDevicePidVid(vid, pid, true,
                                             R"(\\?\HID#VID_3A7E&PID_01B7&MI_03#B#{C}&ISDONGLE)");
    EXPECT_EQ(pid, 0x0161);
    EXPECT_FALSE(manager.setLink(universal, 0x3A7E, 0x016D)); // a keyboard
    manager.removeLink(universal);
    pid = 0x01B7;
    manager.ChangeDonglePidVidToDevicePidVid(vid, pid, true, universal);
    EXPECT_EQ(pid, 0x01B7);
    EXPECT_EQ(manager.linkEntry(universal), 1U);
}

TEST_F(Dongles, givesTheRecordsOfLinkedReceiversTheirDevices)
{
    link(ReceiverKind::mouse, 1);
    std::vector<DevInfoRecord> records{record(0x0171, 0x0203, mouseReceiver), record(0x0167, 0x0105),
                                       record(0x012F, 0x0301), record(0x0183, 0x0400, keyboards)};
    manager.correctRecords(records);
    EXPECT_EQ(+records[0].pid, 0x0167);
    EXPECT_STREQ(records[0].path, (std::string(mouseReceiver) + "&ISDONGLE").c_str());
    EXPECT_EQ(+records[0].release, 0x0203);
    EXPECT_EQ(+records[3].pid, 0x0183);
    EXPECT_STREQ(records[3].path, keyboards);
    EXPECT_EQ(manager.versionWord("RD245_DONGLE"), 0x01050203U);
    EXPECT_EQ(manager.versionWord("RD245"), 0x01050203U);
    EXPECT_EQ(manager.versionWord("RD210"), 0x03010000U);
    EXPECT_EQ(manager.versionWord("QW310_UNIVERSAL_DONGLE"), 0x00000400U);
    EXPECT_EQ(manager.versionWord("RD220"), 0U);

    records.clear();
    manager.correctRecords(records);
    EXPECT_EQ(manager.versionWord("RD245"), 0U);
}

TEST_F(Dongles, pairsAReceiverOfOneMouseWithTheMouseOnItsCable)
{
    std::vector<DevInfoRecord> records{record(0x0167, 0x0105), record(0x0171, 0x0203, mouseReceiver)};
    manager.correctRecords(records); // not linked
    EXPECT_EQ(+records[1].pid, 0x0171);
    EXPECT_EQ(manager.versionWord("RD245"), 0x01050203U);
    EXPECT_EQ(manager.versionWord("RD245_DONGLE"), 0x01050203U);
}

TEST_F(Dongles, asksEachAttachedReceiverOnce)
{
    link(ReceiverKind::mouse, 3);
    const std::string first = sim::plug(plainDevice(0x01B7, 3));
    const std::string second = sim::plug(plainDevice(0x0171, 3));
    sim::plug(plainDevice(0x0167, 3));
    manager.scanReceivers(second);
    manager.scanReceivers(second);
    EXPECT_EQ(asked, std::vector<std::string>{first + "&ISDONGLE"});
    sim::reset();
}

TEST(DongleVersions, areGivenAsAHostAsks)
{
    std::vector<DevInfoRecord> records{record(0x0171, 0x0203, mouseReceiver), record(0x0167, 0x0105),
                                       record(0x012F, 0x0301)};
    DongleDeviceManger::instance().correctRecords(records);
    // The receiver's half for receivers, the device's half for others.
    std::uint16_t version[2]{7, 7};
    getDGVersion(R"(\\?\HID#VID_3A7E&PID_0171&MI_03#A#{C})", version);
    EXPECT_EQ(version[0], 0x0203);
    EXPECT_EQ(version[1], 0);
    getDGVersion(R"(\\?\HID#VID_3A7E&PID_0167&MI_03#A#{C})", version);
    EXPECT_EQ(version[0], 0);
    EXPECT_EQ(version[1], 0x0105);
    getDGVersion(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#A#{C})", version);
    EXPECT_EQ(version[0], 0);
    EXPECT_EQ(version[1], 0x0301);
    getDGVersion("nothing", version);
    EXPECT_EQ(version[0], 0);
    EXPECT_EQ(version[1], 0);
    DongleDeviceManger::instance().forget(mouseReceiver);
}

} // namespace
