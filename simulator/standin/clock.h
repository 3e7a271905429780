#pragma once

#include <chrono>
#include <functional>

namespace pyrux::sim {

using Clock = std::chrono::steady_clock;

/// Runs `action` at `due`, on the one thread of late replies; actions of one time in the order of the calls.
/// The thread is there while anything is due.
void runAt(Clock::time_point due, std::function<void()> action);

} // namespace pyrux::sim
