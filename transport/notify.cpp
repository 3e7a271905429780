#include "transport/notify.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace pyrux {

namespace {

/// Which gate a thread waits for. It stands on the thread's stack.
struct Wait {
    std::thread::id thread;
    const CallbackGate* gate;
    Wait* next;
};

/// What all gates share. Events are rare and callbacks short, so that one mutex is enough.
struct Gates {
    std::mutex mutex;
    std::condition_variable changed;
    Wait* waits = nullptr;
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
        Wait own{self, this, gates().waits};
        gates().waits = &own;
        gates().changed.wait(lock, done);
        Wait** place = &gates().waits;
        while (*place != &own)
            place = &(*place)->next;
        *place = own.next;
    }
    lock.release();
}

/// Whether the thread inside waits, itself or through others, for a gate in which the caller is.
bool CallbackGate::waitsForMe() const
{
    std::size_t most = 1;
    for (const Wait* one = gates().waits; one; one = one->next)
        ++most;
    const CallbackGate* gate = this;
    for (std::size_t steps = 0; steps < most; ++steps) {
        const Wait* next = gates().waits;
        while (next && next->thread != gate->runner)
            next = next->next;
        if (gate->depth == 0 || !next)
            return false;
        gate = next->gate;
        if (gate->depth > 0 && gate->runner == std::this_thread::get_id())
            return true;
    }
    return false;
}

} // namespace pyrux
