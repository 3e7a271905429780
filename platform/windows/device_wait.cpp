#include "platform/device_wait.h"

namespace pyrux::platform {

std::unique_ptr<DeviceWait> DeviceWait::open(const std::string&)
{
    return nullptr;
}

} // namespace pyrux::platform
