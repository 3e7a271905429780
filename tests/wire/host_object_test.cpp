// Host objects: factories, the registry, the end of an object, and calls around it.

#include "tests/support/debug_log.h"
#include "tests/support/handles.h"
#include "tests/support/mouse.h"
#include "tests/support/notifications.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <future>
#include <mutex>
#include <set>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

std::string changedCase(std::string text)
{
    for (char& c : text)
        c = char(std::isupper(static_cast<unsigned char>(c)) ? std::tolower(static_cast<unsigned char>(c))
                                                             : std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// Lets a callback and a test wait for each other.
class Gate {
public:
    void open()
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        changed.notify_all();
    }
    bool wait()
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, [&] { return isOpen; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
};

TEST(Factory, takesAPathInAnotherCaseForAnotherPath)
{
    Mouse mouse;
    const std::string other = changedCase(mouse.path);
    PYRUX_RD210_Base* second = rd210(other.c_str());
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, mouse.host);
    EXPECT_EQ(rd210(other.c_str()), second);
    EXPECT_EQ(mouse.written(), wire(RD210Model::facts().opening));
    EXPECT_EQ(second->changeProfileId(1), E_OK);
    EXPECT_EQ(second->exit_device(1), E_OK);
    EXPECT_EQ(mouse->changeProfileId(2), E_OK);
}

TEST(Factory, getsOverBadPaths)
{
    const int handles = settledHandles();
    const std::string base = "\\\\?\\HID#VID_3A7E&PID_012F&MI_01";
    for (const std::string& path :
         {std::string("&ISDONGLE"), std::string("#"), std::string("&&&&"), std::string("nonsense"), base,
          base + "#", base + "#a#", std::string("HID#VID_&PID_"),
          std::string("\\\\?\\HID#VID_3A7E&PID_0171&MI_03"), std::string("\xff\xfe\x80 \x01%s%n"),
          std::string(100000, 'x'), std::string(100000, '#'), std::string(100000, '&'),
          base + std::string(100000, '?') + "#x#y", base + "#" + std::string(100000, 'A') + "#"})
        EXPECT_EQ(rd210(path.c_str()), nullptr) << path.substr(0, 60);
    EXPECT_TRUE(awaitHandles(handles));
}

TEST(Factory, opensNothingOfAnotherKind)
{
    // The path of the mouse's own boot interface is no command interface, but hidapi opens it.
    Mouse mouse;
    EXPECT_EQ(rd210((mouse.path + "x").c_str()), nullptr);
}

TEST(Factory, makesOneObjectForTwoThreads)
{
    for (int round = 0; round < 10; ++round) {
        auto device = std::make_shared<ScriptedDevice>();
        const std::string path = sim::plug(device);
        std::array<std::future<PYRUX_RD210_Base*>, 4> made;
        Gate go;
        for (auto& each : made)
            each = std::async(std::launch::async, [&] {
                go.wait();
                return rd210(path.c_str());
            });
        go.open();
        std::set<PYRUX_RD210_Base*> hosts;
        for (auto& each : made)
            hosts.insert(each.get());
        EXPECT_EQ(hosts.size(), 1u);
        ASSERT_NE(*hosts.begin(), nullptr);
        EXPECT_EQ(takeWritten(path), wire(RD210Model::facts().opening));
        sim::unplug(path);
        (*hosts.begin())->exit_device(1);
    }
}

TEST(Factory, givesTheClosedObjectWhileItsPathIsRegistered)
{
    Mouse mouse;
    mouse->exit_device(1);
    EXPECT_EQ(rd210(mouse.path.c_str()), mouse.host);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(mouse.written(), "");
}

TEST(Factory, neverOverlapsHidapisOwnState)
{
    // Factories, enumerations and ends at once: hidapi's init, enumerate, open and close exclude each other.
    const int overlaps = sim::overlaps();
    const int misuses = sim::misuses();
    std::vector<std::function<void()>> all;
    for (int i = 0; i < 4; ++i)
        all.emplace_back([] {
            for (int round = 0; round < 10; ++round) {
                Mouse mouse;
                EXPECT_EQ(mouse->changeProfileId(1), E_OK);
            }
        });
    for (int i = 0; i < 2; ++i)
        all.emplace_back([] {
            for (int round = 0; round < 20; ++round)
                EXPECT_GE(devNums(), 0);
        });
    together(all);
    EXPECT_EQ(sim::overlaps(), overlaps);
    EXPECT_EQ(sim::misuses(), misuses);
}

/// A wireless receiver of the catalogue.
sim::Identity receiver()
{
    sim::Identity identity = rd210Identity();
    identity.pid = 0x0171;
    identity.collections = {{3, 0xFF00, 0x0001}};
    identity.controlInterface = 3;
    return identity;
}

TEST(Factory, findsAReceiverByBothSpellings)
{
    Mouse plain(receiver());
    EXPECT_EQ(rd210((plain.path + "&ISDONGLE").c_str()), plain.host);
    EXPECT_EQ(rd210(plain.path.c_str()), plain.host);

    auto device = std::make_shared<ScriptedDevice>(receiver());
    const std::string path = sim::plug(device);
    PYRUX_RD210_Base* marked = rd210((path + "&ISDONGLE").c_str());
    ASSERT_NE(marked, nullptr);
    EXPECT_EQ(rd210(path.c_str()), marked);
    EXPECT_NE(marked, plain.host);
    EXPECT_EQ(takeWritten(path), wire(RD210Model::facts().opening));
    sim::unplug(path);
    marked->exit_device(1);
}

TEST(Factory, opensAReceiverWithoutTheMarkInAnyCase)
{
    auto device = std::make_shared<ScriptedDevice>(receiver());
    const std::string path = sim::plug(device);
    PYRUX_RD210_Base* host = rd210((path + "&isDongle").c_str());
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(host->changeProfileId(1), E_OK);
    sim::unplug(path);
    host->exit_device(1);
}

TEST(Factory, takesTheMarkOfAnotherDeviceForAnotherPath)
{
    Mouse mouse;
    PYRUX_RD210_Base* marked = rd210((mouse.path + "&ISDONGLE").c_str());
    ASSERT_NE(marked, nullptr);
    EXPECT_NE(marked, mouse.host);
    marked->exit_device(1);
}

TEST(ClosedObject, refusesWhatAnOpenOneRefusesToo)
{
    Mouse mouse;
    EXPECT_EQ(mouse->exit_device(1), E_OK);
    EXPECT_EQ(mouse->changeProfileId(9), E_CLOSED);
    EXPECT_EQ(mouse->getPerformance(nullptr), E_CLOSED);
    EXPECT_EQ(mouse.written(), "");
}

TEST(ClosedObject, canBeClosedAgain)
{
    Mouse mouse;
    EXPECT_EQ(mouse->exit_device(0), E_OK);
    mouse.forget();
    EXPECT_EQ(debugLinesOf([&] {
                  EXPECT_EQ(mouse->exit_device(0), E_OK);
                  EXPECT_EQ(mouse->exit_device(1), E_OK);
              }),
              (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::exit_device, #",
                     "[PYRUX][RD210]PYRUX::PYRUX_RD210::exit_device, #"}));
    EXPECT_EQ(mouse.written(), "");
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
}

