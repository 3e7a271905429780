#pragma once

#include <cstdint>
#include <optional>

/// @file
/// How busy the computer is.

namespace pyrux::platform {

/// Time counted by all processors since the system's start, in the system's own units.
struct CpuTimes {
    std::uint64_t total = 0; ///< Idle time included.
    std::uint64_t idle = 0;
};

/// No value: the system does not tell.
std::optional<CpuTimes> cpuTimes();

/// The memory that is not available in % of all; 0 when the system does not tell.
std::uint32_t memoryLoad();

/// The load of the first NVIDIA graphics card in %, by the driver's library, NVAPI on Windows and NVML on
/// Linux. 0 when any step to it fails.
std::uint32_t nvidiaLoad();

/// The same by another library in the place of the driver's.
std::uint32_t nvidiaLoadBy(const char* library);

} // namespace pyrux::platform
