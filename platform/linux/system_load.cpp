#include "platform/system_load.h"

#include "platform/dynamic_library.h"
#include "platform/linux/system_files.h"

namespace pyrux::platform {
namespace {

// NVIDIA's management library. Its header is not needed for three functions of a fixed interface.
namespace nvml {
struct Utilization {
    unsigned int gpu;    ///< %
    unsigned int memory; ///< %
};
using Init = int();
using DeviceGetHandleByIndex = int(unsigned int index, void** device);
using DeviceGetUtilizationRates = int(void* device, Utilization* rates);
using Shutdown = int();
} // namespace nvml

} // namespace

std::optional<CpuTimes> cpuTimes()
{
    return cpuTimes("/");
}

std::uint32_t memoryLoad()
{
    return memoryLoad("/");
}

std::uint32_t nvidiaLoad()
{
    return nvidiaLoadBy("libnvidia-ml.so.1");
}

std::uint32_t nvidiaLoadBy(const char* library)
{
    const DynamicLibrary driver(library);
    auto* const init = driver.find<nvml::Init>("nvmlInit_v2");
    auto* const handle = driver.find<nvml::DeviceGetHandleByIndex>("nvmlDeviceGetHandleByIndex_v2");
    auto* const rates = driver.find<nvml::DeviceGetUtilizationRates>("nvmlDeviceGetUtilizationRates");
    auto* const shutdown = driver.find<nvml::Shutdown>("nvmlShutdown");
    if (!init || !handle || !rates || !shutdown || init() != 0)
        return 0;
    void* device = nullptr;
    nvml::Utilization load{};
    const bool read = handle(0, &device) == 0 && rates(device, &load) == 0;
    shutdown();
    return read ? load.gpu : 0;
}

} // namespace pyrux::platform
