#include "tests/kernel/rd210_rig.h"

#include <condition_variable>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <vector>

namespace pyrux::test {

namespace {

std::mutex eventsMutex;
std::condition_variable eventsChanged;
std::deque<std::string> eventsSoFar;

/// The library is started once for all tests, and shut down after them.
class Library : public testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(pyrux_init(), 0); }
    void TearDown() override { EXPECT_EQ(pyrux_exit(), 0); }
};

[[maybe_unused]] testing::Environment* const library = testing::AddGlobalTestEnvironment(new Library);

} // namespace

void Events::callback(NotifyRecord* record)
{
    const std::lock_guard lock(eventsMutex);
    eventsSoFar.push_back(std::to_string(record->event) + ":" + std::to_string(record->value));
    eventsChanged.notify_all();
}

std::string Events::next()
{
    std::unique_lock lock(eventsMutex);
    if (!eventsChanged.wait_for(lock, patience, [] { return !eventsSoFar.empty(); }))
        return "none";
    const std::string first = eventsSoFar.front();
    eventsSoFar.pop_front();
    return first;
}

std::string pathOf(const std::string& node)
{
    const std::string name = node.substr(node.rfind('/') + 1);
    std::vector<DevInfoRecord> records;
    records.resize(std::size_t(devNums()));
    records.resize(std::size_t(devInfo(records.data())));
    for (const DevInfoRecord& record : records) {
        const std::string path = record.path;
        const std::size_t place = path.find(name);
        if (place != std::string::npos && !std::isdigit(path[place + name.size()]))
            return path;
    }
    return "";
}

void keepNumberOf(const HidrawNode& node)
{
    ASSERT_GE(open(node.path.c_str(), O_RDONLY | O_CLOEXEC), 0); // deliberate: never closed
}

void RD210Rig::SetUp()
{
    gadget = std::make_unique<Gadget>(gadgetArguments());
    const std::string line = gadget->line();
    ASSERT_TRUE(line.starts_with("rd210 is 3a7e:012f at dummy_udc.0, /dev/hidg")) << line;
    waitForDevice();
    mouse = openDevice();
    ASSERT_NE(mouse, nullptr);
    gadget->takeWritten();
}

void RD210Rig::TearDown()
{
    if (mouse)
        mouse->exit_device(1);
    gadget.reset();
    EXPECT_TRUE(udev.waitForNodes(vid, pid, 0).empty());
}

void RD210Rig::waitForDevice()
{
    nodes = udev.waitForNodes(vid, pid, 2);
    ASSERT_TRUE(nodes.contains("00") && nodes.contains("01"));
    keepNumberOf(nodes["01"]);
}

void RD210Rig::unplug()
{
    ASSERT_EQ(gadget->command("unplug"), "ok");
    ASSERT_TRUE(udev.waitForNodes(vid, pid, 0).empty());
}

void RD210Rig::plugAgain()
{
    const std::string answer = gadget->command("plug");
    ASSERT_TRUE(answer.starts_with("ok 3a7e:012f at dummy_udc.0, /dev/hidg")) << answer;
    waitForDevice();
}

PYRUX_RD210_Base* RD210Rig::openDevice()
{
    return rd210(pathOf(nodes["01"].path).c_str());
}

} // namespace pyrux::test
