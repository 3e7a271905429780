#include "core/debug_console.h"

#include "core/log.h"
#include "platform/pipe.h"
#include "tests/support/debug_capture.h"
#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace pyrux;
using namespace pyrux::test;

using Texts = std::vector<std::string>;

/// Leaves the log's settings as they are at load.
class DebugConsole : public testing::Test {
protected:
    ~DebugConsole() override
    {
        debugEnabled = 1;
        debugType = 1;
    }

    /// Lets the console serve a client that writes `bytes` at once and goes.
    /// @return what the console has written to the standard output
    static std::string serve(std::string_view bytes)
    {
        const auto server = platform::PipeServer::create("pyrux-test-console", 128);
        EXPECT_NE(server, nullptr);
        testing::internal::CaptureStdout();
        std::thread console([&] {
            if (server->accept())
                serveConsoleClient(*server);
            server->disconnect();
        });
        {
            BytePipeClient client("pyrux-test-console");
            EXPECT_TRUE(client.write(bytes));
        }
        console.join();
        return testing::internal::GetCapturedStdout();
    }

    OwnPipes pipes;
    DebugCapture capture;
};

ConsoleEffect reply(std::string text)
{
    return {{}, {}, std::move(text)};
}

} // namespace

TEST(DebugConsoleCommand, queriesTellTheSettings)
{
    EXPECT_EQ(interpretConsoleCommand("debug?", {1, 2}), reply("Debug=1"));
    EXPECT_EQ(interpretConsoleCommand("debug?", {0, 2}), reply("Debug=0"));
    EXPECT_EQ(interpretConsoleCommand("debugtype?", {1, 2}), reply("Debug type=2"));
    EXPECT_EQ(interpretConsoleCommand("debugtype?", {0, 1}), reply("Debug type=1"));
}

TEST(DebugConsoleCommand, queriesMustMatchAsAWhole)
{
    for (const char* command :
         {"debug?\n", "debug?x", " debug?", "Debug?", "debugtype?\r\n", "debug", "debugtype", ""})
        EXPECT_EQ(interpretConsoleCommand(command, {}), ConsoleEffect{}) << command;
}

TEST(DebugConsoleCommand, switchesTheLogByTheFirstSevenCharacters)
{
    EXPECT_EQ(interpretConsoleCommand("debug=1", {0, 1}), (ConsoleEffect{1, {}, "Debug ON"}));
    EXPECT_EQ(interpretConsoleCommand("debug=0", {1, 1}), (ConsoleEffect{0, {}, "Debug OFF"}));
    EXPECT_EQ(interpretConsoleCommand("debug=1\n", {}), (ConsoleEffect{1, {}, "Debug ON"}));
    EXPECT_EQ(interpretConsoleCommand("debug=01", {}), (ConsoleEffect{0, {}, "Debug OFF"}));
}

TEST(DebugConsoleCommand, otherSwitchesAreUnknown)
{
    for (const char* command : {"debug=2", "debug=", "debug= 1", "DEBUG=1", "debug=-1"})
        EXPECT_EQ(interpretConsoleCommand(command, {}), ConsoleEffect{}) << command;
}

TEST(DebugConsoleCommand, setsTheTypeByTheFirstElevenCharacters)
{
    EXPECT_EQ(interpretConsoleCommand("debugtype=1", {}), (ConsoleEffect{{}, 1, "Set debug type=1"}));
    EXPECT_EQ(interpretConsoleCommand("debugtype=2", {}), (ConsoleEffect{{}, 2, "Set debug type=2"}));
    EXPECT_EQ(interpretConsoleCommand("debugtype=2\r\n", {}), (ConsoleEffect{{}, 2, "Set debug type=2"}));
    EXPECT_EQ(interpretConsoleCommand("debugtype=13", {}), (ConsoleEffect{{}, 1, "Set debug type=1"}));
}

TEST(DebugConsoleCommand, refusesOtherTypes)
{
    EXPECT_EQ(interpretConsoleCommand("debugtype=3", {}), reply("Set debug type fail, input type=3"));
    EXPECT_EQ(interpretConsoleCommand("debugtype=0", {}), reply("Set debug type fail, input type=0"));
    EXPECT_EQ(interpretConsoleCommand("debugtype=9\n", {}), reply("Set debug type fail, input type=9"));
}

