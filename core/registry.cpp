#include "core/registry.h"

#include <algorithm>
#include <utility>

namespace pyrux {

Registry& registry()
{
    static auto& instance = *new Registry;
    return instance;
}

DeviceEntry* Registry::find(std::string_view path)
{
    const auto place = std::ranges::find(entries, path, [](const auto& entry) { return entry->path; });
    return place == entries.end() ? nullptr : place->get();
}

void Registry::add(DeviceEntry entry)
{
    entries.push_back(std::make_unique<DeviceEntry>(std::move(entry)));
}

void Registry::remove(const DeviceEntry* entry)
{
    const auto place = std::ranges::find(entries, entry, [](const auto& one) { return one.get(); });
    if (place == entries.end())
        return;
    retiredHosts.push_back((*place)->host);
    entries.erase(place);
}

void Registry::exitAll()
{
    for (const auto& entry : entries) {
        const std::uint8_t unplugged = 0;
        entry->probe->device_exit(&unplugged);
        retiredHosts.push_back(entry->host);
    }
    entries.clear();
}

} // namespace pyrux
