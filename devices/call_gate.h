#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace pyrux {

/// Counts the calls inside an object, so that what they use can go when they have come out.
class CallGate {
public:
    void enter() { inside.fetch_add(1); }

    void leave()
    {
        if (inside.fetch_sub(1) == 1 && draining) {
            const std::lock_guard lock(waiters().mutex);
            waiters().changed.notify_all();
        }
    }

    /// Waits until nobody is inside. False when `limit` runs out. No new calls may enter meanwhile.
    bool drain(std::chrono::milliseconds limit)
    {
        std::unique_lock lock(waiters().mutex);
        draining = true;
        return waiters().changed.wait_for(lock, limit, [&] { return inside == 0; });
    }

private:
    /// What all gates share, since objects stay to the end of the process and wait at most once.
    struct Waiters {
        std::mutex mutex;
        std::condition_variable changed;
    };
    static Waiters& waiters()
    {
        static auto& all = *new Waiters; // never destroyed: calls may come out while the process ends
        return all;
    }

    std::atomic<std::int32_t> inside{0};
    std::atomic<bool> draining{false};
};

} // namespace pyrux
