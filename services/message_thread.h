#pragma once

#include "platform/thread_messages.h"
#include "services/service_messages.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace pyrux {

/// A device's thread that takes thread messages, such as those of a service that the device subscribes to.
/// MSG_QUIT_THREAD ends it.
class MessageThread {
public:
    using Take = std::function<void(const platform::ThreadMessage&)>;

    MessageThread() = default;
    ~MessageThread() { stop(); }
    MessageThread(const MessageThread&) = delete;
    MessageThread& operator=(const MessageThread&) = delete;

    /// Starts the thread and waits until it can be posted to; `take` gets each message on it.
    /// @return false: the system has no room for a thread
    bool start(Take take);

    /// Where its messages go.
    platform::ThreadId id() const { return threadId; }

    /// Lets the thread end after the messages that it has. Safe from any thread.
    void askToStop();

    /// The same, and waits for the end. Not to be called on the thread itself.
    void stop();

    /// The same, but gives up after `limit`; at once when called on the thread itself.
    /// @return whether the thread has ended
    bool stopWithin(std::chrono::milliseconds limit);

private:
    void run(const Take& take);

    platform::ThreadId threadId = 0;
    std::mutex mutex;
    std::condition_variable changed;
    bool standing = false;
    bool finished = true;
    std::thread thread;
};

} // namespace pyrux
