#include "transport/notify.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace pyrux {

namespace {

/// What all gates share. Events are rare and callbacks short, so that one mutex is enough.
struct Gates {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::thread::id, const CallbackGate*> waits; ///< Which gate a thread waits for.
};

/// Never destroyed: callbacks may come while the process ends.
Gates& gates()
{
    static auto& all = *new Gates;
    return all;
}

} // namespace

CallbackGate::Hold::Hold()
{
    gates().mutex.lock();
}

CallbackGate::Hold::~Hold()
{
    gates().mutex.unlock();
}

void CallbackGate::enter()
{
    std::unique_lock lock(gates().mutex);
    const std::thread::id self = std::this_thread::get_id();
    gates().changed.wait(lock, [&] { return depth == 0 || runner == self; });
    runner = self;
    if (depth++ == 0)
        ++turns;
}

void CallbackGate::leave()
{
    const std::lock_guard lock(gates().mutex);
    if (--depth == 0)
        gates().changed.notify_all();
}

/// With the mutex held.
void CallbackGate::waitUntilEmpty()
{
    std::unique_lock lock(gates().mutex, std::adopt_lock);
    const std::thread::id self = std::this_thread::get_id();
    const auto done = [&, turn = turns] {
        return depth == 0 || turns != turn || runner == self || waitsForMe();
    };
    if (!done()) {
        gates().waits[self] = this;
        gates().changed.wait(lock, done);
        gates().waits.erase(self);
    }
    lock.release();
}

/// Whether the thread inside waits, itself or through others, for a gate in which the caller is.
bool CallbackGate::waitsForMe() const
{
    const auto& waits = gates().waits;
    const CallbackGate* gate = this;
    for (std::size_t steps = 0; steps <= waits.size(); ++steps) {
        const auto next = waits.find(gate->runner);
        if (gate->depth == 0 || next == waits.end())
            return false;
        gate = next->second;
        if (gate->depth > 0 && gate->runner == std::this_thread::get_id())
            return true;
    }
    return false;
}

} // namespace pyrux
