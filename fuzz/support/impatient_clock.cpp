#include "fuzz/support/impatient_clock.h"

#include "simulator/bus.h"

namespace pyrux::fuzz {

void ImpatientClock::sleep(std::unique_lock<std::mutex>& lock, std::condition_variable&,
                           std::chrono::milliseconds length, const std::function<bool()>& cut)
{
    if (cut())
        return;
    lock.unlock(); // others get their turn, as in a real sleep
    time += std::uint32_t(length.count());
    lock.lock();
}

void ImpatientClock::wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                          const std::function<bool()>& until)
{
    changed.wait(lock, until);
}

bool ImpatientClock::awaitDevice(Owed owed, std::unique_lock<std::mutex>& lock,
                                 std::condition_variable& changed, std::chrono::milliseconds limit,
                                 const std::function<bool()>& done)
{
    if (owed != Owed::reply)
        return Clock::awaitDevice(owed, lock, changed, limit, done);
    if (done())
        return true;
    lock.unlock(); // the reader needs it to hand over what there is
    if (const std::string* const path = watched)
        sim::awaitReader(*path);
    lock.lock();
    if (done())
        return true;
    time += std::uint32_t(limit.count());
    return false;
}

} // namespace pyrux::fuzz
