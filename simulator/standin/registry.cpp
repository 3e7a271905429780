#include "simulator/standin/registry.h"

#include "simulator/standin/notices.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace pyrux::sim {

namespace {

std::string lowerCased(std::string path)
{
    for (char& c : path)
        c = c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
    return path;
}

} // namespace

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
        for (const Entry& entry : device->entries)
            if (const auto old = byPath.find(lowerCased(entry.path)); old != byPath.end())
                replaced.push_back(old->second);
    }
    // Whoever hears of a device may look at the bus.
    for (const auto& old : replaced)
        unplug(*old);
    device->plug();
    {
        const std::lock_guard lock(devicesMutex);
        for (const auto& old : replaced)
            for (const Entry& entry : old->entries)
                byPath.erase(lowerCased(entry.path));
        for (const Entry& entry : device->entries)
            byPath[lowerCased(entry.path)] = device;
        present.push_back(device);
    }
    announce(*device, true);
    return device->controlPath();
}

bool Registry::unplug(Device& device)
{
    if (!device.unplug())
        return false;
    Registry& all = instance();
    {
        const std::lock_guard lock(all.devicesMutex);
        std::erase_if(all.present, [&](const auto& one) { return one.get() == &device; });
    }
    announce(device, false);
    return true;
}

void Registry::reset()
{
    std::vector<std::shared_ptr<Device>> all;
    {
        const std::lock_guard lock(devicesMutex);
        all = present;
        byPath.clear();
    }
    for (const auto& device : all)
        unplug(*device);
    overlaps = 0;
    misuses = 0;
}

std::vector<std::shared_ptr<Device>> Registry::plugged() const
{
    const std::lock_guard lock(devicesMutex);
    return present;
}

std::shared_ptr<Device> Registry::find(const std::string& path) const
{
    const std::lock_guard lock(devicesMutex);
    const auto found = byPath.find(lowerCased(path));
    return found == byPath.end() ? nullptr : found->second;
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
