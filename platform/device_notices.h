#pragma once

#include "platform/thread_messages.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// @file
/// What the system tells of devices that come and go.

namespace pyrux::platform {

/// Ends `DeviceNotices::run`, posted to its thread.
constexpr std::uint32_t stopNotices = 0x401;

/// Tells of a receiver's link: first word the link's state, second word the record.
constexpr std::uint32_t linkChangeNotice = 1038;

enum class DeviceChange { arrival, removal };

/// The notices of HID devices and of sound devices: a hidden window with two device notifications on Windows;
/// on Linux udev's events after its rules, and the socket that PYRUX_DEVICE_NOTICES names.
///
/// Linux: a removal carries the names that the device had. A device that may not be opened yet is told of at
/// once, and again when its access rights have come.
class DeviceNotices {
public:
    struct Handlers {
        /// A device interface name, and what has become of it.
        std::function<void(const std::string& name, DeviceChange change)> device;
        std::function<void(std::uintptr_t status, std::uintptr_t record)> linkChange;
    };

    /// Opens the source for the calling thread, which then calls `run`, and the thread's message queue. Null:
    /// the system refuses.
    static std::unique_ptr<DeviceNotices> open(Handlers handlers);
    virtual ~DeviceNotices() = default;

    /// Calls the handlers on this thread until the message `stopNotices` comes.
    virtual void run() = 0;
};

/// Posts `linkChangeNotice` to this process's `DeviceNotices`. False: there are none.
bool postLinkChange(std::uintptr_t status, std::uintptr_t record);

} // namespace pyrux::platform
