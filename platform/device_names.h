#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// Device interface names, such as
/// `\\?\HID#VID_3A7E&PID_012F&MI_01&Col01#instance#{4d1e55b2-f16f-11cf-88cb-001111000030}`.
///
/// Windows has them. On Linux they are made for each USB device behind a `/dev/hidrawN`, with the node's name
/// as the instance, `&MI_NN` where the device has several interfaces and `&ColNN` where the interface has
/// several top-level collections. Any other path stays as it is, in both directions.

namespace pyrux::platform {

/// A device interface, or one top-level collection of it.
struct DeviceInterface {
    std::string name;            ///< Its path.
    std::int32_t interface = -1; ///< USB interface number; -1: the device has one interface only.
    std::int32_t usagePage = 0;
};

/// What hidapi has listed under one path: one element for each of its entries.
struct ListedInterface {
    DeviceInterface interface;
    std::size_t source = 0; ///< Number of the entry that it stands for, or that it has been made from.
};

/// Puts the device interfaces in the place of what hidapi has listed. On Linux hidapi lists a node once per
/// usage, nested ones too, all under the node's path and with an interface number for every USB device: they
/// become one element per top-level collection. The order of nodes is kept.
std::vector<ListedInterface> deviceInterfaces(std::vector<ListedInterface> listed);

/// The path under which hidapi opens a device interface, whose name may be in any case. Empty: the name is
/// that of a node where another device is by now, or none.
std::string openablePath(const std::string& name);

} // namespace pyrux::platform
