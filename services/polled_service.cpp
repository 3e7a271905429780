#include "services/polled_service.h"

#include "core/boundary.h"
#include "platform/threads.h"

#include <condition_variable>
#include <mutex>

namespace pyrux {
namespace {

constexpr std::chrono::milliseconds endLimit{1000};

} // namespace

/// Belongs to the thread too, which may outlive the object.
struct PollingThread::State {
    State(std::chrono::milliseconds time, Clock& from, std::function<void()> toRun)
        : period(time), clock(from), cycle(std::move(toRun))
    {
    }

    void run()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            lock.unlock();
            attempt(cycle);
            lock.lock();
            if (exitFlag)
                break;
            clock.sleep(lock, changed, period, [&] { return exitFlag; });
            if (exitFlag)
                break;
        }
        ended = true;
        changed.notify_all();
    }

    const std::chrono::milliseconds period;
    Clock& clock;
    const std::function<void()> cycle;
    std::mutex mutex;
    std::condition_variable changed;
    bool exitFlag = false;
    bool ended = false;
};

PollingThread::PollingThread(std::chrono::milliseconds period, Clock& clock, std::function<void()> cycle)
    : state(std::make_shared<State>(period, clock, std::move(cycle)))
{
    // Without room for a thread the service stands and has nothing to tell.
    thread = platform::startThread([own = state] { own->run(); });
}

PollingThread::~PollingThread()
{
    if (!thread.joinable())
        return;
    std::unique_lock lock(state->mutex);
    state->exitFlag = true;
    state->changed.notify_all();
    const bool ended = state->changed.wait_for(lock, endLimit, [&] { return state->ended; });
    lock.unlock();
    if (ended)
        thread.join();
    else
        thread.detach();
}

} // namespace pyrux
