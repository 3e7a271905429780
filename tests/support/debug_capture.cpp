#include "tests/support/debug_capture.h"

#include "tests/support/surroundings.h"

#include <algorithm>

#ifdef _WIN32

#include <condition_variable>
#include <mutex>
#include <windows.h>

namespace pyrux::test {
namespace {

std::mutex mutex;
std::condition_variable arrival;
std::vector<std::string> collected;
int captures = 0; // they share one handler: each handler would collect each text
PVOID handler = nullptr;

/// A debugger, for which the system raises an exception with the text's length and address, would see the
/// same.
LONG CALLBACK takeText(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    constexpr DWORD narrowText = 0x40010006;
    if (record.ExceptionCode == narrowText && record.NumberParameters >= 2) {
        const std::lock_guard lock(mutex);
        collected.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        arrival.notify_all();
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

struct DebugCapture::State {};

DebugCapture::DebugCapture() : state(std::make_unique<State>())
{
    const std::lock_guard lock(mutex);
    collected.clear();
    if (captures++ == 0)
        handler = AddVectoredExceptionHandler(1, takeText);
}

DebugCapture::~DebugCapture()
{
    const std::lock_guard lock(mutex);
    if (--captures == 0)
        RemoveVectoredExceptionHandler(handler);
}

std::vector<std::string> DebugCapture::texts()
{
    const std::lock_guard lock(mutex);
    return collected;
}

bool DebugCapture::waitFor(const std::string& text, std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex);
    return arrival.wait_for(lock, limit, [&] { return std::ranges::count(collected, text) > 0; });
}

} // namespace pyrux::test

#else

#include <fstream>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace pyrux::test {

struct DebugCapture::State {
    std::uintmax_t start = std::filesystem::file_size(debugOutputFile());
    int changes = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
};

DebugCapture::DebugCapture() : state(std::make_unique<State>())
{
    inotify_add_watch(state->changes, debugOutputFile().c_str(), IN_MODIFY);
}

DebugCapture::~DebugCapture()
{
    close(state->changes);
}

std::vector<std::string> DebugCapture::texts()
{
    std::ifstream file(debugOutputFile());
    file.seekg(static_cast<std::streamoff>(state->start));
    std::vector<std::string> found;
    for (std::string line; std::getline(file, line);)
        found.push_back(line);
    return found;
}

bool DebugCapture::waitFor(const std::string& text, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::ranges::count(texts(), text) == 0) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd change{state->changes, POLLIN, 0};
        if (left.count() <= 0 || poll(&change, 1, static_cast<int>(left.count())) == 0)
            return false;
        char events[4096];
        while (read(state->changes, events, sizeof events) > 0) {
        }
    }
    return true;
}

} // namespace pyrux::test

#endif