TEST(DebugConsoleCommand, aTypeThatIsNoDigitIsUnknown)
{
    for (const char* command :
         {"debugtype=", "debugtype=x", "debugtype= 1", "debugtype=-", "debugtype=:", "debugtype=/"})
        EXPECT_EQ(interpretConsoleCommand(command, {}), ConsoleEffect{}) << command;
}

TEST_F(DebugConsole, answersAtTheDebugOutput)
{
    EXPECT_EQ(serve("debug?"), "received:debug?, len:6\n");
    EXPECT_EQ(capture.texts(), Texts{"[PYRUX][Debug]Debug=1"});
}

TEST_F(DebugConsole, changesTheSettings)
{
    EXPECT_EQ(serve("debug=0"), "received:debug=0, len:7\n");
    EXPECT_EQ(debugEnabled, 0);
    EXPECT_EQ(serve("debugtype=2"), "received:debugtype=2, len:11\n");
    EXPECT_EQ(debugType, 2);
    EXPECT_EQ(serve("debugtype=3"), "received:debugtype=3, len:11\n");
    EXPECT_EQ(debugType, 2);
    EXPECT_EQ(serve("debug=1"), "received:debug=1, len:7\n");
    EXPECT_EQ(debugEnabled, 1);
    EXPECT_EQ(capture.texts(),
              (Texts{"[PYRUX][Debug]Debug OFF", "[PYRUX][Debug]Set debug type=2",
                     "[PYRUX][Debug]Set debug type fail, input type=3", "[PYRUX][Debug]Debug ON"}));
}

TEST_F(DebugConsole, tellsOfAnUnknownCommandOnTheStandardOutputAlone)
{
    EXPECT_EQ(serve("debug=2"), "received:debug=2, len:7\nCommand not found\n");
    EXPECT_EQ(serve("debug?\n"), "received:debug?\n, len:7\nCommand not found\n");
    EXPECT_EQ(capture.texts(), Texts{});
}

TEST_F(DebugConsole, aTextEndsAtItsNul)
{
    EXPECT_EQ(serve(std::string_view("debug?\0rest", 11)), "received:debug?, len:11\n");
    EXPECT_EQ(capture.texts(), Texts{"[PYRUX][Debug]Debug=1"});
}

TEST_F(DebugConsole, takesAtMost127BytesAsOneCommand)
{
    const std::string filler(120, 'x');
    EXPECT_EQ(serve("debug=1" + filler + "debug?"),
              "received:debug=1" + filler + ", len:127\nreceived:debug?, len:6\n");
    EXPECT_EQ(capture.texts(), (Texts{"[PYRUX][Debug]Debug ON", "[PYRUX][Debug]Debug=1"}));
}

TEST_F(DebugConsole, aClientThatSaysNothingIsNoCommand)
{
    EXPECT_EQ(serve(""), "");
    EXPECT_EQ(capture.texts(), Texts{});
}

/// The console's thread stays, and with it on Windows the pipe: no other test may start it.
TEST_F(DebugConsole, zStaysForOneClientAfterTheOther)
{
    ASSERT_TRUE(startDebugConsole());
    for (const auto& [command, answer] :
         std::vector<std::pair<std::string, std::string>>{{"debugtype=2", "[PYRUX][Debug]Set debug type=2"},
                                                          {"debugtype?", "[PYRUX][Debug]Debug type=2"}}) {
        BytePipeClient client("mypip");
        ASSERT_TRUE(client.connected());
        ASSERT_TRUE(client.write(command));
        ASSERT_TRUE(capture.waitFor(answer)) << answer;
        ASSERT_TRUE(client.write("debug?"));
        ASSERT_TRUE(capture.waitFor("[PYRUX][Debug]Debug=1"));
    }
    EXPECT_EQ(platform::PipeServer::create("mypip", 128), nullptr) << "the console's pipe is mypip";
}
