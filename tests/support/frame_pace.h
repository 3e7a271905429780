#pragma once

#include "tests/support/mouse.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace pyrux::test {

/// Whether the queue of a device lets a pause that is as long as these two pass between frames that come one
/// right behind the other.
/// @param send            sends the frame of a number
/// @param reportsOfFrame  how many reports that is
template <class Send>
bool pausesBetween(const std::string& path, Send send, std::size_t reportsOfFrame,
                   std::chrono::milliseconds least, std::chrono::milliseconds most)
{
    using Clock = std::chrono::steady_clock;
    // The pause stands behind the second frame, unless something else of the machine comes between the first
    // two.
    const auto pause = [&] {
        Clock::time_point second;
        for (const std::uint8_t number : {1, 2, 3}) {
            if (number == 3)
                second = Clock::now();
            send(number);
            takeWritten(path, reportsOfFrame);
        }
        return Clock::now() - second;
    };
    for (int i = 0; i < 50; ++i)
        if (const auto length = pause(); length >= least && length < most)
            return true;
    return false;
}

} // namespace pyrux::test
