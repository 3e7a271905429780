#include "tests/kernel/rd210_rig.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

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
    // A plus gives a copy: the record is packed.
    EXPECT_EQ(+record.vid, 0x3A7E);
    EXPECT_EQ(+record.pid, 0x012F);
    EXPECT_EQ(+record.release, 0x0103);
    EXPECT_STREQ(record.serial, "RD210-000001");
    EXPECT_STREQ(record.product, "RD210");
    EXPECT_STREQ(record.vendor, "Tessel Works");
    EXPECT_EQ(+record.driverOk, 1U);
    EXPECT_EQ(+record.statusOk, 1U);
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

/// A client of the control socket.
class Client {
public:
    explicit Client(const std::string& path) : file(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::ranges::copy(path, address.sun_path);
        connected = connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Client() { close(file); }

    bool isConnected() const { return connected; }

    /// Sends a text, and waits for one piece of an answer; empty when the other side has closed.
    std::string say(const std::string& text)
    {
        if (write(file, text.data(), text.size()) != ssize_t(text.size()))
            return "";
        std::array<char, 256> answer{};
        const ssize_t count = read(file, answer.data(), answer.size());
        return {answer.data(), count > 0 ? std::size_t(count) : 0};
    }

private:
    int file;
    bool connected = false;
};

class GadgetProgram : public testing::Test {
protected:
    static constexpr auto socketPath = "/run/pyrux-gadget-test";

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

    Gadget sameSocket({"--socket", "/dev/null", "--name", "other", "rd210"});
    EXPECT_EQ(sameSocket.wait(), 1);
    EXPECT_EQ(sameSocket.errors(), "pyrux-gadget: /dev/null: Address already in use\n");

    EXPECT_EQ(first.command("events"), "ok dpi LEVEL, profile N, key NUMBER STATE, surface A B");
}

TEST_F(GadgetProgram, answersEveryCommand)
{
    Gadget gadget({"rd210"});
    ASSERT_NE(gadget.line(), "");
    EXPECT_EQ(gadget.command("dance"), "error there is no command \"dance\"");
    EXPECT_EQ(gadget.command("silent"), "error wrong number of words behind \"silent\"");
    EXPECT_EQ(gadget.command("silent maybe"), "error silent on, or silent off");
    EXPECT_EQ(gadget.command("event dpi two"), "error \"two\" is no number");
    EXPECT_EQ(gadget.command("event dpi 7"), "error no such event, or it cannot happen now");
    EXPECT_EQ(gadget.command("event sleep"), "error no such event, or it cannot happen now");
    EXPECT_EQ(gadget.command("plug"), "error is plugged in already");
    EXPECT_EQ(gadget.command("# a comment\n\n \t event  dpi\t2 # and another"), "ok");
}

TEST_F(GadgetProgram, takesCommandsFromASocket)
{
    {
        Gadget killed({"--socket", socketPath, "rd210"});
        ASSERT_NE(killed.line(), "");
        killed.send(SIGKILL);
        killed.wait();
    }
    EXPECT_TRUE(std::filesystem::is_socket(socketPath));

    Gadget gadget({"--socket", socketPath, "rd210"}); // takes over the one that is left
    ASSERT_NE(gadget.line(), "");
    EXPECT_EQ(std::filesystem::status(socketPath).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    Client first(socketPath);
    Client second(socketPath);
    ASSERT_TRUE(first.isConnected() && second.isConnected());
    EXPECT_EQ(first.say("event dpi 3\n"), "ok\n");
    EXPECT_EQ(second.say("nothing\n"), "error there is no command \"nothing\"\n");
    EXPECT_EQ(gadget.command("event dpi 4"), "ok");
    EXPECT_EQ(first.say(std::string(5000, 'x')), ""); // no line is that long
    EXPECT_EQ(second.say("unplug\n"), "ok\n");
    EXPECT_EQ(second.say("quit\n"), "ok\n");
    EXPECT_EQ(gadget.wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(socketPath));
    EXPECT_TRUE(std::filesystem::is_empty(gadgets));
}

/// A host that has not opened the device fetches nothing; that must neither stop the device nor be replayed
/// as replies to what comes later.
TEST_F(GadgetProgram, goesOnWhenNobodyFetchesItsReports)
{
    Gadget gadget({"rd210"});
    ASSERT_NE(gadget.line(), "");
    auto nodes = udev.waitForNodes("3a7e", "012f", 2);
    ASSERT_EQ(nodes.size(), 2U);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(gadget.command("event dpi 2"), "ok");
    keepNumberOf(nodes["01"]);
    PYRUX_RD210_Base* const mouse = rd210(pathOf(nodes["01"].path).c_str());
    ASSERT_NE(mouse, nullptr);
    EXPECT_EQ(mouse->changeProfileId(2), E_OK);
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 2);
    EXPECT_EQ(mouse->exit_device(0), E_OK);
}

} // namespace

} // namespace pyrux::test
