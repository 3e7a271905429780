#pragma once

#include "simulator/bus.h"
#include "tests/support/scripted_device.h"

#include <chrono>
#include <thread>

/// @file
/// Handles of the simulated bus. An object whose threads are held, as on a busy machine, lets its device go a
/// moment after its end has returned.

namespace pyrux::test {

/// Waits until so many handles are open.
/// @return false: they are not within `limit`
inline bool awaitHandles(int count, std::chrono::milliseconds limit = patience)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (sim::openHandles() != count && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return sim::openHandles() == count;
}

/// The handles that are open once those of tests before have gone.
inline int settledHandles()
{
    awaitHandles(0, std::chrono::seconds(2));
    return sim::openHandles();
}

} // namespace pyrux::test
