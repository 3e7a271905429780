// Start and stop of the library, which happen once in a process.

#include "tests/support/debug_capture.h"
#include "tests/support/debug_log.h"
#include "tests/support/isolated.h"
#include "tests/support/keyboard.h"
#include "tests/support/mouse.h"
#include "tests/support/pipe_peer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <thread>

namespace pyrux::test {
namespace {

constexpr const char* initLine = "[PYRUX][SYS]PYRUX::pyrux_init, #";
constexpr const char* exitLine = "[PYRUX][SYS]PYRUX::pyrux_exit, #";
constexpr const char* finishLine = "[PYRUX] PYRUX exit send the finish event";

using Texts = std::vector<std::string>;

ISOLATED_TEST(Init, worksOnce)
{
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_init(), 0); }), (Lines{initLine, "[PYRUX]send data"}));
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_init(), 0); }),
              (Lines{initLine, "[PYRUX][SYS]pyrux already init!!"}));
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_init(), 0); }),
              (Lines{initLine, "[PYRUX][SYS]pyrux already init!!"}));
}

ISOLATED_TEST(Init, losesNoTimeWithoutAControlApplication)
{
    EXPECT_LT(milliseconds([] {
                  EXPECT_EQ(pyrux_init(), 0);
                  EXPECT_EQ(pyrux_exit(), 0);
              }),
              2900);
}

ISOLATED_TEST(Init, tellsTheControlApplication)
{
    PipePeer application("twironwoodpipe", answering("TW_OK"));
    EXPECT_EQ(pyrux_init(), 0);
    EXPECT_EQ(application.requests(), (Texts{"app_control_on"}));
    EXPECT_EQ(pyrux_init(), 0);
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_EQ(application.requests(), (Texts{"app_control_on", "app_control_off"}));
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_EQ(application.requests(), (Texts{"app_control_on", "app_control_off"}));
}

ISOLATED_TEST(Init, tellsNobodyInBackgroundMode)
{
    PipePeer application("twironwoodpipe", answering("TW_OK"));
    EXPECT_EQ(pyrux_background(2), 2u);
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_init(), 0); }), (Lines{initLine}));
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }), (Lines{exitLine, finishLine}));
    EXPECT_EQ(application.requests(), Texts{});
}

ISOLATED_TEST(Init, goesOnWhenTheControlApplicationRefuses)
{
    PipePeer application("twironwoodpipe", answering("NO"));
    EXPECT_EQ(pyrux_init(), 0);
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_EQ(application.requests(), (Texts{"app_control_on", "app_control_off"}));
}

ISOLATED_TEST(Exit, worksWithoutAStart)
{
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }), (Lines{exitLine, finishLine}));
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_init(), 0); }).front(), initLine);
}

ISOLATED_TEST(Exit, waitsTheSecondTimeForTheFirst)
{
    EXPECT_EQ(pyrux_init(), 0);
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }), (Lines{exitLine, finishLine}));
    Lines lines;
    EXPECT_LT(milliseconds([&] { lines = debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }); }), 5000);
    EXPECT_EQ(lines, (Lines{exitLine, "[PYRUX][SYS]PYRUX already stop start to waiting!!",
                            "[PYRUX][SYS]all task is close"}));
}

ISOLATED_TEST(Exit, saysGoodbyeToEveryDevice)
{
    EXPECT_EQ(pyrux_init(), 0);
    Mouse first;
    Mouse second;
    Mouse closed;
    closed->exit_device(1);
    const Lines device{"[PYRUX][RD210]exit devie RD210 by probe",
                       "[PYRUX][RD210]PYRUX::PYRUX_RD210::exit_device, #"};
    Lines expected{exitLine};
    for (int i = 0; i < 3; ++i)
        expected.insert(expected.end(), device.begin(), device.end());
    expected.push_back(finishLine);
    EXPECT_EQ(debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }), expected);
    EXPECT_EQ(first.written(), wire("41 01 | 41 00"));
    EXPECT_EQ(second.written(), wire("41 01 | 41 00"));
    EXPECT_EQ(closed.written(), "");
    EXPECT_EQ(first->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(second->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(sim::openHandles(), 0);
}

ISOLATED_TEST(Exit, emptiesTheRegistry)
{
    Mouse mouse;
    EXPECT_EQ(pyrux_exit(), 0);
    PYRUX_RD210_Base* again = rd210(mouse.path.c_str());
    ASSERT_NE(again, nullptr);
    EXPECT_NE(again, mouse.host);
    EXPECT_EQ(again->changeProfileId(1), E_OK);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(again->exit_device(1), E_OK);
}

ISOLATED_TEST(Exit, endsCallsThatAreInside)
{
    Mouse mouse;
    mouse.device->silence("52 00");
    std::uint8_t profile = 0;
    auto waiting = std::async(std::launch::async, [&] { return mouse->getCurrProfileId(&profile); });
    EXPECT_TRUE(mouse.device->awaitCommands("52 00"));
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(pyrux_exit(), 0); }), 8000);
    EXPECT_LT(waiting.get(), 0);
    EXPECT_TRUE(mouse.written().ends_with("41 01 | 41"));
}

