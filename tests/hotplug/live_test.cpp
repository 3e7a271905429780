#include "devices/mice/rd210.h"
#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "tests/hotplug/footprint.h"
#include "tests/hotplug/hotplug_host.h"
#include "tests/support/debug_capture.h"
#include "tests/support/plain_device.h"
#include "transport/device_closer.h"
#include "transport/hotplug.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using Clock = std::chrono::steady_clock;

std::string lowerCased(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

std::vector<DevInfoRecord> listed()
{
    // With room for all that may come between the two calls.
    std::vector<DevInfoRecord> records(std::size_t(devNums()) + 64);
    records.resize(std::size_t(devInfo(records.data())));
    return records;
}

class Live : public testing::Test {
protected:
    ~Live() override
    {
        host.onEvent(nullptr);
        sim::reset();
        settle();
        EXPECT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    }

    /// Waits until the notices so far have been handled: they keep their order.
    void settle()
    {
        sim::unplug(sim::plug(plainDevice(0x1004, 0)));
        for (;;) {
            const auto events = host.take(1);
            if (events.empty() || std::ranges::any_of(events, [](const HotplugEvent& event) {
                    return event.name == std::string_view("VK410") && !event.plugged;
                }))
                return;
        }
    }

    HotplugHost host;
};

TEST_F(Live, tellsOfAMouseAsItComesAndGoes)
{
    DebugCapture capture;
    const auto start = Clock::now();
    const std::string path = sim::plug(sim::makeFirmware("rd210"));
    auto events = host.take(1);
    EXPECT_LT(Clock::now() - start, 500ms);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_STREQ(events[0].name, "RD210");
    EXPECT_EQ(lowerCased(events[0].path), lowerCased(path));
    EXPECT_EQ(+events[0].plugged, 1U);
    ASSERT_EQ(listed().size(), 1U);
    EXPECT_EQ(listed()[0].path, lowerCased(path));
    EXPECT_TRUE(capture.waitFor("[PYRUX]core usb event notify finish"));

    sim::unplug(path);
    events = host.take(1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(+events[0].plugged, 0U);
    EXPECT_TRUE(listed().empty());
}

TEST_F(Live, opensAMouseByTheEventsPathAndByTheRecords)
{
    sim::plug(sim::makeFirmware("rd210"));
    const std::string eventPath = host.take(1).at(0).path;
    PYRUX_RD210_Base* byEvent = rd210(eventPath.c_str());
    ASSERT_TRUE(byEvent);
    EXPECT_EQ(byEvent->changeProfileId(1), E_OK);
    PYRUX_RD210_Base* byRecord = rd210(listed().at(0).path);
    ASSERT_TRUE(byRecord);
    EXPECT_NE(byRecord, byEvent); // compared byte by byte
    EXPECT_EQ(byRecord->changeProfileId(2), E_OK);
    sim::reset(); // closes both spellings
    host.take(1);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_EQ(byEvent->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(byRecord->changeProfileId(1), E_CLOSED);
}

TEST_F(Live, letsACallOutWhoseDeviceIsPulled)
{
    const std::string path = sim::plug(sim::makeFirmware("rd210"), "port-1");
    host.take(1);
    PYRUX_RD210_Base* mouse = rd210(path.c_str());
    ASSERT_TRUE(mouse);
    sim::setConduct(path, {.silent = true});
    sim::takeTraffic(path);
    auto call = std::async(std::launch::async, [&] { return mouse->changeProfileId(1); });
    ASSERT_FALSE(sim::takeTraffic(path, 1).empty()); // it waits for its reply
    const auto start = Clock::now();
    sim::unplug(path);
    const _error result = call.get();
    EXPECT_TRUE(result == E_NOT_OPEN || result == E_INVALID_GET || result == E_INVALID_SET) << int(result);
    EXPECT_EQ(+host.take(1).at(0).plugged, 0U);
    while (mouse->changeProfileId(1) != E_CLOSED)
        ASSERT_LT(Clock::now() - start, 5s);
    ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
    EXPECT_GE(Clock::now() - start, 1s);
    EXPECT_EQ(sim::openHandles(), 0);

    const std::string again = sim::plug(sim::makeFirmware("rd210"), "port-1");
    EXPECT_EQ(again, path);
    PYRUX_RD210_Base* next = rd210(path.c_str());
    ASSERT_TRUE(next);
    EXPECT_NE(next, mouse);
    EXPECT_EQ(next->changeProfileId(1), E_OK);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
}

TEST_F(Live, letsTheCallbackUseTheLibrary)
{
    std::promise<std::pair<_error, std::size_t>> used;
    host.onEvent([&](const HotplugEvent& event) {
        if (!event.plugged)
            return;
        PYRUX_RD210_Base* mouse = rd210(event.path);
        used.set_value({mouse ? mouse->changeProfileId(1) : E_FAIL, listed().size()});
    });
    auto result = used.get_future();
    sim::plug(sim::makeFirmware("rd210"));
    ASSERT_EQ(result.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(result.get(), (std::pair<_error, std::size_t>{E_OK, 1}));
    host.take(1);
}

TEST_F(Live, tellsOfSeveralAtOnceAndOfEachCollectionThatARowTakes)
{
    sim::plug(plainDevice(0x1006, -1));   // one interface
    sim::plug(plainDevice(0x0093, 3, 4)); // a headset with four collections
    sim::plug(plainDevice(0x0069, 1, 2)); // two collections, both of interest
    sim::plug(plainDevice(0x0171, 3));    // a receiver
    sim::plug(plainDevice(0x0001, 0));    // nobody's
    sim::plug(sim::makeFirmware("rd210"));
    std::multiset<std::string> names;
    for (const HotplugEvent& event : host.take(6))
        names.insert(event.name + std::string(event.plugged ? "+" : "-"));
    EXPECT_EQ(names, (std::multiset<std::string>{"HS310+", "QW410+", "QW410+", "RD210+", "RD245_DONGLE+",
                                                 "VK530+"}));
    names.clear();
    sim::reset();
    for (const HotplugEvent& event : host.take(5)) // the receiver had no device
        names.insert(event.name + std::string(event.plugged ? "+" : "-"));
    EXPECT_EQ(names, (std::multiset<std::string>{"HS310-", "QW410-", "QW410-", "RD210-", "VK530-"}));
}

TEST_F(Live, takesALinkChangeOfAReceiver)
{
    const std::string path = sim::plug(plainDevice(0x0171, 3));
    host.take(1);
    EXPECT_TRUE(notifyLinkChange(path, 0x3A7E, 0x0167));
    const auto linked = host.take(1);
    ASSERT_EQ(linked.size(), 1U);
    EXPECT_EQ(+linked[0].pid, 0x0167U);
    EXPECT_EQ(+linked[0].plugged, 1U);
    EXPECT_TRUE(std::string(linked[0].path).ends_with("&ISDONGLE"));
    EXPECT_TRUE(notifyLinkChange(path, 0x3A7E, 0x0167, linkLost));
    EXPECT_EQ(+host.take(1).at(0).plugged, 0U);
}

/// Threads that use the library and its mice all the time.
class Users {
public:
    explicit Users(int ports) : mice(std::size_t(ports))
    {
        for (std::size_t i = 0; i < 2; ++i)
            threads.emplace_back([this, i] { run(i); });
    }

    ~Users() { stop(); }

    void give(int port, PYRUX_RD210_Base* mouse)
    {
        const std::lock_guard lock(mutex);
        mice[std::size_t(port)] = mouse;
    }

    /// The number of their calls.
    int stop()
    {
        running = false;
        for (std::thread& thread : threads)
            thread.join();
        threads.clear();
        return calls;
    }

private:
    void run(std::size_t first)
    {
        for (std::size_t round = first; running; ++round) {
            PYRUX_RD210_Base* mouse = nullptr;
            {
                const std::lock_guard lock(mutex);
                mouse = mice[round % mice.size()];
            }
            if (mouse)
                mouse->changeProfileId(std::uint8_t(round % 5));
            if (round % 16 == 0)
                listed();
            ++calls;
            std::this_thread::yield();
        }
    }

    std::mutex mutex;
    std::vector<PYRUX_RD210_Base*> mice;
    std::atomic<bool> running{true};
    std::atomic<int> calls{0};
    std::vector<std::thread> threads;
};

/// Thousands of devices come and go while other threads use the library; PYRUX_SOAK_CYCLES says how many.
TEST_F(Live, survivesDevicesThatComeAndGo)
{
    const char* variable = std::getenv("PYRUX_SOAK_CYCLES");
    const int cycles = variable ? std::atoi(variable) : 300;
    constexpr int ports = 20;
    std::mutex mutex;
    std::map<std::string, int> balance; // arrivals less removals, by path
    host.onEvent([&](const HotplugEvent& event) {
        const std::lock_guard lock(mutex);
        balance[event.path] += event.plugged ? 1 : -1;
    });
    Users users(ports);
    Footprint start;
    for (int done = 0; done < cycles; done += ports) {
        // After the first rounds everything that is made once is there.
        if (done <= 4 * ports)
            start = footprint();
        std::vector<std::string> paths;
        for (int port = 0; port < ports; ++port)
            paths.push_back(sim::plug(sim::makeFirmware("rd210"), "port-" + std::to_string(port)));
        for (int port = 0; port < ports; ++port) {
            PYRUX_RD210_Base* mouse = rd210(paths[std::size_t(port)].c_str());
            ASSERT_TRUE(mouse);
            users.give(port, mouse);
        }
        for (const std::string& path : paths)
            sim::unplug(path);
        ASSERT_EQ(host.take(2 * ports, 60s).size(), 2U * ports);
        ASSERT_TRUE(DeviceCloser::instance().waitUntilIdle(60s));
        ASSERT_EQ(sim::openHandles(), 0);
    }
    const Footprint end = footprint();
    EXPECT_LE(end.files, start.files);
    // Host objects stay to the end of the process, by their promise to hosts; nothing else may.
    EXPECT_LE(end.bytes, start.bytes + std::size_t(cycles) * sizeof(PYRUX_RD210) * 4 + 256 * 1024);
    RecordProperty("bytesAtTheStart", std::to_string(start.bytes));
    RecordProperty("bytesAtTheEnd", std::to_string(end.bytes));
    const int calls = users.stop();
    EXPECT_GT(calls, 0);
    for (const auto& [path, count] : balance)
        EXPECT_EQ(count, 0) << path;
    EXPECT_EQ(balance.size(), std::size_t(ports));
    EXPECT_EQ(sim::misuses(), 0);
    EXPECT_EQ(sim::overlaps(), 0);
    RecordProperty("calls", calls);
}

} // namespace
