#include "services/telemetry.h"

#include "core/log.h"
#include "services/cpu_load.h"
#include "services/resident_service.h"
#include "services/system_record.h"

namespace pyrux {
namespace {

using namespace std::chrono_literals;

// Periods of the services; the time that a request takes comes on top.
constexpr std::chrono::milliseconds temperaturePeriod = 800ms;
constexpr std::chrono::milliseconds cpuPeriod = 200ms;
constexpr std::chrono::milliseconds systemRecordPeriod = 1000ms;

/// A reply of fewer than two numbers leaves the last temperatures, which are told again.
auto temperatureSource(PipeLimits limits)
{
    return [limits, last = std::make_shared<Temperatures>()]() -> std::optional<Temperatures> {
        if (resident::temperatures(&last->cpu, &last->gpu, limits) != E_OK)
            return {};
        return *last;
    };
}

std::optional<std::int32_t> cpuUsage()
{
    return CpuLoad::shared().percent(platform::cpuTimes());
}

/// Told even after a failed request: deliberate.
auto systemRecordSource(PipeLimits limits)
{
    return [limits, last = std::make_shared<SysDetailRecord>()]() -> std::optional<SysDetailRecord> {
        std::string text = "getsysinfo";
        if (TW_SERVICE(limits).queryDeskService(text) == E_OK)
            if (const std::string_view failure = readSystemRecord(text, *last); !failure.empty())
                log(systemCategory, failure);
        return *last;
    };
}

} // namespace

SERVICE_TEMP::SERVICE_TEMP(const ServiceSettings& with)
    : PolledService("temp", temperaturePeriod, with.clock, temperatureSource(with.limits))
{
}

SERVICE_CPUUSAGE::SERVICE_CPUUSAGE(const ServiceSettings& with)
    : PolledService("cpuusage", cpuPeriod, with.clock, cpuUsage)
{
}

SERVICE_SYSTEMINFO::SERVICE_SYSTEMINFO(const ServiceSettings& with)
    : PolledService("systeminfo", systemRecordPeriod, with.clock, systemRecordSource(with.limits))
{
}

} // namespace pyrux