ISOLATED_TEST(Exit, letsASecondThreadWait)
{
    // The first goodbye waits for two replies that do not come: 4 s.
    Mouse mouse;
    mouse.device->silence("41");
    auto first = std::async(std::launch::async, [] { return pyrux_exit(); });
    EXPECT_TRUE(mouse.device->awaitCommands("41 01"));
    Lines lines;
    const auto time = milliseconds([&] { lines = debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }); });
    EXPECT_GE(time, 3000);
    EXPECT_LT(time, 9000);
    EXPECT_EQ(lines.front(), exitLine);
    EXPECT_EQ(lines.at(1), "[PYRUX][SYS]PYRUX already stop start to waiting!!");
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][SYS]all task is close"), 1);
    const auto finish = std::ranges::find(lines, finishLine);
    EXPECT_LT(finish, std::ranges::find(lines, "[PYRUX][SYS]all task is close"));
    EXPECT_EQ(first.get(), 0);
}

ISOLATED_TEST(Exit, letsASecondThreadWaitForTenSeconds)
{
    // A goodbye of three commands, each of which takes 1 s to write and 3 s without a reply.
    const KeyboardOf<QW210Model> keyboard;
    keyboard.device->silence("41");
    sim::setConduct(keyboard.path, {.writeTime = std::chrono::seconds(20)});
    auto first = std::async(std::launch::async, [] { return pyrux_exit(); });
    EXPECT_TRUE(sim::awaitWritersInside(1));
    Lines lines;
    const auto time = milliseconds([&] { lines = debugLinesOf([] { EXPECT_EQ(pyrux_exit(), 0); }); });
    EXPECT_GE(time, 10900);
    EXPECT_EQ(lines.front(), exitLine);
    EXPECT_EQ(lines.at(1), "[PYRUX][SYS]PYRUX already stop start to waiting!!");
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][SYS]too long to take finish"), 1);
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][SYS]all task is close"), 0);
    EXPECT_EQ(std::ranges::count(lines, finishLine), 0);
    EXPECT_EQ(first.get(), 0);
}

ISOLATED_TEST(Console, switchesTheLog)
{
    Mouse mouse; // before the start and to the end, since its coming and going would be logged
    EXPECT_EQ(pyrux_init(), 0);
    BytePipeClient console("mypip");
    ASSERT_TRUE(console.connected());
    const auto say = [&](const char* command, const char* answer) {
        DebugCapture capture;
        EXPECT_TRUE(console.write(command));
        EXPECT_TRUE(capture.waitFor(answer)) << answer;
    };
    say("debug?", "[PYRUX][Debug]Debug=1");
    say("debug=0", "[PYRUX][Debug]Debug OFF");
    say("debug?", "[PYRUX][Debug]Debug=0");
    // Direct writers do not depend on it.
    EXPECT_EQ(debugLinesOf([] {
                  devNums();
                  pyrux_dprintf("direct");
                  devNums();
              }),
              (Lines{"[PYRUX]direct"}));
    forgetDebugOutput();
    mouse.device->send("42 20 40 00 01");
    EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    EXPECT_EQ(debugLines(), (Lines{"[PYRUX]RD210 dpi change"}));
    say("debug=1", "[PYRUX][Debug]Debug ON");
    EXPECT_EQ(debugLinesOf([] { devNums(); }), (Lines{"[PYRUX][SYS]PYRUX::devNums, #"}));

    say("debugtype?", "[PYRUX][Debug]Debug type=1");
    say("debugtype=3", "[PYRUX][Debug]Set debug type fail, input type=3");
    say("debugtype=2", "[PYRUX][Debug]Set debug type=2");
    testing::internal::CaptureStdout();
    EXPECT_EQ(debugLinesOf([] { devNums(); }), Lines{});
    const std::string line = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(line.starts_with("[PYRUX][SYS]PYRUX::devNums, ")) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

ISOLATED_TEST(Console, answersAfterTheEnd)
{
    EXPECT_EQ(pyrux_init(), 0);
    EXPECT_EQ(pyrux_exit(), 0);
    BytePipeClient console("mypip");
    ASSERT_TRUE(console.connected());
    DebugCapture capture;
    EXPECT_TRUE(console.write("debug?"));
    EXPECT_TRUE(capture.waitFor("[PYRUX][Debug]Debug=1"));
}

} // namespace
} // namespace pyrux::test
