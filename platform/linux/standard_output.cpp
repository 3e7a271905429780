#include "platform/standard_output.h"

#include "platform/linux/bounded_write.h"
#include "platform/linux/broken_pipe_signal.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <stdio_ext.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>

namespace pyrux::platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds longestWait{100};
constexpr milliseconds pause{1};

milliseconds left(Clock::time_point end)
{
    return std::max(std::chrono::ceil<milliseconds>(end - Clock::now()), milliseconds(0));
}

/// Holds the C library's stream, unless somebody else does so until `end`, such as a thread of the host's
/// that is held up itself.
class StreamLock {
public:
    explicit StreamLock(Clock::time_point end)
    {
        while (!(locked = ftrylockfile(stdout) == 0) && Clock::now() < end)
            std::this_thread::sleep_for(pause);
    }
    ~StreamLock()
    {
        if (locked)
            funlockfile(stdout);
    }
    StreamLock(const StreamLock&) = delete;
    StreamLock& operator=(const StreamLock&) = delete;
    explicit operator bool() const { return locked; }

private:
    bool locked = false;
};

/// Whether a write of the C library that puts `bytes` out would be taken at once.
bool takesAtOnce(int descriptor, std::size_t bytes)
{
    pollfd room{descriptor, POLLOUT, 0};
    // A pipe that says so has room for PIPE_BUF, and for all that it holds when it is empty.
    if (poll(&room, 1, 0) != 1 || room.revents != POLLOUT)
        return false;
    if (bytes <= PIPE_BUF)
        return true;
    int waiting = 0;
    const int size = fcntl(descriptor, F_GETPIPE_SZ);
    return size < 0 || (ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting == 0 &&
                        bytes <= static_cast<std::size_t>(size));
}

/// Puts out what the host has written, for which the C library would wait without limit. False: the reader
/// has gone, or has not made room.
bool putOutTheHosts(int descriptor, Clock::time_point end)
{
    const std::size_t bytes = __fpending(stdout);
    if (bytes == 0)
        return true;
    while (!takesAtOnce(descriptor, bytes)) {
        pollfd room{descriptor, POLLOUT, 0};
        if (Clock::now() >= end || poll(&room, 1, 0) < 0 || (room.revents & (POLLERR | POLLNVAL)))
            return false;
        std::this_thread::sleep_for(pause);
    }
    const BrokenPipeSignalBlocked blocked;
    return fflush_unlocked(stdout) == 0;
}

/// A file that takes all at once, or a stream without a file.
bool isSimple(int descriptor)
{
    struct stat found {};
    return descriptor < 0 || (fstat(descriptor, &found) == 0 && S_ISREG(found.st_mode));
}

bool put(std::string_view line, milliseconds limit)
{
    static constinit LineWriter writer;
    const auto end = Clock::now() + limit;
    const StreamLock lock(end);
    if (!lock)
        return false;
    const int descriptor = fileno_unlocked(stdout);
    if (isSimple(descriptor)) {
        fwrite_unlocked(line.data(), 1, line.size(), stdout);
        fwrite_unlocked("\n", 1, 1, stdout);
        fflush_unlocked(stdout);
        return true;
    }
    return putOutTheHosts(descriptor, end) &&
           writer.put(descriptor, std::string(line) + '\n', left(end)) == Written::all;
}

} // namespace

void standardOutput(std::string_view line)
{
    static constinit std::atomic<bool> stalled{false};
    stalled = !put(line, stalled ? milliseconds(0) : longestWait);
}

} // namespace pyrux::platform
