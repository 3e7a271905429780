#include "simulator/standin/registry.h"

#include "simulator/standin/notices.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace pyrux::sim {

Registry& Registry::instance()
{
    static auto& one = *new Registry;
    return one;
}

std::string Registry::plug(std::shared_ptr<Firmware> model, std::string instance)
{
    if (!model || model->identity().collections.empty())
        return {};
    std::shared_ptr<Device> device;
    std::vector<std::shared_ptr<Device>> replaced;
    {
        const std::lock_guard lock(devicesMutex);
        if (instance.empty()) {
            char text[24];
            std::snprintf(text, sizeof text, "sim-%04d", ++instances);
            instance = text;
        }
        device = std::make_shared<Device>(std::move(model), instance);
        // A port holds one device, and its paths lead to the newest one.
        const auto rest = std::stable_partition(devices.begin(), devices.end(), [&](const auto& old) {
            return std::ranges::none_of(device->entries,
                                        [&](const Entry& one) { return old->entryOf(one.path); });
        });
        replaced.assign(rest, devices.end());
        devices.erase(rest, devices.end());
    }
    // Whoever hears of a device may look at the bus.
    for (const auto& old : replaced)
        unplug(*old);
    device->plug();
    {
        const std::lock_guard lock(devicesMutex);
        devices.push_back(device);
    }
    announce(*device, true);
    return device->controlPath();
}

bool Registry::unplug(Device& device)
{
    const bool was = device.unplug();
    if (was)
        announce(device, false);
    return was;
}

void Registry::reset()
{
    std::vector<std::shared_ptr<Device>> all;
    {
        const std::lock_guard lock(devicesMutex);
        all.swap(devices);
    }
    for (const auto& device : all)
        unplug(*device);
    overlaps = 0;
    misuses = 0;
}

std::vector<std::shared_ptr<Device>> Registry::plugged() const
{
    const std::lock_guard lock(devicesMutex);
    std::vector<std::shared_ptr<Device>> present;
    std::ranges::copy_if(devices, std::back_inserter(present),
                         [](const auto& one) { return one->isPlugged(); });
    return present;
}

std::shared_ptr<Device> Registry::find(const std::string& path) const
{
    const std::lock_guard lock(devicesMutex);
    for (const auto& device : devices)
        if (device->entryOf(path))
            return device;
    return nullptr;
}

std::uintptr_t Registry::open(const std::string& path)
{
    const auto device = find(path);
    const Entry* entry = device ? device->entryOf(path) : nullptr;
    auto handle = entry ? device->open(*entry) : nullptr;
    if (!handle)
        return 0;
    const std::lock_guard lock(handlesMutex);
    handles.emplace(++lastHandle, std::move(handle));
    return lastHandle;
}

std::shared_ptr<Handle> Registry::enter(std::uintptr_t number)
{
    const std::shared_lock lock(handlesMutex);
    const auto found = handles.find(number);
    if (found == handles.end()) {
        ++misuses;
        return nullptr;
    }
    ++found->second->callers;
    return found->second;
}

void Registry::close(std::uintptr_t number)
{
    std::shared_ptr<Handle> handle;
    {
        const std::lock_guard lock(handlesMutex);
        const auto found = handles.find(number);
        if (found == handles.end()) {
            ++misuses;
            return;
        }
        handle = std::move(found->second);
        handles.erase(found);
        if (handle->callers > 0)
            ++misuses;
    }
    handle->device->close(*handle);
}

int Registry::openHandles() const
{
    const std::shared_lock lock(handlesMutex);
    return int(handles.size());
}

} // namespace pyrux::sim
