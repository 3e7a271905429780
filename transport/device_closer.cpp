#include "transport/device_closer.h"

#include "core/boundary.h"
#include "core/catalogue.h"
#include "platform/threads.h"
#include "transport/device_path.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace pyrux {

namespace {

/// Time for calls that are inside an object to come out.
constexpr std::chrono::milliseconds grace{1000};

/// Between two objects the registry is free for this long, so that factories that wait for it get it.
constexpr std::chrono::milliseconds breath{5};

/// Control pads close on their own terms, without the grace.
bool closesAtOnce(const DeviceEntry& entry)
{
    return entry.deviceType == std::int32_t(rowOf("DECKPANELG")) ||
           entry.deviceType == std::int32_t(rowOf("DECKPANELC"));
}

} // namespace

DeviceCloser& DeviceCloser::instance()
{
    static auto& closer = *new DeviceCloser;
    return closer;
}

void DeviceCloser::close(std::string_view path)
{
    {
        const std::lock_guard lock(mutex);
        removals.push_back({upperCased(withoutDongleMark(path)), Clock::now()});
        changed.notify_all();
        if (std::exchange(running, true))
            return;
    }
    std::thread thread = platform::startThread([this] { run(); });
    if (thread.joinable())
        thread.detach();
    else
        run(); // late is better than never
}

void DeviceCloser::beginPending()
{
    std::unique_lock lock(mutex);
    takeRemovals(lock);
}

bool DeviceCloser::waitUntilIdle(std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, limit, [&] { return !running; });
}

void DeviceCloser::run()
{
    for (;;) {
        {
            const std::lock_guard held(registry().mutex);
            std::unique_lock lock(mutex);
            // The registry stays held, deliberately; removals that come meanwhile are taken at once.
            for (takeRemovals(lock); removals.empty() && !leaving.empty(); takeRemovals(lock)) {
                const auto first = std::ranges::min_element(leaving, {}, &Leaving::due)->due;
                if (first <= Clock::now())
                    break;
                // One may have come while the mutex was free for the removals before it.
                changed.wait_until(lock, first, [&] { return !removals.empty(); });
            }
            lock.unlock();
            finishExits(Clock::now());
            lock.lock();
            if (leaving.empty() && removals.empty()) {
                running = false;
                changed.notify_all();
                return;
            }
        }
        std::this_thread::sleep_for(breath);
    }
}

void DeviceCloser::takeRemovals(std::unique_lock<std::mutex>& lock)
{
    while (!removals.empty()) {
        const Removal& removal = removals.front();
        lock.unlock();
        const bool begun = attempt([&] { beginExit(removal); });
        lock.lock();
        if (!begun)
            return; // for want of memory: it stays to be done
        removals.pop_front();
    }
}

void DeviceCloser::beginExit(const Removal& removal)
{
    const auto concerns = [&](const auto& object) {
        return object.opened <= removal.noticed && upperCased(withoutDongleMark(object.path)) == removal.path;
    };
    for (Registry::Reservation* place : registry().beingMade())
        if (concerns(*place))
            place->gone = true; // its factory closes it as soon as it is made
    for (DeviceEntry* entry : registry().all()) {
        if (entry->unplugged || !concerns(*entry))
            continue;
        leaving.reserve(leaving.size() + 1); // what is begun is finished
        const std::uint8_t unplugged = 1;
        entry->unplugged = unplugged;
        entry->probe->device_pre_exit(&unplugged);
        leaving.push_back({entry->host, Clock::now() + (closesAtOnce(*entry) ? Clock::duration{} : grace)});
    }
}

void DeviceCloser::finishExits(Clock::time_point now)
{
    std::erase_if(leaving, [&](const Leaving& one) {
        if (one.due > now)
            return false;
        // The end of the library may have taken the entry meanwhile.
        if (DeviceEntry* entry = registry().findHost(one.host)) {
            const std::uint8_t unplugged = 1;
            entry->probe->device_exit(&unplugged);
            registry().remove(entry);
        }
        return true;
    });
}

void closeDeviceByPath(std::string_view path)
{
    DeviceCloser::instance().close(path);
}

} // namespace pyrux
