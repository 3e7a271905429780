#include "platform/debug_output.h"

#include "platform/linux/system_log.h"
#include "tests/support/surroundings.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using pyrux::platform::debugOutput;
using pyrux::platform::SystemLog;
using pyrux::platform::systemLogSocket;

namespace {

using Texts = std::vector<std::string>;

/// Stands for the system's log.
class LogSocket {
public:
    explicit LogSocket(const std::filesystem::path& folder, int type = SOCK_DGRAM)
        : path(folder / "log"), socket(::socket(AF_UNIX, type | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        unlink(path.c_str());
        EXPECT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        if (type == SOCK_STREAM) {
            EXPECT_EQ(listen(socket, 1), 0);
        }
        systemLogSocket = path.c_str();
    }
    ~LogSocket() { close(socket); }

    /// What has come, in this form: the program's name and the time as they stood are left out.
    Texts take()
    {
        Texts texts;
        const std::regex form("<15>[A-Z][a-z]{2} [ 1-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9] unit_tests: ");
        char buffer[4096];
        for (ssize_t length; (length = recv(socket, buffer, sizeof buffer, 0)) >= 0;) {
            const std::string message(buffer, static_cast<std::size_t>(length));
            std::smatch head;
            const bool found = std::regex_search(message, head, form, std::regex_constants::match_continuous);
            texts.push_back(found ? "log: " + head.suffix().str() : message);
        }
        return texts;
    }

    const std::string path;
    const int socket;
};

/// The choice is made once in a process, so each test makes it in a process of its own.
class PlatformDebugOutputLinux : public testing::Test {
protected:
    PlatformDebugOutputLinux() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void finish(bool asExpected) { std::exit(asExpected ? 0 : 1); }

    static std::string content(const std::filesystem::path& file)
    {
        std::ostringstream all;
        all << std::ifstream(file).rdbuf();
        return all.str();
    }

    pyrux::test::TemporaryFolder folder;
};

void choose(const char* destination)
{
    setenv("PYRUX_DEBUG_OUTPUT", destination, 1);
}

} // namespace

TEST_F(PlatformDebugOutputLinux, syslogIsTheDefault)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose("");
        debugOutput("50% of it\n");
        debugOutput("%s\n\n");
        debugOutput("");
        finish(log.take() == Texts{"log: 50% of it", "log: %s\n", "log: "});
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "");
}

TEST_F(PlatformDebugOutputLinux, syslogByName)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose("syslog");
        debugOutput("text");
        finish(log.take() == Texts{"log: text"});
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "");
}

TEST_F(PlatformDebugOutputLinux, standardErrorGetsLines)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose("stderr");
        debugOutput("one");
        debugOutput("two\n");
        debugOutput("");
        debugOutput("three\n\n");
        finish(log.take().empty());
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^one\ntwo\n\nthree\n\n$");
}

