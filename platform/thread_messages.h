#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

/// @file
/// Messages from thread to thread: a number and two machine words. The words belong to whoever defines the
/// number; a word that is a pointer is not followed here.

namespace pyrux::platform {

/// Names a thread that may have a queue. Numbers of ended threads can come back.
using ThreadId = std::uint32_t;

struct ThreadMessage {
    std::uint32_t number = 0;
    std::uintptr_t first = 0;
    std::uintptr_t second = 0;
};

ThreadId currentThreadId();

/// Puts a message behind those that a thread has waiting; messages of one sender keep their order. Safe from
/// any thread.
/// @return false: the thread has ended or has no queue, and the message is lost
bool postThreadMessage(ThreadId to, const ThreadMessage& message);

/// The queue of the thread that opens it; there is one per thread. What is in it when it goes is lost. On
/// Windows it is the thread's own queue, and messages for windows of the thread are handed to them in
/// passing.
class ThreadMessages {
public:
    static std::unique_ptr<ThreadMessages> open();
    virtual ~ThreadMessages() = default;

    /// Takes the next message, for which it waits; no value: none came within `limit`. Only for the thread
    /// that has opened the queue.
    virtual std::optional<ThreadMessage> wait(std::chrono::milliseconds limit) = 0;
};

} // namespace pyrux::platform
