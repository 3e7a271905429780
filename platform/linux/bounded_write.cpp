#include "platform/linux/bounded_write.h"

#include "platform/linux/broken_pipe_signal.h"
#include "platform/linux/file_descriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace pyrux::platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

bool hasRoom(int descriptor, Clock::time_point end)
{
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    pollfd room{descriptor, POLLOUT, 0};
    return poll(&room, 1, static_cast<int>(std::max<long long>(left, 0))) == 1;
}

/// A file as one writes to it without being held.
class Target {
public:
    explicit Target(int number) : descriptor(number)
    {
        struct stat found {};
        if (fstat(descriptor, &found) != 0)
            return;
        socket = S_ISSOCK(found.st_mode);
        if ((S_ISFIFO(found.st_mode) || S_ISCHR(found.st_mode)) && !(fcntl(descriptor, F_GETFL) & O_NONBLOCK))
            open();
    }

    ssize_t write(std::string_view bytes)
    {
        if (socket)
            return send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (gone) {
            errno = EPIPE;
            return -1;
        }
        if (own)
            return ::write(own.get(), bytes.data(), bytes.size());
        if (!shared)
            return ::write(descriptor, bytes.data(), bytes.size());
        if (!hasRoom(descriptor, {})) {
            errno = EAGAIN;
            return -1;
        }
        return ::write(descriptor, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
    }

private:
    /// Opens the file once more: O_NONBLOCK belongs to an open file, which other processes may have in common
    /// with the host.
    void open()
    {
        const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
        own = FileDescriptor{::open(link.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
        gone = !own && errno == ENXIO; // a pipe without a reader
        // Another user's terminal. As much as there is room for goes into it at once.
        shared = !own && !gone;
    }

    const int descriptor;
    FileDescriptor own;
    bool socket = false;
    bool gone = false;
    bool shared = false;
};

} // namespace

Written writeWithin(int descriptor, std::string_view bytes, milliseconds limit)
{
    const auto end = Clock::now() + limit;
    const BrokenPipeSignalBlocked blocked;
    Target target(descriptor);
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t written = target.write(rest);
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (written < 0 && errno == EINTR)
            continue;
        if (written == 0 || errno != EAGAIN)
            return Written::lost;
        if (Clock::now() >= end || !hasRoom(descriptor, end))
            return rest.size() == bytes.size() ? Written::none : Written::cut;
    }
    return Written::all;
}

Written LineWriter::put(int descriptor, std::string_view line, milliseconds limit)
{
    std::string whole(cut ? "\n" : "");
    whole.append(line).append(line.ends_with('\n') ? "" : "\n");
    const Written written = writeWithin(descriptor, whole, limit);
    if (written != Written::none)
        cut = written == Written::cut;
    return written;
}

} // namespace pyrux::platform