TEST(ClosedObject, hasFreedItsHandleAndThreads)
{
    const int handles = settledHandles();
    for (int i = 0; i < 20; ++i) {
        Mouse mouse;
        EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    }
    EXPECT_TRUE(awaitHandles(handles));
}

TEST(VanishedDevice, endsCallsByTheirTimeLimit)
{
    // Nobody has told the library yet: the object is open, the device does not answer.
    Mouse mouse;
    sim::unplug(mouse.path);
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->stopSurfaceLearning(), E_INVALID_SET); }), 3000);
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->exit_device(1), E_OK); }), 1800);
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_CLOSED);
}

WAITING_TEST(VanishedDevice, letsACallThatWaitsRunOut)
{
    Mouse mouse;
    mouse.device->silence("52 00");
    std::uint8_t profile = 0xEE;
    auto waiting = std::async(std::launch::async, [&] { return mouse->getCurrProfileId(&profile); });
    EXPECT_TRUE(mouse.device->awaitCommands("52 00"));
    const auto time = milliseconds([&] {
        sim::unplug(mouse.path);
        EXPECT_EQ(waiting.get(), E_INVALID_GET);
    });
    EXPECT_LT(time, 3900);
    EXPECT_EQ(profile, 0xEE);
}

WAITING_TEST(VanishedDevice, costsNoGoodbyeMoreThanTheWaits)
{
    // exit_device(0) for a device that has gone after all: each of the two commands waits for its reply.
    Mouse mouse;
    sim::unplug(mouse.path);
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->exit_device(0), E_OK); }), 6000);
    EXPECT_EQ(mouse->saveConfig(), E_CLOSED);
}

