// RD210: what the device reports by itself.

#include "tests/support/debug_log.h"
#include "tests/support/mouse.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>

namespace pyrux::test {
namespace {

/// The shift of the keys is one for the library: each test begins with button 1 up.
class RD210Events : public testing::Test {
protected:
    RD210Events()
    {
        mouse->registerNotify(Notifications::callback);
        mouse.device->send("43 01 00 00 01 40");
        settle();
        Notifications::clear();
        mouse.forget();
    }

    /// When a reply has come, everything that was sent before it has been looked at.
    void settle() { EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK); }

    /// What the callback was given for one report.
    std::string eventsOf(const char* report)
    {
        Notifications::clear();
        mouse.device->send(report);
        settle();
        return Notifications::await(0);
    }

    Mouse mouse;
};

TEST_F(RD210Events, tellsOfTheDpiButton)
{
    forgetDebugOutput();
    mouse.device->send("42 20 40 77 01 88");
    EXPECT_EQ(Notifications::await(1), "1:0");
    EXPECT_EQ(mouse.written(), wire("42 10 40 00 01"));
    EXPECT_EQ(debugLines(), (Lines{"[PYRUX]RD210 dpi change"}));
}

TEST_F(RD210Events, tellsOfTheProfileButton)
{
    forgetDebugOutput();
    mouse.device->send("42 20 00 77 01 88");
    EXPECT_EQ(Notifications::await(1), "0:0");
    EXPECT_EQ(mouse.written(), wire("42 10 00 00 01 00 00 01"));
    EXPECT_EQ(debugLines(), (Lines{"[PYRUX]RD210 profile change"}));
}

TEST_F(RD210Events, acknowledgesWithoutACallback)
{
    mouse->unRegisterNotify();
    mouse.device->send("42 20 40 00 01");
    mouse.device->send("42 20 00 00 01");
    EXPECT_EQ(mouse.written(2), wire("42 10 40 00 01 | 42 10 00 00 01 00 00 01"));
    settle();
    EXPECT_EQ(Notifications::await(0), "");
}

TEST_F(RD210Events, passesOverReportsThatAreNoEvents)
{
    forgetDebugOutput();
    for (const char* report :
         {"42 20 40 00 00", "42 20 40 00 02", "42 20 00 01 00", "42 20 41 00 01", "42 21 40 00 01",
          "42 20 01 00 01", "43 20 40 00 01", "43 00 00 00 03 80", "42 01 00 00 03 80", "00", "FF"})
        EXPECT_EQ(eventsOf(report), "") << report;
    for (const std::string& line : debugLines())
        EXPECT_FALSE(line.starts_with("[PYRUX]RD210")) << line;
    for (const std::string& report : reports(mouse.written()))
        EXPECT_EQ(report, "80 01");
}

TEST_F(RD210Events, namesEachKey)
{
    constexpr std::array<int, 24> values{0x1E, -1, 0x1F, 0x22, 0x21, 0x23, 0, 0, 0x09, 0x0A, 0, 0,
                                         0,    0,  0,    0,    0,    0,    0, 0, 0,    0,    0, 0};
    for (int key = 0; key < 256; ++key) {
        if (key == 1)
            continue;
        const std::uint8_t byte = std::uint8_t(key);
        const std::string number = hex(std::span(&byte, 1));
        const std::string value = std::to_string(key < 24 ? values[std::size_t(key)] : 0);
        Notifications::clear();
        mouse.device->send("43 01 77 88 " + number + " C0 99");
        mouse.device->send("43 01 77 88 " + number + " 40 99");
        EXPECT_EQ(Notifications::await(2), "2:" + value + " 3:" + value) << key;
    }
    settle();
    EXPECT_EQ(mouse.written(), wire("80 01")); // keys are not acknowledged
}

TEST_F(RD210Events, dropsKeysOfAnotherState)
{
    for (const char* report : {"43 01 00 00 03 00", "43 01 00 00 03 80", "43 01 00 00 03 41",
                               "43 01 00 00 03 C1", "43 01 00 00 03 FF", "43 01 00 00 01 80"})
        EXPECT_EQ(eventsOf(report), "") << report;
}

TEST_F(RD210Events, shiftsTheKeysWhileButtonOneIsDown)
{
    EXPECT_EQ(eventsOf("43 01 00 00 01 C0"), "");
    EXPECT_EQ(eventsOf("43 01 00 00 00 C0"), "2:62");
    EXPECT_EQ(eventsOf("43 01 00 00 06 40"), "3:32");
    EXPECT_EQ(eventsOf("43 01 00 00 09 40"), "3:42");
    EXPECT_EQ(eventsOf("43 01 00 00 FF C0"), "2:32");
    EXPECT_EQ(eventsOf("43 01 00 00 01 80"), ""); // no state of a key: the shift stays
    EXPECT_EQ(eventsOf("43 01 00 00 00 40"), "3:62");
    EXPECT_EQ(eventsOf("43 01 00 00 01 40"), "");
    EXPECT_EQ(eventsOf("43 01 00 00 00 C0"), "2:30");
}

TEST_F(RD210Events, shiftsTheKeysOfAllMice)
{
    Mouse other;
    other.device->send("43 01 00 00 01 C0");
    EXPECT_EQ(other->stopSurfaceLearning(), E_OK);
    EXPECT_EQ(eventsOf("43 01 00 00 00 C0"), "2:62");
    other.device->send("43 01 00 00 01 40");
    EXPECT_EQ(other->stopSurfaceLearning(), E_OK);
    EXPECT_EQ(eventsOf("43 01 00 00 00 C0"), "2:30");
}

TEST_F(RD210Events, replacesTheCallback)
{
    static std::atomic<int> calls;
    calls = 0;
    EXPECT_EQ(mouse->registerNotify([](NotifyRecord*) { ++calls; }), E_OK);
    EXPECT_EQ(eventsOf("42 20 40 00 01"), "");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(mouse->registerNotify(Notifications::callback), E_OK);
    EXPECT_EQ(eventsOf("42 20 40 00 01"), "1:0");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(mouse->unRegisterNotify(), E_OK);
    EXPECT_EQ(eventsOf("42 20 40 00 01"), "");
}

TEST_F(RD210Events, acknowledgesBeforeTheCallback)
{
    static ScriptedDevice* device;
    static std::atomic<std::size_t> acknowledged;
    device = mouse.device.get();
    mouse.device->forget();
    mouse->registerNotify([](NotifyRecord*) { acknowledged = device->commands("42 10 40 00 01") + 1; });
    mouse.device->send("42 20 40 00 01");
    settle();
    EXPECT_EQ(acknowledged, 2u);
}

TEST_F(RD210Events, mixesWithReplies)
{
    // Events that come between a command and its reply.
    mouse.device->answer("52 00", "42 20 40 00 01 | 43 01 00 00 03 C0 | 52 00 00 00 02");
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 2);
    EXPECT_EQ(Notifications::await(2), "1:0 2:34");
    EXPECT_EQ(mouse.written(3), wire("41 80 | 52 00 | 42 10 40 00 01"));
}

