#include "services/message_thread.h"

#include "core/boundary.h"
#include "platform/threads.h"

#include <memory>
#include <optional>
#include <utility>

namespace pyrux {

bool MessageThread::start(Take take)
{
    standing = finished = false;
    thread = platform::startThread([this, take = std::move(take)] { run(take); });
    std::unique_lock lock(mutex);
    if (!thread.joinable()) {
        finished = true;
        return false;
    }
    changed.wait(lock, [&] { return standing || finished; });
    return standing;
}

/// While the lock is held the thread cannot have ended, so that the message meets no later thread with its
/// number.
void MessageThread::askToStop()
{
    const std::lock_guard lock(mutex);
    if (!finished)
        platform::postThreadMessage(threadId, {.number = MSG_QUIT_THREAD});
}

void MessageThread::stop()
{
    askToStop();
    if (thread.joinable())
        thread.join();
}

bool MessageThread::stopWithin(std::chrono::milliseconds limit)
{
    askToStop();
    if (std::this_thread::get_id() == thread.get_id())
        return false;
    {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, limit, [&] { return finished; }))
            return false;
    }
    stop();
    return true;
}

void MessageThread::run(const Take& take)
{
    const auto setState = [&](bool MessageThread::*state) {
        const std::lock_guard lock(mutex);
        this->*state = true;
        changed.notify_all();
    };
    std::unique_ptr<platform::ThreadMessages> messages;
    if (!attempt([&] { messages = platform::ThreadMessages::open(); }))
        return setState(&MessageThread::finished);
    threadId = platform::currentThreadId();
    setState(&MessageThread::standing);
    for (;;) {
        const std::optional<platform::ThreadMessage> message = messages->wait(std::chrono::hours(1));
        if (!message)
            continue;
        if (message->number == MSG_QUIT_THREAD)
            break;
        attempt([&] { take(*message); });
    }
    messages.reset(); // a post from now on is lost
    setState(&MessageThread::finished);
}

} // namespace pyrux
