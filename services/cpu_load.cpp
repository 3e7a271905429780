#include "services/cpu_load.h"

#include <algorithm>

namespace pyrux {
namespace {

/// Rounds to 32 bits, also where the processor computes with more.
template <class Value>
float single(Value value)
{
    const volatile float rounded = static_cast<float>(value);
    return rounded;
}

/// Deliberate: in 32-bit floats, each step rounded, and cut at the end. Some whole percents come out one
/// lower or higher than they are.
std::uint8_t percentOf(std::uint64_t idle, std::uint64_t total)
{
    const float idleShare = single(single(idle) / single(total));
    const float load = single(1.0F - idleShare);
    return static_cast<std::uint8_t>(single(std::max(0.0F, load) * 100.0F));
}

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
    const std::uint64_t total = now->total - last.total;
    const std::uint64_t idle = now->idle - last.idle;
    last = *now;
    return total == 0 ? 100 : percentOf(idle, total);
}

} // namespace pyrux
