#pragma once

#include "simulator/firmware.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// @file
/// The HID side of a firmware model: what each of its USB interfaces tells a host.

namespace pyrux::gadget {

/// One USB interface of HID class.
struct HidInterface {
    std::uint8_t subclass = 0; ///< 1: has a boot protocol.
    std::uint8_t protocol = 0; ///< The boot protocol: 1 keyboard, 2 mouse.
    /// Bytes of the longest report, an id included; the packet size of the endpoints.
    std::uint16_t reportLength = 0;
    bool hasOutputEndpoint = false;
    std::vector<std::uint8_t> descriptor; ///< The HID report descriptor.

    int number = 0;            ///< The model's own; -1 in a device that is not composite.
    bool hasIds = false;       ///< Reports begin with their id.
    bool carriesModel = false; ///< The model takes or emits reports here.
};

/// The interfaces of a device in the order of their numbers. USB counts them from 0 without a gap: a number
/// that the model does not name becomes an interface without a use.
std::vector<HidInterface> interfacesOf(const sim::Identity& identity);

/// Number of the interface that takes the commands. A device that is not composite has the one interface 0.
std::size_t controlInterfaceOf(const sim::Identity& identity);

} // namespace pyrux::gadget
