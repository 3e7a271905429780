#include "services/cpu_load.h"

#include <limits>

namespace pyrux {
namespace {

constexpr std::uint64_t longestTime = std::numeric_limits<std::uint64_t>::max() / 100;

} // namespace

CpuLoad& CpuLoad::shared()
{
    static auto& load = *new CpuLoad;
    return load;
}

std::uint8_t CpuLoad::percent(const std::optional<platform::CpuTimes>& now)
{
    if (!now)
        return 0;
    const std::lock_guard lock(mutex);
    std::uint64_t total = now->total - last.total;
    std::uint64_t idle = now->idle - last.idle;
    last = *now;
    if (total == 0)
        return 100;
    if (idle >= total)
        return 0;
    for (; total > longestTime; total /= 2)
        idle /= 2;
    // Deliberate: cut, not rounded.
    return static_cast<std::uint8_t>((total - idle) * 100 / total);
}

} // namespace pyrux
