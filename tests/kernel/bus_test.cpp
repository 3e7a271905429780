#include "tests/kernel/rd210_rig.h"

#include <csignal>
#include <filesystem>
#include <fstream>

/// @file
/// The device on the bus: what the kernel, udev and the library's lists show of it, and that it goes without
/// a trace.

namespace pyrux::test {

namespace {

const std::filesystem::path gadgets = "/sys/kernel/config/usb_gadget";

std::string mappedFile(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(name) != std::string::npos)
            return line.substr(line.find('/'));
    return "";
}

TEST_F(RD210Rig, libraryUsesTheSystemsHidapi)
{
    EXPECT_TRUE(
        mappedFile("libhidapi-hidraw").starts_with("/usr/lib/x86_64-linux-gnu/libhidapi-hidraw.so.0"));
    EXPECT_NE(mappedFile("/libpyrux.so"), "");
}

TEST_F(RD210Rig, kernelSeesACompositeUsbDevice)
{
    const HidrawNode& control = nodes["01"];
    EXPECT_EQ(control.hidDriver, "hid-generic");
    EXPECT_EQ(control.usbDriver, "usbhid");
    EXPECT_EQ(control.attributes.at("bNumInterfaces"), " 2");
    EXPECT_EQ(control.attributes.at("bcdDevice"), "0103");
    EXPECT_EQ(control.attributes.at("serial"), "RD210-000001");
    EXPECT_EQ(control.attributes.at("product"), "RD210");
    EXPECT_EQ(control.attributes.at("manufacturer"), "Tessel Works");
    EXPECT_EQ(control.attributes.at("bInterfaceClass"), "03");
    EXPECT_EQ(control.attributes.at("bInterfaceSubClass"), "00");
    EXPECT_EQ(control.attributes.at("bInterfaceProtocol"), "00");

    const HidrawNode& pointer = nodes["00"]; // a boot mouse
    EXPECT_EQ(pointer.usbDriver, "usbhid");
    EXPECT_EQ(pointer.attributes.at("bInterfaceSubClass"), "01");
    EXPECT_EQ(pointer.attributes.at("bInterfaceProtocol"), "02");
}

TEST_F(RD210Rig, libraryListsTheControlInterface)
{
    ASSERT_EQ(devNums(), 1);
    DevInfoRecord record{};
    ASSERT_EQ(devInfo(&record), 1);
    EXPECT_EQ(record.vid, 0x3A7E);
    EXPECT_EQ(record.pid, 0x012F);
    EXPECT_EQ(record.release, 0x0103);
    EXPECT_STREQ(record.serial, "RD210-000001");
    EXPECT_STREQ(record.product, "RD210");
    EXPECT_STREQ(record.vendor, "Tessel Works");
    EXPECT_EQ(record.driverOk, 1U);
    EXPECT_EQ(record.statusOk, 1U);
    EXPECT_EQ(record.path, pathOf(nodes["01"].path)); // interface 1, not 0
}

TEST_F(RD210Rig, listIsEmptyAfterUnplug)
{
    unplug();
    EXPECT_EQ(devNums(), 0);
    EXPECT_EQ(devInfo(nullptr), 0);
}

TEST_F(RD210Rig, aFactoryForAnotherPathGivesNull)
{
    EXPECT_EQ(rd210("/dev/hidraw63"), nullptr);
    EXPECT_EQ(rd210(""), nullptr);
}

class GadgetProgram : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(udev.waitForNodes("3a7e", "012f", 0).empty()); }

    Udev udev;
};

TEST_F(GadgetProgram, leavesNothingBehindAtASignal)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Gadget gadget({"rd210"});
        ASSERT_NE(gadget.line(), "");
        EXPECT_TRUE(std::filesystem::exists(gadgets / "pyrux-rd210"));
        gadget.send(signal);
        EXPECT_EQ(gadget.wait(), 0);
        EXPECT_TRUE(std::filesystem::is_empty(gadgets));
    }
}

TEST_F(GadgetProgram, leavesNothingBehindAtQuitAndWhenPulledOut)
{
    Gadget gadget({"rd210"});
    ASSERT_NE(gadget.line(), "");
    EXPECT_EQ(gadget.command("unplug"), "ok");
    EXPECT_EQ(gadget.command("unplug"), "error is not plugged in");
    EXPECT_EQ(gadget.command("event dpi 2"), "error no such event, or it cannot happen now");
    EXPECT_EQ(gadget.command("quit"), "ok");
    EXPECT_EQ(gadget.wait(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(gadgets));
}

TEST_F(GadgetProgram, goesOnWithoutAnInput)
{
    Gadget gadget({"rd210"});
    ASSERT_NE(gadget.line(), "");
    gadget.closeInput();
    EXPECT_EQ(udev.waitForNodes("3a7e", "012f", 2).size(), 2U);
    gadget.send(SIGTERM);
    EXPECT_EQ(gadget.wait(), 0);
}

TEST_F(GadgetProgram, takesOverWhatAKilledOneLeft)
{
    {
        Gadget killed({"rd210"});
        ASSERT_NE(killed.line(), "");
        killed.send(SIGKILL);
        EXPECT_EQ(killed.wait(), -SIGKILL);
    }
    EXPECT_TRUE(std::filesystem::exists(gadgets / "pyrux-rd210"));
    Gadget next({"rd210"});
    EXPECT_TRUE(next.line().starts_with("rd210 is 3a7e:012f at dummy_udc.0, /dev/hidg"));
    EXPECT_EQ(next.command("quit"), "ok");
    EXPECT_EQ(next.wait(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(gadgets));
}

TEST_F(GadgetProgram, refusesWhatIsTaken)
{
    Gadget first({"rd210"});
    ASSERT_NE(first.line(), "");

    Gadget sameName({"rd210"});
    EXPECT_EQ(sameName.wait(), 1);
    EXPECT_EQ(sameName.errors(),
              "pyrux-gadget: /sys/kernel/config/usb_gadget/pyrux-rd210: another pyrux-gadget "
              "presents this device\n");

    Gadget sameController({"--name", "other", "rd210"});
    EXPECT_EQ(sameController.wait(), 1);
    EXPECT_EQ(sameController.errors(), "pyrux-gadget: dummy_udc.0: Device or resource busy\n");
    EXPECT_FALSE(std::filesystem::exists(gadgets / "other"));

    Gadget noController({"--udc", "none", "--name", "other", "rd210"});
    EXPECT_EQ(noController.wait(), 3);
    EXPECT_EQ(noController.errors(), "pyrux-gadget: there is no USB device controller \"none\"\n");
    EXPECT_FALSE(std::filesystem::exists(gadgets / "other"));

    EXPECT_EQ(first.command("events"), "ok dpi LEVEL, profile N, key NUMBER STATE, surface A B");
}

} // namespace

} // namespace pyrux::test
