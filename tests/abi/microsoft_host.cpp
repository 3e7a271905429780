// What a host for Windows uses of the public headers, for a compiler that only checks: script/check-hosts.

#include <pyrux/pyrux.h>

#include <cstdint>
#include <vector>

std::int32_t changeEveryMouse()
{
    std::int32_t changed = 0;
    std::vector<DevInfoRecord> devices(static_cast<std::size_t>(devNums()));
    devices.resize(static_cast<std::size_t>(devInfo(devices.data())));
    for (const DevInfoRecord& device : devices)
        if (PYRUX_RD210_Base* mouse = rd210(device.path))
            changed += mouse->changeDpiLevel(3) == E_OK;
    pyrux_dprintf("changed %d of %u", changed, 7U);
    return changed;
}
