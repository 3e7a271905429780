#pragma once

#include <map>
#include <memory>
#include <string>

struct udev;
struct udev_monitor;

/// @file
/// What udev tells of the HID devices.

namespace pyrux::test {

/// A hidraw node that udev has finished, with the attributes of the USB interface and device that it belongs
/// to.
struct HidrawNode {
    std::string path;      ///< "/dev/hidraw1"
    std::string interface; ///< Two hexadecimal digits.
    std::string hidDriver;
    std::string usbDriver;
    std::map<std::string, std::string> attributes; ///< Of the USB device and interface, as sysfs has them.
};

class Udev {
public:
    Udev();
    ~Udev();

    /// The nodes of a USB product now, by interface.
    std::map<std::string, HidrawNode> nodes(const std::string& vid, const std::string& pid);

    /// The same, once there are so many.
    std::map<std::string, HidrawNode> waitForNodes(const std::string& vid, const std::string& pid,
                                                   std::size_t count);

private:
    std::unique_ptr<udev, udev* (*)(udev*)> context;
    std::unique_ptr<udev_monitor, udev_monitor* (*)(udev_monitor*)> monitor;
};

} // namespace pyrux::test
