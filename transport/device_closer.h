#pragma once

#include "core/registry.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// Takes the host objects of devices that have gone out of use, on a thread of its own that is there while
/// there is something to do. An object answers -11 at once; a second later, in which calls that are inside
/// come out, it lets its device go and leaves the registry. The registry is held for that second.
class DeviceCloser {
public:
    /// The library's one, never destroyed: its thread touches nothing that is.
    static DeviceCloser& instance();

    /// Closes every object whose path is this one in any case, with or without a receiver's mark, and which
    /// was made before now. Waits for nothing.
    void close(std::string_view path);

    /// Closes at once what has been asked for and not been begun. With the registry's mutex held, in front of
    /// `Registry::exitAll`, which then says no goodbye to devices that have gone.
    void beginPending();

    /// Waits until all that was asked for is done; false: it is not within `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    using Clock = Registry::Clock;

    struct Removal {
        std::string path;
        Clock::time_point noticed;
    };
    struct Leaving {
        void* host; ///< Finds the entry again; objects are never freed, so that no other one has it.
        Clock::time_point due;
    };

    void run();
    void takeRemovals(std::unique_lock<std::mutex>& lock);
    void beginExit(const Removal& removal);
    void finishExits(Clock::time_point now);

    std::mutex mutex; ///< Taken inside the registry's.
    std::condition_variable changed;
    bool running = false;
    std::deque<Removal> removals; ///< The first stays in its place while it is begun, with the mutex free.
    std::vector<Leaving> leaving; ///< Guarded by the registry's mutex.
};

/// Closes the objects of a device that has been removed.
void closeDeviceByPath(std::string_view path);

} // namespace pyrux
