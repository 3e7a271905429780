#pragma once

#include <chrono>

namespace pyrux {

/// Looks for a short while whether `done` has come true, before a thread goes to sleep for it. Waking a
/// thread costs more than handing a report over or a quick device's answer takes; a slow one costs this much
/// more processor time and no more. It keeps its processor meanwhile: where all are busy, a thread that gives
/// its turn away gets it back milliseconds later.
template <class Done>
void spinBriefly(Done done)
{
    constexpr std::chrono::microseconds longEnough{30};
    const auto end = std::chrono::steady_clock::now() + longEnough;
    while (!done() && std::chrono::steady_clock::now() < end) {
    }
}

} // namespace pyrux
