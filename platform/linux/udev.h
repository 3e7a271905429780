#pragma once

#include <libudev.h>
#include <memory>

namespace pyrux::platform {

template <auto release>
struct UdevRelease {
    template <class Object>
    void operator()(Object* object) const
    {
        release(object);
    }
};

using Udev = std::unique_ptr<udev, UdevRelease<udev_unref>>;
using UdevDevice = std::unique_ptr<udev_device, UdevRelease<udev_device_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, UdevRelease<udev_monitor_unref>>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, UdevRelease<udev_enumerate_unref>>;

/// udev's texts may be missing.
inline const char* orEmpty(const char* text)
{
    return text ? text : "";
}

} // namespace pyrux::platform
