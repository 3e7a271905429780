#pragma once

#include "transport/clock.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

namespace pyrux::test {

/// A clock that stands until a test moves it, for one thread that lives by it. The test sees when that thread
/// has nothing left to do at this moment.
class FakeClock final : public Clock {
public:
    explicit FakeClock(std::uint32_t start = 1'000'000) : time(start) {}

    std::uint32_t now() override;
    void sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::milliseconds length, const std::function<bool()>& cut) override;
    void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
              const std::function<bool()>& until) override;

    void advance(std::uint32_t ms);

    /// Waits for the thread to sleep or to wait, with no reason to wake up.
    /// @return the ms that are left of its sleep; none: it waits without limit
    std::optional<std::uint32_t> settle();

    /// How long the thread has been told to sleep so far, in all.
    std::uint32_t slept() const;

private:
    struct Waiting {
        std::mutex* lock;
        std::condition_variable* changed;
        const std::function<bool()>* done;
        std::optional<std::uint32_t> until;
    };

    void enter(const Waiting& entered, std::unique_lock<std::mutex>& lock);

    // Taken after the lock of whoever waits.
    mutable std::mutex mutex;
    std::condition_variable told;
    std::uint32_t time;
    std::uint32_t sleepTime = 0;
    std::uint64_t changes = 0; ///< Of `waiting`.
    std::optional<Waiting> waiting;
};

/// What `settle` gives for a thread that waits without limit.
inline constexpr std::nullopt_t idle = std::nullopt;

} // namespace pyrux::test
