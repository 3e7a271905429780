#include "console.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <string>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
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

} // namespace pyrux::ctl::console
