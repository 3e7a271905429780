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

DeviceEntry* Registry::findHost(const void* host)
{
    const auto place = std::ranges::find(entries, host, [](const auto& entry) { return entry->host; });
    return place == entries.end() ? nullptr : place->get();
}

std::vector<DeviceEntry*> Registry::all()
{
    std::vector<DeviceEntry*> found;
    for (const auto& entry : entries)
        found.push_back(entry.get());
    return found;
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
        entry->probe->device_exit(&entry->unplugged);
        retiredHosts.push_back(entry->host);
    }
    entries.clear();
}

} // namespace pyrux
