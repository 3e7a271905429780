#include "tests/kernel/hidraw.h"
#include "tests/kernel/raw_gadget.h"
#include "tests/kernel/rd210_rig.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <utility>
#include <vector>

/// @file
/// Devices that come and go, through the real USB stack, udev and hidapi.

namespace pyrux::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Names = std::multiset<std::string>;

constexpr auto makerVid = "3a7e";

struct Told {
    std::string name;
    std::string path;
    bool plugged;
    Clock::time_point when;
};

std::mutex toldMutex;
std::condition_variable toldChanged;
std::vector<Told> told;
bool heldUp = false; ///< The callback does not return.

void callback(HotplugEvent event)
{
    std::unique_lock lock(toldMutex);
    told.push_back({event.name, event.path, event.plugged == 1, Clock::now()});
    toldChanged.notify_all();
    toldChanged.wait(lock, [] { return !heldUp; });
}

void holdUp(bool held)
{
    const std::lock_guard lock(toldMutex);
    heldUp = held;
    toldChanged.notify_all();
}

std::vector<Told> takeTold(std::size_t count)
{
    std::unique_lock lock(toldMutex);
    toldChanged.wait_for(lock, patience, [&] { return told.size() >= count; });
    return std::exchange(told, {});
}

Names namesOf(const std::vector<Told>& events)
{
    Names names;
    for (const Told& one : events)
        names.insert(one.name + (one.plugged ? "+" : "-"));
    return names;
}

