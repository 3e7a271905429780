#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace pyrux {

/// Time, and the two ways in which a thread lets it pass. Tests put a clock of their own in its place.
class Clock {
public:
    virtual ~Clock() = default;

    /// Milliseconds since some moment; wraps around.
    virtual std::uint32_t now() = 0;

    /// Lets `time` pass, or ends sooner once `cut` holds. As a wait on a condition variable: `lock` is free
    /// meanwhile, and whoever changes what `cut` looks at notifies `changed`.
    virtual void sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                       std::chrono::milliseconds time, const std::function<bool()>& cut) = 0;

    /// Waits without limit until `until` holds, likewise.
    virtual void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                      const std::function<bool()>& until) = 0;

    /// What a device owes to whoever waits for it: the end of a write, the reply to a command, or a report,
    /// which a reader looks for again after a pause.
    enum class Owed { write, reply, report };

    /// Waits for a device until `done` holds, `limit` at most, likewise. The time is the world's unless a
    /// clock says otherwise: a device does not wait for a clock that stands.
    /// @return whether `done` holds
    virtual bool awaitDevice(Owed, std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                             std::chrono::milliseconds limit, const std::function<bool()>& done)
    {
        return changed.wait_for(lock, limit, done);
    }

    /// The clock of the world.
    static Clock& steady();

    /// The clock of devices that are given none: the clock of the world, unless there is another one in its
    /// place.
    static Clock& current();

    /// Puts a clock in that place, for devices that are made later. It outlives them.
    static void replace(Clock& clock);
};

/// What is left until a moment, rounded up; negative after it.
inline std::chrono::milliseconds timeUntil(std::chrono::steady_clock::time_point moment)
{
    return std::chrono::ceil<std::chrono::milliseconds>(moment - std::chrono::steady_clock::now());
}

} // namespace pyrux
