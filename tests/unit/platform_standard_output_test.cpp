#include "core/log.h"

#include "tests/support/isolated.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#endif

/// What a host's standard output does while nobody reads it. Each test has it to itself.

namespace {

using pyrux::consoleLine;
using pyrux::test::milliseconds;

#ifdef _WIN32
constexpr auto lineEnd = "\r\n";
int duplicate(int descriptor)
{
    return _dup(descriptor);
}
void replace(int descriptor, int by)
{
    _dup2(by, descriptor);
}
void closeEnd(int descriptor)
{
    _close(descriptor);
}
bool makePipe(int (&ends)[2])
{
    return _pipe(ends, 4096, _O_TEXT | _O_NOINHERIT) == 0 && _setmode(ends[0], _O_BINARY) != -1;
}
int readSome(int descriptor, char* to, unsigned size)
{
    return _read(descriptor, to, size);
}
#else
constexpr auto lineEnd = "\n";
int duplicate(int descriptor)
{
    return dup(descriptor);
}
void replace(int descriptor, int by)
{
    dup2(by, descriptor);
}
void closeEnd(int descriptor)
{
    close(descriptor);
}
bool makePipe(int (&ends)[2])
{
    return pipe(ends) == 0;
}
ssize_t readSome(int descriptor, char* to, unsigned size)
{
    return read(descriptor, to, size);
}
#endif

/// Makes the standard output a pipe, in which each write waits for room as it does in any program.
class PipedOutput {
public:
    PipedOutput()
    {
        std::fflush(stdout);
        EXPECT_TRUE(makePipe(ends));
        replace(1, ends[1]);
        closeEnd(ends[1]);
    }
    ~PipedOutput()
    {
        end();
        closeEnd(ends[0]);
        closeEnd(before);
    }

    void leave() { closeEnd(ends[0]); }

    /// Gives the process its own output back: what reads the pipe then finds its end.
    void end()
    {
        std::fflush(stdout);
        replace(1, before);
    }

    /// At least `count` characters, and whole lines.
    std::string take(std::size_t count)
    {
        std::string all;
        char buffer[4096];
        while (all.size() < count || !all.ends_with('\n')) {
            const auto length = readSome(ends[0], buffer, sizeof buffer);
            if (length <= 0)
                break;
            all.append(buffer, static_cast<std::size_t>(length));
        }
        return all;
    }

    int reader() const { return ends[0]; }

private:
    int ends[2];
    const int before = duplicate(1);
};

std::string numbered(int from, int to)
{
    std::string lines;
    for (int i = from; i < to; ++i)
        lines += "line " + std::to_string(i) + lineEnd;
    return lines;
}

ISOLATED_TEST(StandardOutput, comesBehindWhatTheHostHasWritten)
{
    PipedOutput output;
    std::printf("host, ");
    consoleLine("line 0");
    consoleLine("line 1");
    std::printf("host again, ");
    consoleLine("");
    const std::string expected = "host, " + numbered(0, 2) + "host again, " + lineEnd;
    EXPECT_EQ(output.take(expected.size()), expected);
}

/// Reads a pipe to its end.
class Reader {
public:
    explicit Reader(PipedOutput& output) : thread([&] { run(output.reader()); }) {}
    ~Reader() { thread.join(); }

    bool waitFor(const std::string& text, std::chrono::milliseconds limit)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, limit, [&] { return all.find(text) != std::string::npos; });
    }

    std::string text()
    {
        const std::lock_guard lock(mutex);
        return all;
    }

private:
    void run(int descriptor)
    {
        char buffer[4096];
        while (const auto length = readSome(descriptor, buffer, sizeof buffer)) {
            if (length < 0)
                break;
            const std::lock_guard lock(mutex);
            all.append(buffer, static_cast<std::size_t>(length));
            changed.notify_all();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::string all;
    std::thread thread;
};

/// More lines than a pipe holds, so many that a wait for each would take half an hour.
ISOLATED_TEST(StandardOutput, waitsOnceForAReaderThatDoesNotRead)
{
    PipedOutput output;
    EXPECT_LT(milliseconds([] {
                  for (int i = 0; i < 20'000; ++i)
                      consoleLine("line " + std::to_string(i));
              }),
              60'000);
    Reader reader(output);
    for (int i = 0; i < 1000 && !reader.waitFor("goes on", std::chrono::milliseconds(20)); ++i)
        consoleLine("goes on");
    const std::string text = reader.text();
    const auto count =
        static_cast<int>(std::count(text.begin(), text.begin() + std::ptrdiff_t(text.find("goes on")), '\n'));
    EXPECT_GT(count, 0);
    EXPECT_TRUE(text.starts_with(numbered(0, count) + "goes on" + lineEnd)) << text;
    output.end();
}

#ifndef _WIN32

ISOLATED_TEST(StandardOutput, mayHaveLostItsReader)
{
    PipedOutput output;
    output.leave();
    signal(SIGPIPE, SIG_DFL);
    consoleLine("line");
    std::printf("host, ");
    consoleLine("line");
    sigset_t pending;
    sigpending(&pending);
    EXPECT_FALSE(sigismember(&pending, SIGPIPE));
    signal(SIGPIPE, SIG_IGN); // for what the host has written and puts out in the end
}

ISOLATED_TEST(StandardOutput, keepsTheHostsTextForLater)
{
    PipedOutput output;
    for (pollfd room{1, POLLOUT, 0}; poll(&room, 1, 0) == 1;)
        ASSERT_EQ(write(1, std::string(4096, 'x').data(), 4096), 4096);
    std::printf("host, ");
    consoleLine("lost");
    EXPECT_EQ(fcntl(1, F_GETFL) & O_NONBLOCK, 0);
    std::string filled(std::size_t(fcntl(1, F_GETPIPE_SZ)), '\0');
    EXPECT_EQ(read(output.reader(), filled.data(), filled.size()), ssize_t(filled.size()));
    consoleLine("line");
    EXPECT_EQ(output.take(1), "host, line\n");
}

ISOLATED_TEST(StandardOutput, isNotHeldByAHostThatHoldsTheStream)
{
    PipedOutput output;
    flockfile(stdout);
    std::thread([] { consoleLine("lost"); }).join();
    funlockfile(stdout);
    consoleLine("line");
    EXPECT_EQ(output.take(1), "line\n");
}

#endif

} // namespace
