#include "tests/support/fake_clock.h"

#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

namespace pyrux::test {

std::uint32_t FakeClock::now()
{
    const std::lock_guard guard(mutex);
    return time;
}

void FakeClock::sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                      std::chrono::milliseconds length, const std::function<bool()>& cut)
{
    const auto ms = std::uint32_t(length.count());
    const std::uint32_t until = now() + ms;
    {
        const std::lock_guard guard(mutex);
        sleepTime += ms;
    }
    const std::function<bool()> done = [&] { return cut() || std::int32_t(now() - until) >= 0; };
    enter({lock.mutex(), &changed, &done, until}, lock);
}

void FakeClock::wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                     const std::function<bool()>& until)
{
    enter({lock.mutex(), &changed, &until, std::nullopt}, lock);
}

void FakeClock::enter(const Waiting& entered, std::unique_lock<std::mutex>& lock)
{
    const auto set = [&](std::optional<Waiting> to) {
        {
            const std::lock_guard guard(mutex);
            waiting = to;
            ++changes;
        }
        told.notify_all();
    };
    set(entered);
    entered.changed->wait(lock, *entered.done);
    set(std::nullopt);
}

void FakeClock::advance(std::uint32_t ms)
{
    std::optional<Waiting> sleeper;
    {
        const std::lock_guard guard(mutex);
        time += ms;
        sleeper = waiting;
    }
    if (!sleeper)
        return;
    // Whoever looks at the time does so with this lock held.
    const std::lock_guard guard(*sleeper->lock);
    sleeper->changed->notify_all();
}

std::optional<std::uint32_t> FakeClock::settle()
{
    for (;;) {
        std::unique_lock guard(mutex);
        if (!told.wait_for(guard, patience, [&] { return waiting.has_value(); }))
            break;
        const Waiting seen = *waiting;
        const std::uint64_t then = changes;
        guard.unlock();
        {
            const std::lock_guard lock(*seen.lock);
            guard.lock();
            const bool same = changes == then;
            guard.unlock();
            if (same && !(*seen.done)())
                return seen.until ? std::optional(*seen.until - now()) : std::nullopt;
        }
        guard.lock();
        if (!told.wait_for(guard, patience, [&] { return changes != then; }))
            break;
    }
    ADD_FAILURE() << "the thread does not come to rest";
    return 0xFFFFFFFF;
}

std::uint32_t FakeClock::slept() const
{
    const std::lock_guard guard(mutex);
    return sleepTime;
}

} // namespace pyrux::test
