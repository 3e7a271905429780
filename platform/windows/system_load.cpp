#include "platform/system_load.h"

#include "platform/dynamic_library.h"

#include <array>
#include <windows.h>

namespace pyrux::platform {
namespace {

std::uint64_t joined(const FILETIME& time)
{
    return std::uint64_t(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

// NVAPI has one export, which gives out the others by number.
namespace nvapi {
using QueryInterface = void*(std::uint32_t id);
using Initialize = std::int32_t();
using EnumPhysicalGPUs = std::int32_t(void** handles, std::uint32_t* count);
using GetUsages = std::int32_t(void* gpu, std::uint32_t* words);

constexpr std::uint32_t initialize = 0x0150E828;
constexpr std::uint32_t enumPhysicalGPUs = 0xE5AC921F;
constexpr std::uint32_t getUsages = 0x189A1FDF;
constexpr std::size_t mostGpus = 64;
constexpr std::size_t usageWords = 34;
constexpr std::uint32_t usageVersion = 0x10088;
} // namespace nvapi

} // namespace

std::optional<CpuTimes> cpuTimes()
{
    FILETIME idle;
    FILETIME kernel;
    FILETIME user;
    if (!GetSystemTimes(&idle, &kernel, &user))
        return {};
    return CpuTimes{joined(kernel) + joined(user), joined(idle)}; // kernel time counts the idle time too
}

std::uint32_t memoryLoad()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.dwMemoryLoad : 0;
}

std::uint32_t nvidiaLoad()
{
    return nvidiaLoadBy("nvapi.dll");
}

std::uint32_t nvidiaLoadBy(const char* library)
{
    auto* const query = DynamicLibrary(library).find<nvapi::QueryInterface>("nvapi_QueryInterface");
    if (!query)
        return 0;
    auto* const initialize = reinterpret_cast<nvapi::Initialize*>(query(nvapi::initialize));
    auto* const enumerate = reinterpret_cast<nvapi::EnumPhysicalGPUs*>(query(nvapi::enumPhysicalGPUs));
    auto* const usages = reinterpret_cast<nvapi::GetUsages*>(query(nvapi::getUsages));
    std::array<void*, nvapi::mostGpus> gpus{};
    std::uint32_t count = 0;
    if (!initialize || !enumerate || !usages || initialize() != 0 || enumerate(gpus.data(), &count) != 0 ||
        count == 0)
        return 0;
    std::array<std::uint32_t, nvapi::usageWords> words{nvapi::usageVersion};
    return usages(gpus[0], words.data()) == 0 ? words[3] & 0xFF : 0;
}

} // namespace pyrux::platform
