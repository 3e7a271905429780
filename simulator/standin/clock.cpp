#include "simulator/standin/clock.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <queue>
#include <thread>
#include <utility>
#include <vector>

namespace pyrux::sim {

namespace {

struct Appointment {
    Clock::time_point due;
    std::uint64_t number;
    std::function<void()> action;

    bool operator<(const Appointment& other) const
    {
        return std::pair(due, number) > std::pair(other.due, other.number);
    }
};

struct Calendar {
    std::mutex mutex;
    std::condition_variable changed;
    std::priority_queue<Appointment> appointments;
    std::uint64_t next = 0;
    bool threadRuns = false;
};

Calendar& calendar()
{
    // Never destroyed: its thread may outlive the end of main.
    static auto& one = *new Calendar;
    return one;
}

void keepAppointments()
{
    Calendar& all = calendar();
    std::unique_lock lock(all.mutex);
    while (!all.appointments.empty()) {
        const Clock::time_point due = all.appointments.top().due;
        if (Clock::now() < due) {
            all.changed.wait_until(lock, due);
            continue;
        }
        const std::function<void()> action = all.appointments.top().action;
        all.appointments.pop();
        lock.unlock();
        action();
        lock.lock();
    }
    all.threadRuns = false;
}

} // namespace

void runAt(Clock::time_point due, std::function<void()> action)
{
    Calendar& all = calendar();
    const std::lock_guard lock(all.mutex);
    all.appointments.push({due, all.next++, std::move(action)});
    all.changed.notify_one();
    if (all.threadRuns)
        return;
    all.threadRuns = true;
    std::thread(keepAppointments).detach();
}

} // namespace pyrux::sim
