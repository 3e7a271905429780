#pragma once

#include <exception>
#include <memory>
#include <thread>
#include <utility>

namespace pyrux::platform {

/// What the system needs around the start of a thread of the library's, for as long as it lives.
///
/// Linux: the starting thread has all signals blocked but those that tell of its own mistakes (SIGSEGV,
/// SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS), and the new one inherits that: a host's handlers never run on
/// the library's threads. Windows: the library stays loaded from here on, whatever is called first.
class ThreadStart {
public:
    ThreadStart();
    ~ThreadStart();
    ThreadStart(const ThreadStart&) = delete;
    ThreadStart& operator=(const ThreadStart&) = delete;

private:
    struct Before;
    std::unique_ptr<Before> before;
};

/// Starts a thread of the library's; all of them begin here.
/// @return the thread; one that is not joinable: the system has no room for another
template <class Body>
std::thread startThread(Body&& body)
{
    try {
        const ThreadStart start;
        return std::thread(std::forward<Body>(body));
    } catch (const std::exception&) { // memory, or the thread itself
        return {};
    }
}

} // namespace pyrux::platform
