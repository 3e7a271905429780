#include "platform/standard_output.h"

#include "platform/threads.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <io.h>
#include <mutex>
#include <string>

namespace pyrux::platform {
namespace {

using namespace std::chrono_literals;

/// Writes lines on a thread of its own: a pipe that is not read, and a console in which somebody marks text,
/// hold up whoever writes.
class Writer {
public:
    void put(std::string_view line)
    {
        const auto end = std::chrono::steady_clock::now() + 100ms;
        std::unique_lock lock(mutex);
        if (!started)
            start();
        // Other callers are waited for, but not one that has given up.
        if (stalled || !changed.wait_until(lock, end, [&] { return next.empty() || stalled; }) || stalled)
            return;
        next.assign(line).append("\n");
        const unsigned long own = ++asked;
        changed.notify_all();
        if (!changed.wait_until(lock, end, [&] { return written >= own; }))
            stalled = true;
    }

private:
    void start()
    {
        std::thread thread = startThread([this] { run(); });
        started = thread.joinable();
        stalled = !started; // nobody would take the line
        if (started)
            thread.detach();
    }

    /// Past the stream, which would stay locked while the write hangs and hold up the host's exit.
    static void write(const std::string& line)
    {
        std::fflush(stdout);
        if (const int descriptor = _fileno(stdout); descriptor >= 0)
            _write(descriptor, line.data(), static_cast<unsigned>(line.size()));
    }

    void run()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [&] { return !next.empty(); });
            const std::string line = next;
            lock.unlock();
            write(line);
            lock.lock();
            next.clear();
            stalled = false;
            ++written;
            changed.notify_all();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool started = false;
    bool stalled = false;
    std::string next; ///< The line that is being written; empty: none is.
    unsigned long asked = 0;
    unsigned long written = 0;
};

} // namespace

void standardOutput(std::string_view line)
{
    // Never destroyed: its thread lives to the end of the process.
    static auto& writer = *new Writer;
    writer.put(line);
}

} // namespace pyrux::platform
