#include "transport/hotplug.h"

#include "core/registry.h"
#include "pyrux/pyrux.h"
#include "tests/support/debug_capture.h"
#include "transport/audio_devices.h"
#include "transport/device_closer.h"
#include "transport/dongle_manager.h"

#include <algorithm>
#include <cctype>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using platform::DeviceChange;
using Texts = std::vector<std::string>;

constexpr const char* mouse =
    R"(\\?\HID#VID_3A7E&PID_012F&MI_01#7&1a2b3c&0&0000#{4d1e55b2-f16f-11cf-88cb-001111000030})";

std::vector<HotplugEvent> events;

/// A host's callback, and the log switched off so that only the notices' own texts are seen.
class Hotplug : public testing::Test {
protected:
    Hotplug()
    {
        registerDevNotify([](HotplugEvent event) { events.push_back(event); });
        events.clear();
        mediaSource().devices = [] { return std::vector<platform::UsbDevice>{}; };
    }
    ~Hotplug() override
    {
        registerDevNotify(nullptr);
        mediaSource() = {};
        for (const ReceiverKind kind : {ReceiverKind::mouse, ReceiverKind::keyboard})
            DongleDeviceManger::instance().setLinkMaker(kind, nullptr);
    }

    void link(ReceiverKind kind, std::uint32_t product)
    {
        struct Link final : ReceiverLink {
            explicit Link(std::uint32_t number) : number(number) {}
            std::uint32_t linkedProduct() override { return number; }
            std::uint32_t number;
        };
        DongleDeviceManger::instance().setLinkMaker(kind, [this, product](const std::string& path) {
            opened.push_back(path);
            return std::make_unique<Link>(product);
        });
    }

    Texts textsOf(const std::string& name, DeviceChange change)
    {
        DebugCapture capture;
        notifyDevice(name, change);
        return capture.texts();
    }

    Texts opened;
};

std::string bytesOf(const HotplugEvent& event)
{
    return {reinterpret_cast<const char*>(&event), sizeof event};
}

std::string field(std::string text, std::size_t size)
{
    text.resize(size);
    return text;
}

TEST_F(Hotplug, handsTheArrivalOfAMouseToTheHostByteForByte)
{
    notifyDevice(mouse, DeviceChange::arrival);
    ASSERT_EQ(events.size(), 1U);
    using namespace std::string_literals;
    EXPECT_EQ(
        bytesOf(events[0]),
        field("RD210", 30) +
            field(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#7&1A2B3C&0&0000#{4D1E55B2-F16F-11CF-88CB-001111000030})",
                  1024) +
            "\x7E\x3A\0\0\x2F\x01\0\0\x01\0\0\0\x01\0\0\0\x01\0\0\0"s);
}

TEST_F(Hotplug, handsItsRemovalToTheHostThoughNothingWasOpened)
{
    notifyDevice(mouse, DeviceChange::removal);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "RD210");
    EXPECT_EQ(+events[0].vid, 0x3A7EU);
    EXPECT_EQ(+events[0].pid, 0x012FU);
    EXPECT_EQ(+events[0].plugged, 0U);
}

TEST_F(Hotplug, writesItsTextsInOrder)
{
    EXPECT_EQ(textsOf(mouse, DeviceChange::arrival),
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
                     "[PYRUX]finish notify"}));
    EXPECT_EQ(textsOf(mouse, DeviceChange::removal),
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]device unplug out",
                     "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid", "[PYRUX]finish notify"}));
}

TEST_F(Hotplug, tellsNobodyWithoutACallback)
{
    registerDevNotify(nullptr);
    EXPECT_EQ(textsOf(mouse, DeviceChange::arrival).size(), 3U);
    EXPECT_TRUE(events.empty());
}

TEST_F(Hotplug, takesADeviceWithOneInterfaceByItsNameWithoutNumber)
{
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_1006#hidraw0#{4d1e55b2-f16f-11cf-88cb-001111000030})",
                 DeviceChange::arrival);
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_1006&MI_00#hidraw0#{4d1e55b2-f16f-11cf-88cb-001111000030})",
                 DeviceChange::arrival);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "VK530");
}

TEST_F(Hotplug, tellsTheTwoFormsOfOneModelApart)
{
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_1000&MI_00#a#{c})", DeviceChange::arrival);
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_1000#a#{c})", DeviceChange::arrival);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_STREQ(events[0].name, "FZ140");
    EXPECT_STREQ(events[1].name, "FZ140_OLD");
}

