#pragma once

#include "transport/clock.h"

#include <functional>

namespace pyrux::test {

/// What the device does that a call has to do with.
enum class Trouble {
    none,     ///< Nothing is measured.
    late,     ///< It takes and answers everything, at the last moment.
    silent,   ///< It takes everything and answers nothing.
    stalled,  ///< Each write hangs.
    vanished, ///< It has gone, which nobody has noticed.
    noticed,  ///< It goes during the first wait of the call, and the library is told.
};

/// How long a call waits, without the waiting. In this program it is the library's only clock; outside a
/// measurement it is the world's. In one, the thread that measures has a time of its own, which only its
/// waits move:
/// what cannot come is waited for in no time, and what is certain to come counts as having taken all the time
/// that it may.
///
/// A vanished device's reader fails by this time too: its pauses and the waits of the thread that measures
/// pass in the order of their ends.
class DeviceTime {
public:
    /// Starts a measurement on this thread.
    /// @param notice  what happens, with `noticed`, in the first wait
    static void begin(Trouble trouble, std::function<void()> notice = {});

    /// Ends it.
    /// @return the ms that have passed
    static int end();
};

} // namespace pyrux::test
