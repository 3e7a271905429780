#pragma once

#include "platform/device_notices.h"
#include "pyrux/records.h"

#include <atomic>
#include <cstdint>
#include <string>

/// @file
/// What the library does when devices come and go.

namespace pyrux {

/// The host's hotplug callback; null until `registerDevNotify`.
inline std::atomic<void (*)(HotplugEvent)> devNotifyCallback{nullptr};

/// Starts the hotplug thread; it listens when this returns. False: there can be no thread.
bool startHotplug();

/// Asks the thread to end and waits at most 100 ms for it: it may be inside the host's callback.
void stopHotplug();

/// A receiver's link change, on its way to the hotplug thread.
struct LinkChange {
    std::uint32_t vid = 0; ///< Of the receiver, or of the device that it is linked with.
    std::uint32_t pid = 0;
    std::string path; ///< The receiver's, in any case.
};

/// States of a link, as the message carries them.
constexpr std::uintptr_t linkLost = 0;
constexpr std::uintptr_t linkMade = 1;

/// Tells the hotplug thread that a receiver's link has changed. Waits for nothing.
/// @return false: there is no such thread
bool notifyLinkChange(const std::string& path, std::uint32_t vid, std::uint32_t pid,
                      std::uintptr_t status = linkMade);

/// Handles one notice of the system's: closes what is removed, and tells the host. On the hotplug thread.
/// @param name  a device interface name as the system gives it; any text
void notifyDevice(const std::string& name, platform::DeviceChange change);

/// Tells the host of a receiver's link. On the hotplug thread.
void dongleDeviceChange(const LinkChange& change, std::uintptr_t status);

} // namespace pyrux
