#include "tests/hidraw/fake_node.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <linux/hidraw.h>
#include <mutex>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace pyrux::test {

struct FakeNode::State {
    std::string path;
    std::mutex mutex;
    /// The end that was handed out and this program's, in the order of opening, which is that of delivery.
    std::vector<std::pair<int, int>> peers;
    std::atomic<int> awaiting{0}; ///< Calls of poll that wait for it and for something else.
    std::atomic<bool> refusing{false};
};

namespace {

std::mutex nodesMutex;
std::vector<std::shared_ptr<FakeNode::State>> nodes;

template <class Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::shared_ptr<FakeNode::State> nodeOf(const char* path)
{
    const std::lock_guard lock(nodesMutex);
    const auto found = std::ranges::find_if(nodes, [&](const auto& one) { return one->path == path; });
    return found == nodes.end() ? nullptr : *found;
}

/// The node that a descriptor belongs to; null: another file.
std::shared_ptr<FakeNode::State> nodeOf(int descriptor)
{
    const std::lock_guard lock(nodesMutex);
    for (const auto& one : nodes) {
        const std::lock_guard inside(one->mutex);
        if (std::ranges::count(one->peers, descriptor, &std::pair<int, int>::first) > 0)
            return one;
    }
    return nullptr;
}

int openNode(FakeNode::State& node, int flags)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return -1;
    if (flags & O_NONBLOCK)
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const std::lock_guard lock(node.mutex);
    // A number that is handed out again belongs to a descriptor that has been closed.
    std::erase_if(node.peers,
                  [&](const auto& one) { return one.first == ends[0] && close(one.second) == 0; });
    node.peers.emplace_back(ends[0], ends[1]);
    return ends[0];
}

bool isOpen(int peer)
{
    pollfd end{peer, 0, 0};
    return real<decltype(poll)>("poll")(&end, 1, 0) == 0;
}

std::atomic<int> wakeups{0};

/// Where hidapi's code lies.
struct Range {
    std::uintptr_t first = 0;
    std::uintptr_t last = 0;
};

Range hidapiCode()
{
    Range range;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* to) {
            if (!std::strstr(info->dlpi_name, "hidapi"))
                return 0;
            for (int i = 0; i < info->dlpi_phnum; ++i)
                if (info->dlpi_phdr[i].p_type == PT_LOAD && (info->dlpi_phdr[i].p_flags & PF_X)) {
                    const std::uintptr_t first = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
                    *static_cast<Range*>(to) = {first, first + info->dlpi_phdr[i].p_memsz};
                }
            return 1;
        },
        &range);
    return range;
}

// Looked at inside `free`, so that nothing here may allocate.
Range hidapi;
std::atomic<long> releaseTime{0}; ///< In microseconds; 0: as ever.
std::atomic<int> released{0};
std::atomic<int> twice{0};
[[maybe_unused]] std::array<std::atomic<void*>, 8> underWay{}; // sanitizers have a `free` of their own

} // namespace

FakeNode::FakeNode() : state(std::make_shared<State>())
{
    static std::atomic<int> number{900000};
    state->path = "/dev/hidraw" + std::to_string(++number);
    const std::lock_guard lock(nodesMutex);
    nodes.push_back(state);
}

FakeNode::~FakeNode()
{
    unplug();
    const std::lock_guard lock(nodesMutex);
    std::erase(nodes, state);
}

const std::string& FakeNode::path() const
{
    return state->path;
}

void FakeNode::send(const std::vector<std::uint8_t>& report)
{
    const std::lock_guard lock(state->mutex);
    for (const auto& [descriptor, peer] : state->peers)
        ::send(peer, report.data(), report.size(),
               MSG_NOSIGNAL); // as in the kernel: a full queue takes no more
}

std::vector<std::vector<std::uint8_t>> FakeNode::takeWritten()
{
    std::vector<std::vector<std::uint8_t>> reports;
    const std::lock_guard lock(state->mutex);
    for (const auto& [descriptor, peer] : state->peers) {
        std::array<std::uint8_t, 1024> report{};
        for (ssize_t length; (length = recv(peer, report.data(), report.size(), 0)) > 0;)
            reports.emplace_back(report.begin(), report.begin() + length);
    }
    return reports;
}

