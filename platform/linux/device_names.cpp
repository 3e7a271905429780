#include "platform/device_names.h"

#include "platform/linux/hid_node.h"
#include "platform/linux/name_memory.h"
#include "platform/linux/udev.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace pyrux::platform {
namespace {

constexpr std::string_view folder = "/dev/";

UdevDevice deviceOf(udev* context, const std::string& node)
{
    return UdevDevice(context ? udev_device_new_from_subsystem_sysname(context, "hidraw", node.c_str())
                              : nullptr);
}

/// The node of a path such as "/dev/hidraw3"; empty for any other path.
std::string nodeInPath(std::string_view path)
{
    return path.starts_with("/dev/hidraw") ? std::string(path.substr(folder.size())) : std::string();
}

std::vector<std::string> namesOf(const std::vector<DeviceInterface>& interfaces)
{
    std::vector<std::string> names;
    for (const DeviceInterface& one : interfaces)
        names.push_back(one.name);
    return names;
}

} // namespace

std::vector<ListedInterface> deviceInterfaces(std::vector<ListedInterface> listed)
{
    const Udev context(udev_new());
    std::set<std::string> named;
    std::vector<ListedInterface> result;
    for (ListedInterface& entry : listed) {
        if (named.contains(entry.interface.name))
            continue;
        const NameMemory::Mark before = nameMemory().mark();
        const std::string node = nodeInPath(entry.interface.name);
        const UdevDevice device = node.empty() ? nullptr : deviceOf(context.get(), node);
        const auto found = device ? readHidNode(device.get()) : std::nullopt;
        if (!found) {
            result.push_back(std::move(entry));
            continue;
        }
        std::vector<DeviceInterface> interfaces = interfacesOf(*found);
        if (interfaces.size() == 1 && interfaces[0].usagePage == 0)
            interfaces[0].usagePage = entry.interface.usagePage;
        nameMemory().remember(orEmpty(udev_device_get_syspath(device.get())), namesOf(interfaces), before);
        named.insert(entry.interface.name);
        for (DeviceInterface& one : interfaces)
            result.push_back({std::move(one), entry.source});
    }
    return result;
}

std::string openablePath(const std::string& name)
{
    const std::string node = nodeInName(name);
    if (node.empty())
        return name;
    const Udev context(udev_new());
    const UdevDevice device = deviceOf(context.get(), node);
    const auto found = device ? readHidNode(device.get()) : std::nullopt;
    if (!found)
        return {};
    // The node may have been given to another device since.
    const auto interfaces = interfacesOf(*found);
    const bool same = std::ranges::any_of(
        interfaces, [&](const DeviceInterface& one) { return sameWithoutCase(one.name, name); });
    return same ? std::string(orEmpty(udev_device_get_devnode(device.get()))) : std::string();
}

} // namespace pyrux::platform
