#include "tests/support/frame_pace.h"

#include <mutex>
#include <utility>

namespace pyrux::test {
namespace {

// The stand-in's trace knows no more than a function.
std::mutex mutex;
std::string tracedPath;
std::vector<ArrivalTimes::Clock::time_point> arrivals;

} // namespace

ArrivalTimes::ArrivalTimes(const std::string& path)
{
    {
        const std::lock_guard lock(mutex);
        tracedPath = path;
        arrivals.clear();
    }
    pyrux_sim_trace([](const char* from, int direction, const unsigned char*, int) {
        const std::lock_guard lock(mutex);
        if (direction == 0 && tracedPath == from)
            arrivals.push_back(Clock::now());
    });
}

ArrivalTimes::~ArrivalTimes()
{
    pyrux_sim_trace(nullptr);
}

std::vector<ArrivalTimes::Clock::time_point> ArrivalTimes::take()
{
    const std::lock_guard lock(mutex);
    return std::exchange(arrivals, {});
}

} // namespace pyrux::test
