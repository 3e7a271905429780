#pragma once

#include "platform/linux/file_descriptor.h"
#include "platform/thread_messages.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace pyrux::platform {

/// The queue of a thread, found by the thread's id while the object lives. The system has none of its own.
class ThreadQueue final : public ThreadMessages {
public:
    enum class Descriptor { no, yes };

    explicit ThreadQueue(Descriptor wanted = Descriptor::no);
    ~ThreadQueue() override;
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;

    std::optional<ThreadMessage> wait(std::chrono::milliseconds limit) override;

    std::optional<ThreadMessage> take();

    /// False: there is no room.
    bool put(const ThreadMessage& message, Post how, std::size_t sender);

    /// Readable while a message is waiting, for loops that wait for other things too. -1: none was wanted, or
    /// the system has no room for one; `wait` works all the same.
    int descriptor() const { return waiting.get(); }

private:
    struct Waiting {
        ThreadMessage message;
        Post how;
        std::size_t sender;
    };

    std::mutex mutex;
    std::deque<Waiting> messages;
    std::condition_variable arrived;
    FileDescriptor waiting; ///< An event counter: the number of messages.
};

} // namespace pyrux::platform