TEST_F(Hotplug, takesOnlyTheThirdCollectionOfHS310)
{
    for (const char* collection : {"&Col01", "&Col02", "&Col03", "&Col04", "&COL03", "&Col03x", ""})
        notifyDevice(R"(\\?\HID#VID_3A7E&PID_0093&MI_03)" + std::string(collection) + "#x#{c}",
                     DeviceChange::arrival);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "HS310");
    EXPECT_STREQ(events[0].path, R"(\\?\HID#VID_3A7E&PID_0093&MI_03&COL03#X#{C})");
}

TEST_F(Hotplug, makesNoEventOfWhatIsNoDeviceOfOurs)
{
    const std::string many(5000, '&');
    const Texts names{
        "",
        "#",
        "HID",
        "HID#",
        "HID#VID_3A7E",
        "HID#VID_3A7E&",
        "HID#VID_3A7E&PID_12F&MI_01#x#{c}",
        "HID#VID_3A7E&PID_XYZW&MI_01#x#{c}",
        "HID#VID_....&PID_012F&MI_01#x#{c}",
        "HID#VID_3A7E&PID_0001&MI_01#x#{c}",
        "HID#VID_3A7E&PID_012F&MI_02#x#{c}",
        "HID#VID_3A7E&PID_012F#x#{c}",
        R"(\\?\hid#vid_3a7e&pid_012f&mi_01#x#{c})",
        R"(\\?\USB#VID_3A7E&PID_012F&MI_01#card1#{6994ad04-93ef-11d0-a3cc-00a0c9223196})",
        many,
        std::string(5000, '#'),
        "HID#VID_3A7E" + many,
        "HID#VID_3A7E&PID_012F&MI_01#" + std::string(5000, '#'),
        "HID#VID_3A7E&PID_012F&MI_01#" + std::string(1000, 'x'), // no room for the receivers' mark
    };
    for (const std::string& name : names)
        for (const DeviceChange change : {DeviceChange::arrival, DeviceChange::removal})
            EXPECT_EQ(textsOf(name, change), (Texts{"[PYRUX]NotifyDevice", "[PYRUX]finish notify"})) << name;
    EXPECT_TRUE(events.empty());
}

constexpr const char* receiver = R"(\\?\HID#VID_3A7E&PID_0171&MI_03#r1#{c})";
constexpr const char* universal = R"(\\?\HID#VID_3A7E&PID_01B7&MI_03#r2#{c})";
constexpr const char* keyboards = R"(\\?\HID#VID_3A7E&PID_01C3&MI_03#r3#{c})";

TEST_F(Hotplug, showsAReceiverAsTheMouseBehindIt)
{
    link(ReceiverKind::mouse, 2);
    const Texts texts = textsOf(universal, DeviceChange::arrival);
    EXPECT_EQ(texts,
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
                     "[PYRUX]GetMutiDeviceLinkStatus", "[PYRUX]finish notify"}));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "UNIVERSAL_DONGLE");
    EXPECT_STREQ(events[0].path, R"(\\?\HID#VID_3A7E&PID_01B7&MI_03#R2#{C}&ISDONGLE)");
    EXPECT_EQ(+events[0].pid, 0x0169U); // RD220
    EXPECT_EQ(opened, Texts{std::string(universal) + "&ISDONGLE"});

    // The link that is known decides: the receiver can no more be asked.
    EXPECT_EQ(textsOf(universal, DeviceChange::removal),
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]device unplug out",
                     "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid", "[PYRUX]dongle plug out",
                     "[PYRUX]finish notify"}));
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(+events[1].pid, 0x0169U);
    EXPECT_EQ(+events[1].plugged, 0U);
    EXPECT_STREQ(events[1].path, events[0].path);
    EXPECT_EQ(opened.size(), 1U);
}

TEST_F(Hotplug, doesNotTellOfAReceiverThatLeavesWithoutADevice)
{
    EXPECT_EQ(textsOf(receiver, DeviceChange::arrival),
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
                     "[PYRUX]GetMutiDeviceLinkStatus", "[PYRUX]RD245_obj == NULL, connect_device=0",
                     "[PYRUX]finish notify"}));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(+events[0].pid, 0x0171U);
    EXPECT_STREQ(events[0].path, R"(\\?\HID#VID_3A7E&PID_0171&MI_03#R1#{C}&ISDONGLE)");
    EXPECT_EQ(textsOf(receiver, DeviceChange::removal),
              (Texts{"[PYRUX]NotifyDevice", "[PYRUX]device unplug out",
                     "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid", "[PYRUX]dongle plug out",
                     "[PYRUX]unlinked dongle plug out", "[PYRUX]finish notify"}));
    EXPECT_EQ(events.size(), 1U);
}

