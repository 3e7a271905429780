#pragma once

#include <thread>
#include <utility>

namespace pyrux {

/// Lets one thread at a time into the callback of one device, as often as it calls it, and others wait for it to
/// come out. A wait that could only end after the waiter's own callback does not begin: two callbacks may each
/// take the other's away.
class CallbackGate {
public:
    void enter();
    void leave();

    /// Does `change`, then waits until no other thread is inside that was there before it.
    template <class Change>
    void change(Change change)
    {
        const Hold hold;
        change();
        waitUntilEmpty();
    }

    /// Reads what `change` writes.
    template <class Read>
    auto read(Read read)
    {
        const Hold hold;
        return read();
    }

private:
    /// The one mutex of all gates; never held while a callback runs.
    struct Hold {
        Hold();
        ~Hold();
    };

    void waitUntilEmpty();
    bool waitsForMe() const;

    std::thread::id runner;
    int depth = 0;      ///< How often the runner is inside.
    unsigned turns = 0; ///< Runners so far.
};

/// A callback that a device calls with its events. Once `set` has returned, the callback that was there
/// before is not called any more, nor is it running, unless it is what called, or waits for what called. So a
/// callback can take itself away, and another one's.
template <class Callback>
class Notify {
public:
    void set(Callback to)
    {
        gate.change([&] { callback = to; });
    }

    template <class... Arguments>
    void call(Arguments&&... arguments)
    {
        const Inside inside(gate);
        if (const Callback to = gate.read([&] { return callback; }))
            to(std::forward<Arguments>(arguments)...);
    }

private:
    struct Inside {
        explicit Inside(CallbackGate& gate) : gate(gate) { gate.enter(); }
        ~Inside() { gate.leave(); }
        CallbackGate& gate;
    };

    CallbackGate gate;
    Callback callback = nullptr;
};

} // namespace pyrux
