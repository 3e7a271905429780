#include "platform/device_names.h"

#include <algorithm>
#include <string_view>

namespace pyrux::platform {
namespace {

bool namesInterface(std::string_view path)
{
    constexpr std::string_view key = "MI_";
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; };
    return !std::ranges::search(path, key, {}, upper).empty();
}

} // namespace

std::vector<ListedInterface> deviceInterfaces(std::vector<ListedInterface> listed)
{
    // Some versions of hidapi tell interface 0 of a device that is not composite.
    for (ListedInterface& one : listed)
        if (!namesInterface(one.interface.name))
            one.interface.interface = -1;
    return listed;
}

std::string openablePath(const std::string& name)
{
    return name;
}

} // namespace pyrux::platform