std::string lowerCased(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

std::vector<std::string> listedPaths()
{
    std::vector<DevInfoRecord> records(std::size_t(devNums()) + 8);
    records.resize(std::size_t(devInfo(records.data())));
    std::vector<std::string> paths;
    for (const DevInfoRecord& record : records)
        paths.emplace_back(record.path);
    return paths;
}

int openFiles()
{
    return int(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

/// The socket on which the library hears of devices: the one that it has given 8 MiB of buffer, which the
/// kernel doubles.
int monitorSocket()
{
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int file = std::stoi(entry.path().filename());
        int domain = 0;
        int size = 0;
        socklen_t length = sizeof(int);
        if (getsockopt(file, SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 && domain == AF_NETLINK &&
            getsockopt(file, SOL_SOCKET, SO_RCVBUF, &size, &length) == 0 && size == 16 * 1024 * 1024)
            return file;
    }
    return -1;
}

/// How many messages the kernel had no room for.
unsigned long droppedBy(int netlinkSocket)
{
    struct stat file {};
    fstat(netlinkSocket, &file);
    std::ifstream table("/proc/net/netlink");
    std::string heading;
    std::getline(table, heading);
    std::string address;
    unsigned long protocol, port, groups, read, write, dump, locks, drops, inode;
    while (table >> address >> protocol >> port >> std::hex >> groups >> std::dec >> read >> write >> dump >>
           locks >> drops >> inode)
        if (inode == file.st_ino)
            return drops;
    return 0;
}

class Hotplug : public testing::Test {
protected:
    Hotplug()
    {
        registerDevNotify(callback);
        // After these two the notices of other tests' devices have been handled.
        RawGadget last("raw-last", 1, 0x1006, {vendorCollections({0xFF00})});
        EXPECT_TRUE(last.plug());
        bool gone = false;
        while (!gone) {
            const std::vector<Told> events = takeTold(1);
            gone = events.empty() || namesOf(events).contains("VK530-");
            if (namesOf(events).contains("VK530+"))
                last.unplug();
        }
    }
    ~Hotplug() override
    {
        registerDevNotify([](HotplugEvent) {});
    }

    Udev udev;
};

TEST_F(Hotplug, tellsOfDevicesOfEverySortAtOnce)
{
    RawGadget mouse("raw-mouse", 0, 0x012F, {vendorCollections({0xFF01}), vendorCollections({0xFF00})});
    RawGadget keyboard("raw-keyboard", 1, 0x1006, {vendorCollections({0xFF00})});
    RawGadget pad("raw-pad", 2, 0x0105, {vendorCollections({0xFF00, 0xFF01})});
    ASSERT_TRUE(mouse.plug() && keyboard.plug() && pad.plug());
    ASSERT_EQ(udev.waitForNodes(makerVid, "012f", 2).size(), 2U);
    ASSERT_EQ(udev.waitForNodes(makerVid, "1006", 1).size(), 1U);
    ASSERT_EQ(udev.waitForNodes(makerVid, "0105", 1).size(), 1U);
    const auto there = Clock::now();
    const std::vector<Told> came = takeTold(4);
    EXPECT_EQ(namesOf(came), (Names{"RD210+", "VK530+", "PD110M+", "PD110M+"}));
    std::set<std::string> paths;
    for (const Told& one : came) {
        EXPECT_LT(one.when - there, 500ms) << one.name;
        paths.insert(lowerCased(one.path));
        EXPECT_EQ(one.path.find("MI_") != std::string::npos, one.name == "RD210") << one.path;
        EXPECT_EQ(one.path.find("&COL0") != std::string::npos, one.name == "PD110M") << one.path;
    }
    EXPECT_EQ(paths.size(), 4U);
    const std::vector<std::string> listed = listedPaths();
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), paths);
    EXPECT_EQ(devNums(), 4);
    ASSERT_TRUE(pad.unplug() && keyboard.unplug() && mouse.unplug());
    const std::vector<Told> went = takeTold(4);
    EXPECT_EQ(namesOf(went), (Names{"RD210-", "VK530-", "PD110M-", "PD110M-"}));
    for (const Told& one : went)
        EXPECT_TRUE(paths.contains(lowerCased(one.path))) << one.path;
    EXPECT_TRUE(listedPaths().empty());
}

TEST_F(Hotplug, takesTheThirdCollectionOfAHeadset)
{
    const auto plain = vendorCollections({0xFF02});
    RawGadget headset("raw-headset", 0, 0x0093,
                      {plain, plain, plain, vendorCollections({0xFF01, 0xFF02, 0xFF00})});
    ASSERT_TRUE(headset.plug());
    ASSERT_EQ(udev.waitForNodes(makerVid, "0093", 4).size(), 4U);
    const std::vector<Told> came = takeTold(1);
    ASSERT_EQ(namesOf(came), Names{"HS310+"});
    EXPECT_NE(came[0].path.find("&MI_03&COL03#"), std::string::npos) << came[0].path;
    EXPECT_EQ(listedPaths(), std::vector<std::string>{lowerCased(came[0].path)});
    EXPECT_EQ(devNums(), 3); // deliberately looser
    ASSERT_TRUE(headset.unplug());
    EXPECT_EQ(namesOf(takeTold(1)), Names{"HS310-"});
}

/// Writes a device's name into a file of its driver.
void tellDriver(const std::filesystem::path& driver, const char* file, const std::string& device)
{
    std::ofstream out(driver / file);
    out << device << std::flush;
    EXPECT_TRUE(out) << driver << " " << file;
}

TEST_F(Hotplug, tellsOfADeviceThatComesBackToItsPlace)
{
    RawGadget keyboard("raw-keyboard", 1, 0x1006, {vendorCollections({0xFF00})});
    ASSERT_TRUE(keyboard.plug());
    const std::vector<Told> came = takeTold(1);
    ASSERT_EQ(namesOf(came), Names{"VK530+"});
    const std::string node = udev.waitForNodes(makerVid, "1006", 1).begin()->second.path;
    const std::filesystem::path place = "/sys/class/hidraw" / std::filesystem::path(node).filename();
    const std::filesystem::path before = std::filesystem::canonical(place);
    const std::string device = std::filesystem::canonical(place / "device").filename();
    const std::filesystem::path driver = std::filesystem::canonical(place / "device/driver");
    for (int cycle = 0; cycle < 3; ++cycle) {
        tellDriver(driver, "unbind", device);
        ASSERT_EQ(namesOf(takeTold(1)), Names{"VK530-"}) << cycle;
        tellDriver(driver, "bind", device);
        const std::vector<Told> again = takeTold(1);
        ASSERT_EQ(namesOf(again), Names{"VK530+"}) << cycle;
        EXPECT_EQ(again[0].path, came[0].path);
        EXPECT_EQ(std::filesystem::canonical(place), before);
    }
    ASSERT_TRUE(keyboard.unplug());
    EXPECT_EQ(namesOf(takeTold(1)), Names{"VK530-"});
}

TEST_F(Hotplug, opensADeviceByTheEventsPathAndByTheRecords)
{
    Gadget gadget({"rd210"});
    ASSERT_TRUE(gadget.line().starts_with("rd210 is"));
    const std::vector<Told> came = takeTold(1);
    ASSERT_EQ(namesOf(came), Names{"RD210+"});
    PYRUX_RD210_Base* const byEvent = rd210(came[0].path.c_str());
    ASSERT_NE(byEvent, nullptr);
    EXPECT_EQ(byEvent->changeProfileId(1), E_OK);
    PYRUX_RD210_Base* const byRecord = rd210(listedPaths().at(0).c_str());
    ASSERT_NE(byRecord, nullptr);
    EXPECT_NE(byRecord, byEvent);
    ASSERT_EQ(gadget.command("unplug"), "ok");
    EXPECT_EQ(namesOf(takeTold(1)), Names{"RD210-"});
    const auto limit = Clock::now() + patience;
    while (byEvent->changeProfileId(1) != E_CLOSED || byRecord->changeProfileId(1) != E_CLOSED)
        ASSERT_LT(Clock::now(), limit);
    ASSERT_TRUE(gadget.command("plug").starts_with("ok"));
    const std::vector<Told> again = takeTold(1);
    ASSERT_EQ(namesOf(again), Names{"RD210+"});
    // The path may be the old one: then the old object has it until it has left after its second.
    PYRUX_RD210_Base* next = nullptr;
    do
        next = rd210(again[0].path.c_str());
    while ((next == byEvent || next == byRecord) && Clock::now() < limit);
    ASSERT_NE(next, nullptr);
    EXPECT_NE(next, byEvent);
    EXPECT_EQ(next->changeProfileId(1), E_OK);
    ASSERT_EQ(gadget.command("unplug"), "ok");
    EXPECT_EQ(namesOf(takeTold(1)), Names{"RD210-"});
}

TEST_F(Hotplug, findsWhatCameAndWentWhileEventsWereLost)
{
    RawGadget keyboard("raw-keyboard", 1, 0x1006, {vendorCollections({0xFF00})});
    RawGadget mouse("raw-mouse", 0, 0x012F, {vendorCollections({0xFF01}), vendorCollections({0xFF00})});
    RawGadget pad("raw-pad", 2, 0x0105, {vendorCollections({0xFF00, 0xFF01})});
    ASSERT_TRUE(keyboard.plug());
    ASSERT_EQ(namesOf(takeTold(1)), Names{"VK530+"});
    const int monitor = monitorSocket();
    ASSERT_GE(monitor, 0);
    const int least = 1;
    ASSERT_EQ(setsockopt(monitor, SOL_SOCKET, SO_RCVBUF, &least, sizeof least), 0);
    holdUp(true);
    ASSERT_TRUE(mouse.plug());
    ASSERT_EQ(namesOf(takeTold(1)), Names{"RD210+"}); // and the callback keeps the library's thread
    ASSERT_TRUE(keyboard.unplug());
    ASSERT_TRUE(udev.waitForNodes(makerVid, "1006", 0).empty());
    ASSERT_TRUE(pad.plug());
    ASSERT_EQ(udev.waitForNodes(makerVid, "0105", 1).size(), 1U);
    ASSERT_TRUE(mouse.unplug());
    ASSERT_TRUE(udev.waitForNodes(makerVid, "012f", 0).empty());
    EXPECT_GT(droppedBy(monitor), 0U);
    const int room = 8 * 1024 * 1024;
    ASSERT_EQ(setsockopt(monitor, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room), 0);
    holdUp(false);
    EXPECT_EQ(namesOf(takeTold(4)), (Names{"VK530-", "RD210-", "PD110M+", "PD110M+"}));
    ASSERT_TRUE(pad.unplug());
    EXPECT_EQ(namesOf(takeTold(2)), (Names{"PD110M-", "PD110M-"}));
}

/// The next lines, in any order, as far as the devices' paths.
Names shownBy(Program& watch, int count)
{
    Names lines;
    for (int i = 0; i < count; ++i) {
        const std::string line = watch.line();
        lines.insert(line.substr(0, line.find(" \\\\?\\HID#")));
    }
    return lines;
}

TEST_F(Hotplug, isShownByPyruxctl)
{
    Gadget gadget({"rd210"});
    ASSERT_TRUE(gadget.line().starts_with("rd210 is"));
    ASSERT_EQ(namesOf(takeTold(1)), Names{"RD210+"});
    Program watch(PYRUXCTL, {"watch"});
    ASSERT_TRUE(watch.errorLine().starts_with("watching rd210 ")); // and it listens
    RawGadget keyboard("raw-keyboard", 1, 0x1006, {vendorCollections({0xFF00})});
    RawGadget pad("raw-pad", 2, 0x0105, {vendorCollections({0xFF00, 0xFF01})});
    ASSERT_TRUE(keyboard.plug() && pad.plug());
    ASSERT_EQ(udev.waitForNodes(makerVid, "1006", 1).size(), 1U);
    ASSERT_EQ(udev.waitForNodes(makerVid, "0105", 1).size(), 1U);
    const auto there = Clock::now();
    EXPECT_EQ(shownBy(watch, 3), (Names{"VK530: plugged in (3a7e:1006, driver ok, status ok)",
                                        "PD110M: plugged in (3a7e:0105, driver ok, status ok)",
                                        "PD110M: plugged in (3a7e:0105, driver ok, status ok)"}));
    EXPECT_LT(Clock::now() - there, 500ms);
    ASSERT_TRUE(pad.unplug() && keyboard.unplug());
    EXPECT_EQ(shownBy(watch, 3), (Names{"VK530: unplugged (3a7e:1006, driver ok, status ok)",
                                        "PD110M: unplugged (3a7e:0105, driver ok, status ok)",
                                        "PD110M: unplugged (3a7e:0105, driver ok, status ok)"}));
    ASSERT_EQ(gadget.command("unplug"), "ok");
    EXPECT_EQ(shownBy(watch, 1), Names{"RD210: unplugged (3a7e:012f, driver ok, status ok)"});
    watch.send(SIGINT);
    EXPECT_EQ(watch.line(), "");
    EXPECT_EQ(watch.wait(), 0);
    takeTold(7);
}

/// PYRUX_SOAK_CYCLES says how often a device comes and goes while other threads use the library.
TEST_F(Hotplug, survivesADeviceThatComesAndGoes)
{
    const char* variable = std::getenv("PYRUX_SOAK_CYCLES");
    const int cycles = variable ? std::atoi(variable) : 10;
    RawGadget keyboard("raw-keyboard", 1, 0x1006, {vendorCollections({0xFF00})});
    RawGadget mouse("raw-mouse", 0, 0x012F, {vendorCollections({0xFF01}), vendorCollections({0xFF00})});
    static_cast<void>(rd210("")); // waits until no object is on its way out
    const int before = openFiles();
    std::atomic<bool> running{true};
    std::thread user([&] {
        while (running)
            listedPaths();
    });
    for (int cycle = 0; cycle < cycles; ++cycle) {
        EXPECT_TRUE(mouse.plug() && keyboard.plug());
        EXPECT_EQ(namesOf(takeTold(2)), (Names{"RD210+", "VK530+"})) << cycle;
        EXPECT_TRUE(keyboard.unplug() && mouse.unplug());
        EXPECT_EQ(namesOf(takeTold(2)), (Names{"RD210-", "VK530-"})) << cycle;
    }
    running = false;
    user.join();
    EXPECT_EQ(openFiles(), before);
}

} // namespace

} // namespace pyrux::test