TEST(ExitDevice, endsACallThatWaitsAtOnceWhenTheDeviceHasGone)
{
    Mouse mouse;
    mouse.device->silence("52 00");
    std::uint8_t profile = 0xEE;
    auto waiting = std::async(std::launch::async, [&] { return mouse->getCurrProfileId(&profile); });
    EXPECT_TRUE(mouse.device->awaitCommands("52 00"));
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(mouse->exit_device(1), E_OK);
                  EXPECT_EQ(waiting.get(), E_NOT_OPEN);
              }),
              1800);
    EXPECT_EQ(profile, 0xEE);
}

TEST(ExitDevice, endsASetThatWaitsLikewise)
{
    Mouse mouse;
    mouse.device->silence("51");
    auto waiting = std::async(std::launch::async, [&] { return mouse->changeProfileId(2); });
    EXPECT_TRUE(mouse.device->awaitCommands("51 00"));
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(mouse->exit_device(1), E_OK);
                  EXPECT_EQ(waiting.get(), E_NOT_OPEN);
              }),
              1800);
}

WAITING_TEST(ExitDevice, givesACallThatGoesOnTwoSeconds)
{
    // Thirteen buttons, each without a reply: the call would last for half a minute.
    Mouse mouse;
    mouse.device->silence("52");
    std::array<std::uint16_t, 13> map{};
    auto waiting = std::async(std::launch::async, [&] { return mouse->getKeyMappingAll(map.data()); });
    EXPECT_TRUE(mouse.device->awaitCommands("52 18"));
    const auto time = milliseconds([&] {
        EXPECT_EQ(mouse->exit_device(0), E_OK);
        EXPECT_LT(waiting.get(), 0);
    });
    EXPECT_GE(time, 1900);
    EXPECT_LT(time, 6000);
    EXPECT_TRUE(mouse.written().ends_with("| 41 01 | 41"));
}

TEST(ExitDevice, letsACallFinishWhoseReplyComes)
{
    Mouse mouse;
    mouse.device->silence("52 00");
    std::uint8_t profile = 0xEE;
    auto waiting = std::async(std::launch::async, [&] { return mouse->getCurrProfileId(&profile); });
    EXPECT_TRUE(mouse.device->awaitCommands("52 00"));
    auto leaving = std::async(std::launch::async, [&] { return mouse->exit_device(0); });
    // The object is closed for others as soon as the end has begun.
    while (mouse->registerNotify(nullptr) != E_CLOSED)
        std::this_thread::yield();
    mouse.device->send("52 00 00 00 03");
    EXPECT_EQ(waiting.get(), E_OK);
    EXPECT_EQ(profile, 3);
    EXPECT_EQ(leaving.get(), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 00 | 41 01 | 41 00"));
}

TEST(ExitDevice, racesWithCallsOfManyThreads)
{
    for (int round = 0; round < 20; ++round) {
        Mouse mouse;
        std::atomic<int> started{0};
        std::vector<std::function<void()>> threads;
        for (int i = 0; i < 6; ++i)
            threads.emplace_back([&, i] {
                ++started;
                while (true) {
                    std::uint8_t out = 0;
                    const _error result = i % 3 == 0   ? mouse->getCurrProfileId(&out)
                                          : i % 3 == 1 ? mouse->changeProfileId(1)
                                                       : mouse->registerNotify(Notifications::callback);
                    if (result == E_CLOSED)
                        return;
                    EXPECT_TRUE(result == E_OK || result == E_NOT_OPEN) << result;
                }
            });
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&, i] {
                while (started < 6)
                    std::this_thread::yield();
                EXPECT_EQ(mouse->exit_device(std::uint8_t((round + i) % 2)), E_OK);
            });
        EXPECT_LT(milliseconds([&] { together(threads); }), 5000);
    }
}

