#pragma once

#include "tests/support/mouse.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pyrux::test {

/// The times at which reports reach a device, taken where they arrive: how long the test is kept waiting for the
/// processor does not show in them. One at a time.
class ArrivalTimes {
public:
    using Clock = std::chrono::steady_clock;

    explicit ArrivalTimes(const std::string& path);
    ~ArrivalTimes();
    ArrivalTimes(const ArrivalTimes&) = delete;
    ArrivalTimes& operator=(const ArrivalTimes&) = delete;

    std::vector<Clock::time_point> take();
};

/// Whether the queue of a device lets a pause that is as long as these two pass between frames that come one
/// right after the other.
/// @param send            sends the frame of a number
/// @param reportsOfFrame  how many reports that is
template <class Send>
bool pausesBetween(const std::string& path, Send send, std::size_t reportsOfFrame,
                   std::chrono::milliseconds least, std::chrono::milliseconds most)
{
    ArrivalTimes arrivals(path);
    // The pause stands before the third frame, unless something else of the machine comes between the first two.
    for (int i = 0; i < 50; ++i) {
        arrivals.take();
        for (const std::uint8_t number : {1, 2, 3}) {
            send(number);
            takeWritten(path, reportsOfFrame);
        }
        const auto times = arrivals.take();
        EXPECT_EQ(times.size(), 3 * reportsOfFrame);
        if (times.size() != 3 * reportsOfFrame)
            return false;
        const auto pause = times[2 * reportsOfFrame] - times[2 * reportsOfFrame - 1];
        if (pause >= least && pause < most)
            return true;
    }
    return false;
}

} // namespace pyrux::test
