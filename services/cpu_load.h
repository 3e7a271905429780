#pragma once

#include "platform/system_load.h"

#include <cstdint>
#include <mutex>
#include <optional>

namespace pyrux {

/// The processor load between two looks at the system's counters.
class CpuLoad {
public:
    /// The measure that the whole process shares: its users shorten each other's intervals, as described to
    /// hosts. Never destroyed.
    static CpuLoad& shared();

    /// The load in %, 0 to 100, since the last call; since the system's start in the first one; 100 when no
    /// time was counted since the last call.
    /// @param now  no value: the counters cannot be read, which gives 0 and keeps those of the last call
    std::uint8_t percent(const std::optional<platform::CpuTimes>& now);

private:
    std::mutex mutex;
    platform::CpuTimes last;
};

} // namespace pyrux
