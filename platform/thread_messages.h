#pragma once

#include <chrono>
#include <cstddef>
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

/// How a message joins those that a thread has waiting.
enum class Post {
    always, ///< Last, however many there are: for what must arrive, such as the word to end.
    ifRoom, ///< Last; lost when `mostMessages` wait.
    newest, ///< In the place of the sender's waiting one with its number, else as `ifRoom`.
};

/// A thread that does not take its messages has no more than these, beside those that must arrive.
constexpr std::size_t mostMessages = 64;

/// Gives a message to a thread; messages of one sender keep their order. Safe from any thread. On Windows the
/// room is that of the system's queue, of which those of the kind `newest` take 64 at most.
/// @param sender  tells apart those who post the newest of the same number
/// @return false: the thread has ended, or has no queue or no room, and the message is lost
bool postThreadMessage(ThreadId to, const ThreadMessage& message, Post how = Post::always,
                       std::size_t sender = 0);

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