TEST(ExitDevice, worksInsideTheCallback)
{
    static std::atomic<int> calls;
    static PYRUX_RD210_Base* host;
    static Gate done;
    const int handles = settledHandles();
    calls = 0;
    Mouse mouse;
    host = mouse.host;
    mouse->registerNotify([](NotifyRecord*) {
        ++calls;
        EXPECT_EQ(host->exit_device(1), E_OK);
        EXPECT_EQ(host->changeProfileId(1), E_CLOSED);
        done.open();
    });
    mouse.device->send("42 20 40 00 01");
    EXPECT_TRUE(done.wait());
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (sim::openHandles() > handles && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_TRUE(awaitHandles(handles));
    EXPECT_EQ(calls, 1);
}

WAITING_TEST(ExitDevice, doesNotWaitForACallbackThatTakesLong)
{
    static Gate entered;
    static Gate release;
    static std::atomic<int> calls;
    Mouse mouse;
    mouse->registerNotify([](NotifyRecord*) {
        ++calls;
        entered.open();
        release.wait();
    });
    mouse.device->send("42 20 40 00 01");
    mouse.device->send("42 20 40 00 01");
    EXPECT_TRUE(entered.wait());
    // Its limit: the goodbye cannot be answered, as the reader is in the callback.
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->exit_device(1), E_OK); }), 1800);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    release.open();
    EXPECT_EQ(calls, 1);
}

TEST(UnRegisterNotify, worksInsideTheCallback)
{
    static PYRUX_RD210_Base* host;
    static std::atomic<int> calls;
    calls = 0;
    Mouse mouse;
    host = mouse.host;
    mouse->registerNotify([](NotifyRecord*) {
        ++calls;
        EXPECT_EQ(host->unRegisterNotify(), E_OK);
    });
    mouse.device->send("42 20 40 00 01");
    mouse.device->send("42 20 40 00 01");
    EXPECT_EQ(mouse.written(2), wire("42 10 40 00 01 | 42 10 40 00 01"));
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK); // its reply comes after both
    EXPECT_EQ(calls, 1);
}

TEST(UnRegisterNotify, waitsForACallbackThatRuns)
{
    static Gate entered;
    static Gate release;
    static std::atomic<bool> inside;
    Mouse mouse;
    mouse->registerNotify([](NotifyRecord*) {
        inside = true;
        entered.open();
        release.wait();
        inside = false;
    });
    mouse.device->send("42 20 40 00 01");
    EXPECT_TRUE(entered.wait());
    auto leaving = std::async(std::launch::async, [&] {
        const _error result = mouse->unRegisterNotify();
        EXPECT_FALSE(inside);
        return result;
    });
    release.open();
    EXPECT_EQ(leaving.get(), E_OK);
}

TEST(HostObject, keepsDevicesApart)
{
    // A reply goes to the device's own command.
    Mouse first;
    Mouse second;
    first.device->answer("52 00", "52 00 00 00 01");
    second.device->answer("52 00", "52 00 00 00 02");
    std::vector<std::function<void()>> threads;
    for (Mouse* mouse : {&first, &second})
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([mouse, expected = mouse == &first ? 1 : 2] {
                for (int round = 0; round < 200; ++round) {
                    std::uint8_t profile = 0;
                    EXPECT_EQ(mouse->host->getCurrProfileId(&profile), E_OK);
                    EXPECT_EQ(profile, expected);
                }
            });
    together(threads);
}

TEST(HostObject, tellsRepliesOfDifferentCommandsApart)
{
    Mouse mouse;
    mouse.device->answer("52 00", "52 00 00 00 03");
    mouse.device->answer("80 00", "80 00 00 00 04");
    std::vector<std::function<void()>> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                std::uint8_t profile = 0;
                EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
                EXPECT_EQ(profile, 3);
            }
        });
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                std::uint8_t status = 0;
                EXPECT_EQ(mouse->getSurfaceLearningStatus(&status), E_OK);
                EXPECT_EQ(status, 4);
            }
        });
    }
    together(threads);
}

TEST(HostObject, idlesQuietly)
{
    Mouse mouse;
    const int before = sim::readWakeups(mouse.path);
    // The budget is a rate: it can only be seen over time.
    std::this_thread::sleep_for(1s);
    EXPECT_LE(sim::readWakeups(mouse.path) - before, 11);
}

} // namespace
} // namespace pyrux::test
