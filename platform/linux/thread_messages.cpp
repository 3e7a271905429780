#include "platform/linux/thread_queue.h"

#include <algorithm>
#include <map>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace pyrux::platform {
namespace {

/// The queues that there are. Held while one is posted to, so that it cannot go meanwhile.
struct Queues {
    std::mutex mutex;
    std::map<ThreadId, ThreadQueue*> byThread;
};

Queues& queues()
{
    // Never destroyed: threads may post while the process ends.
    static auto& all = *new Queues;
    return all;
}

} // namespace

ThreadId currentThreadId()
{
    return static_cast<ThreadId>(syscall(SYS_gettid));
}

bool postThreadMessage(ThreadId to, const ThreadMessage& message)
{
    Queues& all = queues();
    const std::lock_guard lock(all.mutex);
    const auto queue = all.byThread.find(to);
    if (queue == all.byThread.end())
        return false;
    queue->second->put(message);
    return true;
}

std::unique_ptr<ThreadMessages> ThreadMessages::open()
{
    return std::make_unique<ThreadQueue>();
}

ThreadQueue::ThreadQueue() : waiting(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE))
{
    Queues& all = queues();
    const std::lock_guard lock(all.mutex);
    all.byThread[currentThreadId()] = this;
}

ThreadQueue::~ThreadQueue()
{
    Queues& all = queues();
    const std::lock_guard lock(all.mutex);
    std::erase_if(all.byThread, [&](const auto& one) { return one.second == this; });
}

void ThreadQueue::put(const ThreadMessage& message)
{
    {
        const std::lock_guard lock(mutex);
        messages.push_back(message);
    }
    eventfd_write(waiting.get(), 1);
}

std::optional<ThreadMessage> ThreadQueue::take()
{
    eventfd_t one = 0;
    if (eventfd_read(waiting.get(), &one) != 0)
        return {};
    const std::lock_guard lock(mutex);
    const ThreadMessage message = messages.front();
    messages.pop_front();
    return message;
}

std::optional<ThreadMessage> ThreadQueue::wait(std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + limit;
    for (;;) {
        if (const auto message = take())
            return message;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return {};
        pollfd ready{waiting.get(), POLLIN, 0};
        poll(&ready, 1, static_cast<int>(std::min<long long>(left, 3600'000)));
    }
}

} // namespace pyrux::platform
