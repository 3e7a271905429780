#pragma once

#include "platform/media_devices.h"
#include "pyrux/records.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// @file
/// Whether the audio functions of headsets have their maker's driver and work.

namespace pyrux {

/// Where the system's answers come from. Tests put others in their place.
struct MediaSource {
    std::function<std::vector<platform::UsbDevice>()> devices = platform::presentUsbDevices;
    std::function<platform::PlugAndPlayStatus(const std::string&)> status = platform::plugAndPlayStatus;
};
MediaSource& mediaSource();

/// The two marks of a record or an event. Both stay 1 for what is no audio device, and for one whose audio
/// function is not present.
struct AudioState {
    std::uint32_t driverOk = 1;
    std::uint32_t statusOk = 1;
};

/// The marks of the device with an identity.
AudioState audioStateOf(std::uint16_t vid, std::uint16_t pid);

/// Sets the marks of all records, with one listing of the system's devices.
void markAudioDevices(std::vector<DevInfoRecord>& records);

/// Asks for the state of a Plug and Play device and writes what goes wrong to the debug output.
/// @return the state; "Error" when it cannot be asked for, empty when there is no such device
std::string plugAndPlayStatus(const std::string& friendlyName);

} // namespace pyrux
