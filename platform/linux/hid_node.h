#pragma once

#include "platform/device_names.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct udev_device;

namespace pyrux::platform {

/// What a USB device behind a `/dev/hidrawN` tells of itself.
struct HidNode {
    std::string name; ///< "hidrawN"
    std::uint16_t vid = 0;
    std::uint16_t pid = 0;
    std::int32_t interface = -1; ///< USB interface number.
    std::int32_t interfaces = 1; ///< Interfaces of the whole device (bNumInterfaces).
    std::vector<std::uint8_t> reportDescriptor;
};

/// Reads a device of the subsystem hidraw. No value: it is on no USB, or has gone.
std::optional<HidNode> readHidNode(udev_device* device);

/// The device interfaces of a node, one per top-level collection; one, with usage page 0, where the report
/// descriptor tells of none.
std::vector<DeviceInterface> interfacesOf(const HidNode& node);

/// The usage pages of the top-level collections of a report descriptor, in their order. Takes any bytes.
std::vector<std::uint16_t> topLevelUsagePages(std::span<const std::uint8_t> descriptor);

/// The node in an interface name made here, such as "hidraw3"; the name may be in any case. Empty: it is
/// another sort of path.
std::string nodeInName(std::string_view name);

/// Whether two texts are equal without regard to the case of letters.
bool sameWithoutCase(std::string_view a, std::string_view b);

} // namespace pyrux::platform