TEST_F(PlatformDebugOutputLinux, noneDropsAll)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose("none");
        debugOutput("one");
        choose("stderr");
        debugOutput("the choice is made at the first call");
        finish(log.take().empty());
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aFileIsAppendedTo)
{
    const auto writes = [this] {
        const auto file = folder.path() / "log.txt";
        std::ofstream(file) << "before\n";
        choose(file.c_str());
        debugOutput("one");
        debugOutput("two\n");
        finish(content(file) == "before\none\ntwo\n");
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aFileIsMade)
{
    const auto writes = [this] {
        const auto file = folder.path() / "log.txt";
        choose(file.c_str());
        debugOutput("one");
        finish(content(file) == "one\n");
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aFileThatCannotBeMadeLosesTexts)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose((folder.path() / "missing" / "log.txt").c_str());
        debugOutput("one");
        finish(log.take().empty());
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aNamedPipeWithoutAReaderHoldsNobodyUp)
{
    const auto writes = [this] {
        const auto file = folder.path() / "pipe";
        mkfifo(file.c_str(), 0600);
        choose(file.c_str());
        debugOutput("one");
        finish(true);
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aReaderThatHasGoneDoesNotEndTheProcess)
{
    const auto writes = [this] {
        const auto file = folder.path() / "pipe";
        mkfifo(file.c_str(), 0600);
        const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
        choose(file.c_str());
        debugOutput("one");
        char text[8]{};
        const bool arrived = read(reader, text, sizeof text) == 4 && std::string(text) == "one\n";
        close(reader);
        debugOutput("two");
        sigset_t pending;
        sigpending(&pending);
        finish(arrived && !sigismember(&pending, SIGPIPE));
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aLogThatIsNotReadHoldsNobodyUpAndIsToldWhatItHasMissed)
{
    const auto writes = [this] {
        LogSocket log(folder.path());
        choose("syslog");
        for (int i = 0; i < 2000; ++i)
            debugOutput("text");
        const std::size_t there = log.take().size();
        debugOutput("goes on");
        finish(there > 0 && there < 2000 &&
               log.take() ==
                   Texts{"log: [PYRUX]lost " + std::to_string(2000 - there) + " lines", "log: goes on"});
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aLogThatIsStartedAnewIsFound)
{
    const auto writes = [this] {
        choose("syslog");
        const auto nowhere = (folder.path() / "log").string();
        systemLogSocket = nowhere.c_str();
        debugOutput("lost, as there is no log");
        bool found = false;
        {
            LogSocket log(folder.path());
            debugOutput("one");
            found = log.take() == Texts{"log: one"};
        }
        systemLogSocket = nowhere.c_str();
        debugOutput("lost, as there is none any more");
        LogSocket log(folder.path());
        debugOutput("two");
        finish(found && log.take() == Texts{"log: two"});
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aLogMayBeAStream)
{
    LogSocket listening(folder.path(), SOCK_STREAM);
    SystemLog log;
    EXPECT_TRUE(log.write("one"));
    EXPECT_TRUE(log.write(std::string("two\0cut", 7)));
    const int accepted = accept(listening.socket, nullptr, nullptr);
    char buffer[4096];
    const ssize_t length = recv(accepted, buffer, sizeof buffer, MSG_DONTWAIT);
    ASSERT_GT(length, 0);
    const std::string all(buffer, static_cast<std::size_t>(length));
    EXPECT_NE(all.find(std::string("unit_tests: one\0<15>", 20)), std::string::npos) << all;
    EXPECT_TRUE(all.ends_with(std::string("unit_tests: two\0", 16))) << all;
    const std::string longText(1000, 'x');
    int written = 0;
    while (written < 10000 && log.write(longText))
        ++written;
    EXPECT_LT(written, 10000) << "nobody reads";
    close(accepted);
}

namespace {

/// What can be read at once.
std::string takeFrom(int descriptor)
{
    std::string all;
    char buffer[65536];
    for (ssize_t length; (length = read(descriptor, buffer, sizeof buffer)) > 0;)
        all.append(buffer, static_cast<std::size_t>(length));
    return all;
}

std::string numbered(int from, int to)
{
    std::string lines;
    for (int i = from; i < to; ++i)
        lines += "line " + std::to_string(i) + "\n";
    return lines;
}

} // namespace

/// A blocking pipe, as a program that starts another one has it.
TEST_F(PlatformDebugOutputLinux, aStandardErrorThatIsNotReadLosesWholeLines)
{
    const auto writes = [] {
        int ends[2];
        if (pipe(ends) != 0 || fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0)
            finish(false);
        dup2(ends[1], STDERR_FILENO);
        choose("stderr");
        for (int i = 0; i < 10000; ++i)
            debugOutput("line " + std::to_string(i));
        const std::string first = takeFrom(ends[0]);
        const int count = static_cast<int>(std::ranges::count(first, '\n'));
        debugOutput("goes on");
        const std::string rest = takeFrom(ends[0]);
        const bool blocking = (fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK) == 0;
        finish(count > 0 && first == numbered(0, count) &&
               rest == "[PYRUX]lost " + std::to_string(10000 - count) + " lines\ngoes on\n" && blocking);
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aLongLineThatIsCutIsEndedBeforeTheNext)
{
    const auto writes = [this] {
        const auto file = folder.path() / "pipe";
        mkfifo(file.c_str(), 0600);
        const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
        choose(file.c_str());
        debugOutput(std::string(1000000, 'x'));
        const std::string first = takeFrom(reader);
        debugOutput("goes on");
        finish(first.size() > 4096 && first.find('\n') == std::string::npos &&
               takeFrom(reader) == "\n[PYRUX]lost 1 lines\ngoes on\n");
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PlatformDebugOutputLinux, aSocketThatIsNotReadHoldsNobodyUp)
{
    const auto writes = [] {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0 || fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0)
            finish(false);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        choose("stderr");
        for (int i = 0; i < 30000; ++i)
            debugOutput("line");
        const bool some = takeFrom(ends[0]).starts_with("line\nline\n");
        close(ends[0]);
        debugOutput("nobody is there");
        finish(some);
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^$");
}