TEST_F(Hotplug, tellsOfALinkThatComesAndGoes)
{
    DebugCapture capture;
    link(ReceiverKind::mouse, 1);
    dongleDeviceChange({0x3A7E, 0x0171, R"(\\?\hid#vid_3a7e&pid_0171&mi_03#r1#{c}&ISDONGLE)"}, 1);
    dongleDeviceChange({0x3A7E, 0x0171, receiver}, 0);
    EXPECT_EQ(
        capture.texts(),
        (Texts{"[PYRUX]DongleDeviceChange", "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
               "[PYRUX]GetMutiDeviceLinkStatus", "[PYRUX]status=1  else  dongle  in", "[PYRUX]callCBFuntion",
               "[PYRUX]finish dongle notify", "[PYRUX]DongleDeviceChange",
               "[PYRUX]DongleDeviceManger::ChangeDonglePidVidToDevicePidVid",
               "[PYRUX]status=0  else  dongle  out", "[PYRUX]callCBFuntion", "[PYRUX]finish dongle notify"}));
    ASSERT_EQ(events.size(), 2U);
    for (std::size_t i = 0; i < events.size(); ++i) {
        EXPECT_STREQ(events[i].path, R"(\\?\HID#VID_3A7E&PID_0171&MI_03#R1#{C}&ISDONGLE)");
        EXPECT_EQ(+events[i].vid, 0x3A7EU);
        EXPECT_EQ(+events[i].pid, 0x0167U); // RD245
        EXPECT_EQ(+events[i].plugged, 1U - i);
        EXPECT_EQ(+events[i].driverOk, 1U);
        EXPECT_EQ(+events[i].statusOk, 1U);
    }
    // The host knows that the mouse has gone: the receiver's removal says nothing new.
    notifyDevice(receiver, DeviceChange::removal);
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(Hotplug, takesTheIdentityThatALinkChangeTells)
{
    dongleDeviceChange({0x3A7E, 0x0161, universal}, 1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(+events[0].pid, 0x0161U); // RD115, without a word to the receiver
    EXPECT_TRUE(opened.empty());
    notifyDevice(universal, DeviceChange::removal);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(+events[1].pid, 0x0161U);
}

TEST_F(Hotplug, forcesTheIdentityOfKeyboardsBehindTheirReceivers)
{
    dongleDeviceChange({0x3A7E, 0x01C3, keyboards}, 1);
    dongleDeviceChange({0x3A7E, 0x0183, R"(\\?\HID#VID_3A7E&PID_0183&MI_03#r4#{c})"}, 0);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_STREQ(events[0].name, "QX310_UNIVERSAL_DONGLE");
    EXPECT_EQ(+events[0].pid, 0x016FU);
    EXPECT_EQ(+events[1].pid, 0x016DU);
    DongleDeviceManger::instance().forget(keyboards);
}

TEST_F(Hotplug, takesALinkChangeOnlyWhileTheThreadRuns)
{
    EXPECT_FALSE(notifyLinkChange(receiver, 0x3A7E, 0x0171));
}

TEST_F(Hotplug, marksAHeadsetWhoseDriverIsAnothers)
{
    mediaSource().devices = [] {
        return std::vector<platform::UsbDevice>{
            {"MEDIA", R"(USB\VID_0D8C&PID_0012&REV_0100&MI_00)", "(Generic USB Audio)"}};
    };
    mediaSource().status = [](const std::string& name) {
        return platform::PlugAndPlayStatus{
            .failure = {}, .code = 0, .text = name == "USB Audio Device" ? "OK" : "Error"};
    };
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_010D&MI_01#x#{c})", DeviceChange::arrival);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "HS410");
    EXPECT_EQ(+events[0].driverOk, 0U);
    EXPECT_EQ(+events[0].statusOk, 1U);
}

/// A host object that tells what the core does with it.
class Probe final : public HostProbe {
public:
    std::int32_t device_pre_exit(const std::uint8_t*) override
    {
        preExit.set_value();
        return 0;
    }
    std::int32_t device_exit(const std::uint8_t* flag) override
    {
        held = std::async(std::launch::async, [] {
                   const std::unique_lock other(registry().mutex, std::try_to_lock);
                   return !other;
               }).get();
        exit.set_value(*flag);
        return 0;
    }
    void announceExit() override {}
    void shutDown(bool unplugged) override
    {
        const std::uint8_t flag = unplugged;
        device_exit(&flag);
    }
    std::promise<void> preExit;
    std::promise<int> exit;
    bool held = false;
};

class Closing : public Hotplug {
protected:
    void add(Probe& probe, std::int32_t type, std::string path, Registry::Clock::time_point opened = {})
    {
        const std::lock_guard lock(registry().mutex);
        registry().add({.model = "X",
                        .deviceType = type,
                        .host = &probe,
                        .path = std::move(path),
                        .probe = &probe,
                        .opened = opened});
    }
    bool registered(const Probe& probe)
    {
        const std::lock_guard lock(registry().mutex);
        return registry().findHost(&probe) != nullptr;
    }
};

TEST_F(Closing, closesAnObjectAtOnceAndLetsItGoASecondLater)
{
    Probe probe;
    std::string lower = mouse;
    std::ranges::transform(lower, lower.begin(), [](char c) { return char(std::tolower(c)); });
    add(probe, 31, lower);
    const auto start = Registry::Clock::now();
    notifyDevice(mouse, DeviceChange::removal);
    ASSERT_EQ(probe.preExit.get_future().wait_for(500ms), std::future_status::ready);
    EXPECT_LT(Registry::Clock::now() - start, 500ms);
    auto exit = probe.exit.get_future();
    ASSERT_EQ(exit.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(exit.get(), 1);
    EXPECT_GE(Registry::Clock::now() - start, 1s);
    EXPECT_LT(Registry::Clock::now() - start, 2s);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_TRUE(probe.held);
    EXPECT_FALSE(registered(probe));
}

TEST_F(Closing, letsAControlPadGoWithoutTheSecond)
{
    Probe pads[2];
    add(pads[0], 29, R"(\\?\HID#VID_3A7E&PID_012D&MI_01#p#{c})");
    add(pads[1], 30, R"(\\?\HID#VID_3A7E&PID_007B&MI_01#p#{c})");
    const auto start = Registry::Clock::now();
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_012D&MI_01#p#{c})", DeviceChange::removal);
    notifyDevice(R"(\\?\HID#VID_3A7E&PID_007B&MI_01#p#{c})", DeviceChange::removal);
    for (Probe& pad : pads)
        EXPECT_EQ(pad.exit.get_future().get(), 1);
    EXPECT_LT(Registry::Clock::now() - start, 900ms);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
}

TEST_F(Closing, closesSeveralAtOnceWithoutOneWaitingForTheOther)
{
    std::vector<Probe> probes(8);
    for (std::size_t i = 0; i < probes.size(); ++i)
        add(probes[i], 31, R"(\\?\HID#VID_3A7E&PID_012F&MI_01#)" + std::to_string(i) + "#{c}");
    const auto start = Registry::Clock::now();
    for (std::size_t i = 0; i < probes.size(); ++i)
        notifyDevice(R"(\\?\HID#VID_3A7E&PID_012F&MI_01#)" + std::to_string(i) + "#{c}",
                     DeviceChange::removal);
    for (Probe& probe : probes)
        probe.preExit.get_future().wait();
    EXPECT_LT(Registry::Clock::now() - start, 900ms);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_LT(Registry::Clock::now() - start, 3s);
    for (Probe& probe : probes)
        EXPECT_FALSE(registered(probe));
}

TEST_F(Closing, closesEverySpellingOfAPathAndNothingElse)
{
    Probe lower;
    Probe marked;
    Probe other;
    add(lower, 68, R"(\\?\hid#vid_3a7e&pid_0171&mi_03#r1#{c})");
    add(marked, 68, std::string(receiver) + "&ISDONGLE");
    add(other, 68, R"(\\?\HID#VID_3A7E&PID_0171&MI_03#r11#{c})");
    notifyDevice(receiver, DeviceChange::removal);
    EXPECT_EQ(lower.exit.get_future().get(), 1);
    EXPECT_EQ(marked.exit.get_future().get(), 1);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_TRUE(registered(other));
    const std::lock_guard lock(registry().mutex);
    registry().remove(registry().findHost(&other));
}

TEST_F(Closing, leavesAnObjectAloneThatWasOpenedBehindTheRemoval)
{
    Probe probe;
    add(probe, 31, mouse, Registry::Clock::now() + 1h);
    notifyDevice(mouse, DeviceChange::removal);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_TRUE(registered(probe));
    const std::lock_guard lock(registry().mutex);
    registry().remove(registry().findHost(&probe));
}

TEST_F(Closing, leavesAnObjectToTheEndOfTheLibrary)
{
    Probe probe;
    add(probe, 31, mouse);
    {
        // The end of the library comes first to the registry, and the closer finds nothing more.
        const std::lock_guard lock(registry().mutex);
        notifyDevice(mouse, DeviceChange::removal);
        DeviceCloser::instance().beginPending();
        registry().exitAll();
    }
    EXPECT_EQ(probe.preExit.get_future().wait_for(0s), std::future_status::ready);
    EXPECT_EQ(probe.exit.get_future().get(), 1); // no goodbye to a device that has gone
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
}

} // namespace
