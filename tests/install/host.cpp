#include <pyrux/pyrux.h>

#include <cstdio>
#include <vector>

/// A host as the README shows it: lists the devices and changes the DPI level of each RD210.
int main()
{
    float version = 0;
    pyrux_version(&version);
    std::printf("version %.2f\n", static_cast<double>(version));
    std::vector<DevInfoRecord> devices(static_cast<std::size_t>(devNums()));
    devices.resize(static_cast<std::size_t>(devInfo(devices.data())));
    std::printf("devices %zu\n", devices.size());
    for (const DevInfoRecord& device : devices) {
        if (device.vid != 0x3A7E || device.pid != 0x012F)
            continue;
        if (PYRUX_RD210_Base* mouse = rd210(device.path))
            std::printf("change %d\n", mouse->changeDpiLevel(3));
    }
    pyrux_dprintf("host %s", "done");
    return 0;
}
