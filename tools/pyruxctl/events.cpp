#include "events.h"

#include "console.h"

#include <algorithm>

namespace pyrux::ctl {

void EventQueue::push(Event event)
{
    {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(event));
    }
    arrived.notify_one();
}

std::optional<Event> EventQueue::pop(Clock::time_point deadline)
{
    using namespace std::chrono_literals;
    constexpr auto slice = 100ms; // a signal handler may not notify a condition variable
    std::unique_lock lock(mutex);
    while (waiting.empty()) {
        const auto now = Clock::now();
        if (now >= deadline || console::interrupted())
            return std::nullopt;
        arrived.wait_until(lock, std::min(deadline, now + slice));
    }
    Event event = std::move(waiting.front());
    waiting.pop_front();
    return event;
}

EventQueue& events()
{
    static auto& queue = *new EventQueue;
    return queue;
}

void onHotplug(HotplugEvent event)
{
    events().push(event);
}

} // namespace pyrux::ctl
