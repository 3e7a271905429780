#include "platform/debug_output.h"

#include "tests/support/surroundings.h"

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

using pyrux::platform::debugOutput;

namespace {

std::string systemLog;

void putDown(int priority, const char* format, va_list arguments)
{
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    systemLog += std::to_string(priority) + ":" + text + "|";
}

} // namespace

/// Stand in for the C library's, so that no test writes into the machine's log.
extern "C" void syslog(int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    putDown(priority, format, arguments);
    va_end(arguments);
}

extern "C" void __syslog_chk(int priority, int, const char* format, ...);
extern "C" void __syslog_chk(int priority, int, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    putDown(priority, format, arguments);
    va_end(arguments);
}

namespace {

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
    const auto writes = [] {
        choose("");
        debugOutput("50% of it\n");
        debugOutput("%s\n\n");
        finish(systemLog == "15:50% of it|15:%s\n|"); // LOG_USER | LOG_DEBUG
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "");
}

TEST_F(PlatformDebugOutputLinux, syslogByName)
{
    const auto writes = [] {
        choose("syslog");
        debugOutput("text");
        finish(systemLog == "15:text|");
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "");
}

TEST_F(PlatformDebugOutputLinux, standardErrorGetsLines)
{
    const auto writes = [] {
        choose("stderr");
        debugOutput("one");
        debugOutput("two\n");
        debugOutput("");
        debugOutput("three\n\n");
        finish(systemLog.empty());
    };
    EXPECT_EXIT(writes(), testing::ExitedWithCode(0), "^one\ntwo\n\nthree\n\n$");
}

TEST_F(PlatformDebugOutputLinux, noneDropsAll)
{
    const auto writes = [] {
        choose("none");
        debugOutput("one");
        choose("stderr");
        debugOutput("the choice is made at the first call");
        finish(systemLog.empty());
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
        choose((folder.path() / "missing" / "log.txt").c_str());
        debugOutput("one");
        finish(systemLog.empty());
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
