#include "tests/hotplug/hotplug_host.h"

#include "pyrux/pyrux.h"
#include "tests/support/surroundings.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace pyrux::test {
namespace {

/// Never destroyed: the library's thread goes on while the process ends.
struct Collected {
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<HotplugEvent> events;
    std::function<void(const HotplugEvent&)> call;
};

Collected& collected()
{
    static auto& all = *new Collected;
    return all;
}

void collect(HotplugEvent event)
{
    Collected& all = collected();
    std::function<void(const HotplugEvent&)> call;
    {
        const std::lock_guard lock(all.mutex);
        call = all.call;
    }
    if (call)
        call(event);
    const std::lock_guard lock(all.mutex);
    all.events.push_back(event);
    all.arrived.notify_all();
}

} // namespace

HotplugHost::HotplugHost()
{
    // Kept to the end of the process, as the library's threads are; volatile, or the leak check would not
    // find it.
    [[maybe_unused]] static OwnPipes* volatile pipes = new OwnPipes;
    pyrux_background(1); // no control application is told
    pyrux_init();
    take();
    registerDevNotify(collect);
}

HotplugHost::~HotplugHost()
{
    registerDevNotify([](HotplugEvent) {});
    onEvent(nullptr);
}

void HotplugHost::onEvent(std::function<void(const HotplugEvent&)> call)
{
    Collected& all = collected();
    const std::lock_guard lock(all.mutex);
    all.call = std::move(call);
}

std::vector<HotplugEvent> HotplugHost::take(std::size_t count, std::chrono::milliseconds limit)
{
    Collected& all = collected();
    std::unique_lock lock(all.mutex);
    all.arrived.wait_for(lock, limit, [&] { return all.events.size() >= count; });
    return std::exchange(all.events, {});
}

} // namespace pyrux::test
