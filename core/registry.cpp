#include "core/registry.h"

#include "core/boundary.h"
#include "platform/threads.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace pyrux {

Registry& registry()
{
    static auto& instance = *new Registry;
    return instance;
}

Registry::Reservation::Reservation(Registry& registry, std::string path)
    : path(std::move(path)), registry(registry), exits(registry.exits)
{
    registry.reservations.push_back(this);
}

Registry::Reservation::~Reservation()
{
    std::erase(registry.reservations, this);
    registry.changed.notify_all();
}

void Registry::waitUntilMade(std::unique_lock<std::mutex>& lock, std::string_view path)
{
    changed.wait(lock, [&] {
        return std::ranges::none_of(reservations, [&](const Reservation* one) { return one->path == path; });
    });
}

DeviceEntry* Registry::find(std::string_view path)
{
    const auto place =
        std::ranges::find(entries, path, [](const auto& entry) { return std::string_view(entry->path); });
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
    // Room for the end of all that are there: an end cannot fail.
    if (const std::size_t all = retiredHosts.size() + entries.size() + 1; retiredHosts.capacity() < all)
        retiredHosts.reserve(2 * all);
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

void Registry::retire(void* host)
{
    attempt([&] { retiredHosts.push_back(host); });
}

void Registry::exitAll()
{
    ++exits;
    for (const auto& entry : entries)
        entry->probe->announceExit();
    std::vector<std::thread> goodbyes;
    const bool sideBySide = attempt([&] { goodbyes.reserve(entries.size()); });
    for (const auto& entry : entries) {
        const auto shutDown = [&probe = *entry->probe, unplugged = entry->unplugged != 0] {
            probe.shutDown(unplugged);
        };
        std::thread goodbye = sideBySide ? platform::startThread(shutDown) : std::thread();
        if (goodbye.joinable())
            goodbyes.push_back(std::move(goodbye));
        else
            shutDown(); // one after the other is better than never
        retiredHosts.push_back(entry->host);
    }
    for (std::thread& goodbye : goodbyes)
        goodbye.join();
    entries.clear();
}

} // namespace pyrux
