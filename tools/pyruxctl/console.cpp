#include "console.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace pyrux::ctl::console {

namespace {

#if defined(_WIN32)
constexpr auto nowhere = "NUL";
int duplicate(int file)
{
    return _dup(file);
}
int duplicateTo(int file, int target)
{
    return _dup2(file, target);
}
int openNowhere()
{
    return _open(nowhere, _O_WRONLY);
}
std::FILE* stream(int file)
{
    return _fdopen(file, "w");
}
void closeFile(int file)
{
    _close(file);
}
bool understandsSequences(std::FILE* file)
{
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) && SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}
#else
constexpr auto nowhere = "/dev/null";
int duplicate(int file)
{
    return fcntl(file, F_DUPFD_CLOEXEC, 0);
}
int duplicateTo(int file, int target)
{
    return dup2(file, target);
}
int openNowhere()
{
    return open(nowhere, O_WRONLY | O_CLOEXEC);
}
std::FILE* stream(int file)
{
    return fdopen(file, "w");
}
void closeFile(int file)
{
    close(file);
}
bool understandsSequences(std::FILE* file)
{
    return isatty(fileno(file)) != 0;
}
#endif

constexpr int standardOutput = 1;
constexpr int standardError = 2;

std::FILE* results = stdout;
std::mutex lineMutex; // results and the lines of other threads (trace) do not cut into each other
std::atomic<bool> stop{false};

void write(std::FILE* to, std::string_view text)
{
    const std::string line = std::string(text) + "\n";
    const std::lock_guard lock(lineMutex);
    std::fwrite(line.data(), 1, line.size(), to);
    std::fflush(to);
}

} // namespace

void begin(bool showLibrary)
{
    const int own = duplicate(standardOutput);
    std::FILE* const opened = own < 0 ? nullptr : stream(own);
    if (!opened)
        return;
    results = opened;
    if (showLibrary) {
        duplicateTo(standardError, standardOutput);
        return;
    }
    const int file = openNowhere();
    if (file < 0)
        return;
    duplicateTo(file, standardOutput);
    closeFile(file);
}

void print(std::string_view text)
{
    write(results, text);
}

void note(std::string_view text)
{
    write(stderr, text);
}

bool isScreen()
{
    const char* const refused = std::getenv("NO_COLOR");
    return !(refused && *refused) && understandsSequences(results);
}

void catchInterrupt()
{
    static_assert(std::atomic<bool>::is_always_lock_free); // the handler may touch nothing else
    const auto handler = [](int) { stop = true; };
    std::signal(SIGINT, handler);
    std::signal(SIGTERM, handler);
}

bool interrupted()
{
    return stop;
}

bool sleepUntil(std::chrono::steady_clock::time_point end)
{
    using Clock = std::chrono::steady_clock;
    // A signal wakes nobody here.
    while (!stop && Clock::now() < end)
        std::this_thread::sleep_until(std::min(end, Clock::now() + std::chrono::milliseconds(50)));
    return !stop;
}

} // namespace pyrux::ctl::console
