#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// The USB devices that the system lists, with their drivers' makers, and the state of Plug and Play devices.

namespace pyrux::platform {

/// A present device of the enumerator "USB".
struct UsbDevice {
    std::string deviceClass;  ///< "MEDIA" for an audio function.
    std::string hardwareId;   ///< Such as `USB\VID_0D8C&PID_0012&REV_0100&MI_00`; the most telling one.
    std::string manufacturer; ///< As the installed driver names it; on Linux as the device names it.
};

/// All of them, by SetupAPI on Windows and by udev on Linux, where an audio function is a USB interface of
/// the audio class that controls others. A property that cannot be read is empty.
std::vector<UsbDevice> presentUsbDevices();

/// What became of a question for a device's state.
struct PlugAndPlayStatus {
    std::string_view failure;        ///< Empty, or the step that failed: "fail CoCreateInstance" and others.
    std::uint32_t code = 0;          ///< The system's error code of that step.
    std::optional<std::string> text; ///< "OK" for a device that works; no value: there is no such device.
};

/// The state of the first device with a name: WMI's Win32_PnPEntity on Windows; on Linux the USB device with
/// that product string, "OK" while a driver has its audio function, else "Error".
PlugAndPlayStatus plugAndPlayStatus(const std::string& name);

} // namespace pyrux::platform
