#include "services/service_manager.h"

#include "services/audio_services.h"
#include "services/telemetry.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace pyrux {
namespace {

struct Kind {
    std::string_view name;
    Service* (*make)(const ServiceSettings&);
};

template <class Made>
Service* make(const ServiceSettings& with)
{
    if constexpr (std::is_constructible_v<Made, const ServiceSettings&>)
        return new Made(with);
    else
        return new Made;
}

constexpr std::array kinds{std::to_array<Kind>({
    {"audio", make<SERVICE_AUDIO>},
    {"temp", make<SERVICE_TEMP>},
    {"cmedia", make<SERVICE_CMEDIA>},
    {"peakmeter", make<SERVICE_PEAKMETER>},
    {"cpuusage", make<SERVICE_CPUUSAGE>},
    {"amplitude", make<SERVICE_AMPLITUDE>},
    {"systeminfo", make<SERVICE_SYSTEMINFO>},
})};

} // namespace

PYRUX_SERVICE& PYRUX_SERVICE::instance()
{
    // Never destroyed: services of a host that does not call `pyrux_exit` run to the end of the process.
    static auto& manager = *new PYRUX_SERVICE;
    return manager;
}

_error PYRUX_SERVICE::createService(std::string_view name)
{
    const std::lock_guard lock(mutex);
    return create(name);
}

_error PYRUX_SERVICE::findService(SERVICE_PROBE*& out, std::string_view name)
{
    const std::lock_guard lock(mutex);
    const ServiceEntry* const entry = find(name);
    if (!entry)
        return E_INVALID_GET;
    out = entry->probe;
    return E_OK;
}

Subscription PYRUX_SERVICE::subscribe(std::string_view name, platform::ThreadId thread)
{
    const std::lock_guard lock(mutex);
    if (create(name) != E_OK)
        return {};
    return find(name)->object->subscribe(thread);
}

void PYRUX_SERVICE::releaseAll()
{
    std::vector<ServiceEntry> released;
    {
        const std::lock_guard lock(mutex);
        released.swap(entries);
        names.clear();
    }
    for (const ServiceEntry& entry : released)
        entry.probe->release();
}

_error PYRUX_SERVICE::create(std::string_view name)
{
    if (std::find(names.begin(), names.end(), name) != names.end())
        return E_OK;
    const auto kind =
        std::find_if(kinds.begin(), kinds.end(), [&](const Kind& one) { return one.name == name; });
    if (kind == kinds.end())
        return E_INVALID_SET;
    names.reserve(names.size() + 1);
    entries.reserve(entries.size() + 1);
    Service* const made = kind->make(with);
    entries.push_back({made, made});
    names.emplace_back(name);
    return E_OK;
}

ServiceEntry* PYRUX_SERVICE::find(std::string_view name)
{
    std::string own;
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const ServiceEntry& one) {
        return one.probe->serviceName(own) == E_OK && own == name;
    });
    return entry == entries.end() ? nullptr : &*entry;
}

} // namespace pyrux
