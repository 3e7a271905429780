#include "library/lifecycle.h"

#include "core/boundary.h"
#include "core/debug_console.h"
#include "core/log.h"
#include "core/registry.h"
#include "core/state.h"
#include "platform/apartment.h"
#include "platform/module.h"
#include "services/service_manager.h"
#include "services/tw_service.h"
#include "transport/device_closer.h"
#include "transport/hotplug.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace pyrux {

namespace {

// The library is loaded, then initialised, then exited; nothing returns. These are never taken back.
std::atomic<bool> initDone{false};
std::atomic<bool> exitStarted{false};

/// Set when the first `pyrux_exit` is through.
struct FinishEvent {
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false;
};

FinishEvent& finishEvent()
{
    static auto& event = *new FinishEvent;
    return event;
}

constexpr std::chrono::milliseconds finishLimit{10000};
constexpr std::chrono::milliseconds pauseBehindLimit{1000};

void waitForFirstCaller()
{
    log(systemCategory, "PYRUX already stop start to waiting!!");
    FinishEvent& event = finishEvent();
    std::unique_lock lock(event.mutex);
    if (event.changed.wait_for(lock, finishLimit, [&] { return event.finished; })) {
        log(systemCategory, "all task is close");
        return;
    }
    lock.unlock();
    log(systemCategory, "too long to take finish");
    std::this_thread::sleep_for(pauseBehindLimit);
}

} // namespace

void startLibrary()
{
    if (initDone.exchange(true)) {
        log(systemCategory, "pyrux already init!!");
        return;
    }
    platform::keepLoaded();
    if (!backgroundMode) {
        debugText("send data");
        attempt([] { TW_SERVICE().sendToControlApp("app_control_on"); });
    }
    platform::enterApartment();
    if (!startHotplug())
        consoleLine("error");
    if (!startDebugConsole())
        consoleLine("error");
}

void stopLibrary()
{
    if (exitStarted.exchange(true)) {
        waitForFirstCaller();
        return;
    }
    {
        Registry& all = registry();
        const std::lock_guard lock(all.mutex);
        attempt([] { DeviceCloser::instance().beginPending(); });
        all.exitAll();
    }
    platform::leaveApartment();
    stopHotplug();
    // The debug console waits for clients to the end of the process and goes on answering: deliberate.
    attempt([] { PYRUX_SERVICE::instance().releaseAll(); });
    debugText(" PYRUX exit send the finish event");
    {
        FinishEvent& event = finishEvent();
        const std::lock_guard lock(event.mutex);
        event.finished = true;
        event.changed.notify_all();
    }
    if (!backgroundMode)
        attempt([] { TW_SERVICE().sendToControlApp("app_control_off"); });
}

} // namespace pyrux
