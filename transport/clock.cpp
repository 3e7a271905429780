#include "transport/clock.h"

#include <atomic>

namespace pyrux {

namespace {

class SteadyClock final : public Clock {
public:
    std::uint32_t now() override
    {
        using namespace std::chrono;
        return std::uint32_t(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    }

    void sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::milliseconds time, const std::function<bool()>& cut) override
    {
        changed.wait_for(lock, time, cut);
    }

    void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
              const std::function<bool()>& until) override
    {
        changed.wait(lock, until);
    }
};

std::atomic<Clock*> replacement{nullptr};

} // namespace

Clock& Clock::current()
{
    Clock* const other = replacement;
    return other ? *other : steady();
}

void Clock::replace(Clock& clock)
{
    replacement = &clock;
}

Clock& Clock::steady()
{
    // Never destroyed: queues of objects that hosts keep live to the end of the process.
    static Clock& clock = *new SteadyClock;
    return clock;
}

} // namespace pyrux
