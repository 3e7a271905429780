#include "platform/linux/thread_queue.h"

#include <algorithm>
#include <map>
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

bool postThreadMessage(ThreadId to, const ThreadMessage& message, Post how, std::size_t sender)
{
    Queues& all = queues();
    const std::lock_guard lock(all.mutex);
    const auto queue = all.byThread.find(to);
    return queue != all.byThread.end() && queue->second->put(message, how, sender);
}

std::unique_ptr<ThreadMessages> ThreadMessages::open()
{
    return std::make_unique<ThreadQueue>();
}

ThreadQueue::ThreadQueue(Descriptor wanted)
    : waiting(wanted == Descriptor::yes ? eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE) : -1)
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

bool ThreadQueue::put(const ThreadMessage& message, Post how, std::size_t sender)
{
    {
        const std::lock_guard lock(mutex);
        if (how == Post::newest) {
            const auto older = std::ranges::find_if(messages, [&](const Waiting& one) {
                return one.how == Post::newest && one.message.number == message.number &&
                       one.sender == sender;
            });
            if (older != messages.end()) {
                older->message = message;
                return true;
            }
        }
        if (how != Post::always && messages.size() >= mostMessages)
            return false;
        messages.push_back({message, how, sender});
        if (waiting)
            eventfd_write(waiting.get(), 1);
    }
    arrived.notify_one();
    return true;
}

std::optional<ThreadMessage> ThreadQueue::take()
{
    return wait(std::chrono::milliseconds(0));
}

std::optional<ThreadMessage> ThreadQueue::wait(std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex);
    if (!arrived.wait_for(lock, limit, [&] { return !messages.empty(); }))
        return {};
    const ThreadMessage message = messages.front().message;
    messages.pop_front();
    if (eventfd_t one = 0; waiting)
        eventfd_read(waiting.get(), &one);
    return message;
}

} // namespace pyrux::platform