void FakeNode::refuseWrites(bool refuse)
{
    state->refusing = refuse;
}

void FakeNode::unplug()
{
    const std::lock_guard lock(state->mutex);
    for (const auto& [descriptor, peer] : state->peers)
        close(peer);
    state->peers.clear();
}

int FakeNode::openDescriptors() const
{
    const std::lock_guard lock(state->mutex);
    return int(std::ranges::count_if(state->peers, [](const auto& one) { return isOpen(one.second); }));
}

bool FakeNode::isAwaited() const
{
    return state->awaiting > 0;
}

SlowRelease::SlowRelease(std::chrono::microseconds time)
{
    hidapi = hidapiCode();
    if (hidapi.first == 0)
        throw std::runtime_error("hidapi is not there");
    released = twice = 0;
    releaseTime = time.count();
}

SlowRelease::~SlowRelease()
{
    releaseTime = 0;
}

int SlowRelease::releases()
{
    return released;
}

int SlowRelease::doubleReleases()
{
    return twice;
}

int pollWakeups()
{
    return wakeups;
}

} // namespace pyrux::test

using namespace pyrux::test;

extern "C" {

__attribute__((visibility("default"))) int open(const char* path, int flags, ...)
{
    mode_t mode = 0;
    if (flags & (O_CREAT | O_TMPFILE)) {
        va_list more;
        va_start(more, flags);
        mode = va_arg(more, mode_t);
        va_end(more);
    }
    if (std::strncmp(path, "/dev/hidraw", 11) == 0)
        if (const auto node = nodeOf(path))
            return openNode(*node, flags);
    return real<int(const char*, int, ...)>("open")(path, flags, mode);
}

__attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list more;
    va_start(more, request);
    void* const argument = va_arg(more, void*);
    va_end(more);
    if (request == HIDIOCGRDESCSIZE && nodeOf(descriptor)) {
        *static_cast<int*>(argument) = 0;
        return 0;
    }
    if (request == HIDIOCGRDESC && nodeOf(descriptor))
        return 0;
    return real<int(int, unsigned long, ...)>("ioctl")(descriptor, request, argument);
}

__attribute__((visibility("default"))) ssize_t write(int descriptor, const void* bytes, std::size_t length)
{
    static auto* const original = real<ssize_t(int, const void*, std::size_t)>("write");
    const auto node = nodeOf(descriptor);
    if (!node)
        return original(descriptor, bytes, length);
    if (node->refusing) {
        errno = EIO;
        return -1;
    }
    return send(descriptor, bytes, length, MSG_NOSIGNAL);
}

__attribute__((visibility("default"))) int poll(pollfd* files, nfds_t count, int limit)
{
    static auto* const original = real<int(pollfd*, nfds_t, int)>("poll");
    const auto node = count > 1 ? nodeOf(files[0].fd) : nullptr;
    if (node)
        ++node->awaiting;
    const int result = original(files, count, limit);
    if (node)
        --node->awaiting;
    if (limit != 0)
        ++wakeups;
    return result;
}

#ifdef PYRUX_UNSANITIZED
void __libc_free(void* block);

__attribute__((visibility("default"))) void free(void* block) noexcept
{
    const long time = releaseTime;
    const auto caller = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
    if (!block || time == 0 || caller < hidapi.first || caller >= hidapi.last) {
        __libc_free(block);
        return;
    }
    ++released;
    for (const auto& one : underWay)
        if (one == block) {
            ++twice; // this release would be the second one of the block
            return;
        }
    for (auto& place : underWay) {
        void* none = nullptr;
        if (!place.compare_exchange_strong(none, block))
            continue;
        usleep(useconds_t(time));
        __libc_free(block);
        place = nullptr;
        return;
    }
    __libc_free(block);
}
#endif

} // extern "C"