TEST_F(RD210Events, standsShortReports)
{
    for (const std::size_t length : {0u, 1u, 2u, 3u, 4u, 5u, 6u}) {
        ByteVector report = bytes("43 01 00 00 03 C0");
        report.resize(length);
        Notifications::clear();
        sim::inject(mouse.path, report);
        settle();
        // What is missing is 0: a key without its state is dropped.
        EXPECT_EQ(Notifications::await(0), length == 6 ? "2:34" : "") << length;
    }
    sim::inject(mouse.path, bytes("42 20 40"));
    settle();
    EXPECT_EQ(Notifications::await(0), "2:34");
}

TEST_F(RD210Events, forgetsWhatAnEarlierReportLeftBehind)
{
    // A short report is not completed by the bytes of the one before.
    Notifications::clear();
    sim::inject(mouse.path, bytes("43 01 00 00 03 C0"));
    sim::inject(mouse.path, bytes("43 01 00 00 03"));
    settle();
    EXPECT_EQ(Notifications::await(0), "2:34");
}

TEST_F(RD210Events, comeWhileACommandWaits)
{
    mouse.device->silence("80 00");
    std::uint8_t status = 0xEE;
    auto waiting = std::async(std::launch::async, [&] { return mouse->getSurfaceLearningStatus(&status); });
    EXPECT_TRUE(mouse.device->awaitCommands("80 00"));
    mouse.device->send("42 20 40 00 01");
    EXPECT_EQ(Notifications::await(1), "1:0");
    mouse.device->send("80 00 00 00 01");
    EXPECT_EQ(waiting.get(), E_OK);
    EXPECT_EQ(status, 1);
}

} // namespace
} // namespace pyrux::test
