#pragma once

#include "file_descriptor.h"
#include "interfaces.h"

#include <filesystem>
#include <string>
#include <vector>

/// @file
/// A USB device in the kernel's gadget configuration.

namespace pyrux::gadget {

/// The first of this machine's device controllers.
std::string firstController();

/// A USB device with interfaces of HID class, there for as long as the object lives.
class UsbDevice {
public:
    /// Makes the device, not yet plugged in. What a killed process has left under that name is removed first.
    UsbDevice(const std::string& name, const sim::Identity& identity,
              const std::vector<HidInterface>& interfaces);
    ~UsbDevice();
    UsbDevice(const UsbDevice&) = delete;
    UsbDevice& operator=(const UsbDevice&) = delete;

    /// Connects the device to the host behind a controller.
    void plug(const std::string& controller);
    void unplug();
    bool isPlugged() const { return plugged; }

    /// The character device with an interface's reports. It is there only while the device is plugged in.
    std::filesystem::path node(std::size_t interface) const;

private:
    void describe(const sim::Identity& identity, const std::vector<HidInterface>& interfaces);

    std::filesystem::path folder;
    FileDescriptor claim; ///< Locked: no other process takes this device's folder for a left-over.
    bool plugged = false;
};

} // namespace pyrux::gadget
