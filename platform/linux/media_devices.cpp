#include "platform/media_devices.h"

#include "platform/linux/hid_node.h"
#include "platform/linux/udev.h"

#include <cctype>
#include <cerrno>
#include <functional>

namespace pyrux::platform {
namespace {

constexpr std::string_view audioInterface = "01"; ///< bInterfaceClass
constexpr std::string_view audioControl = "01";   ///< bInterfaceSubClass

std::string attribute(udev_device* device, const char* name)
{
    return orEmpty(udev_device_get_sysattr_value(device, name));
}

std::string upperCased(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// Calls `visit` with each USB interface and the device that it belongs to, until it gives false. False: the
/// system has no list.
bool visitInterfaces(udev* context, const std::function<bool(udev_device*, udev_device*)>& visit)
{
    const UdevEnumerate list(udev_enumerate_new(context));
    if (!list || udev_enumerate_add_match_subsystem(list.get(), "usb") < 0 ||
        udev_enumerate_add_match_property(list.get(), "DEVTYPE", "usb_interface") < 0 ||
        udev_enumerate_scan_devices(list.get()) < 0)
        return false;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get()))
    {
        const UdevDevice interface(udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
        udev_device* const device =
            interface ? udev_device_get_parent_with_subsystem_devtype(interface.get(), "usb", "usb_device")
                      : nullptr;
        if (device && !visit(interface.get(), device))
            break;
    }
    return true;
}

bool isAudioFunction(udev_device* interface)
{
    return attribute(interface, "bInterfaceClass") == audioInterface &&
           attribute(interface, "bInterfaceSubClass") == audioControl;
}

std::string hardwareId(udev_device* interface, udev_device* device)
{
    std::string id = "USB\\VID_" + attribute(device, "idVendor") + "&PID_" + attribute(device, "idProduct") +
                     "&REV_" + attribute(device, "bcdDevice");
    if (attribute(device, "bNumInterfaces").find_first_not_of(" 1") != std::string::npos)
        id += "&MI_" + attribute(interface, "bInterfaceNumber");
    return upperCased(id);
}

} // namespace

std::vector<UsbDevice> presentUsbDevices()
{
    std::vector<UsbDevice> devices;
    const Udev context(udev_new());
    if (!context)
        return devices;
    visitInterfaces(context.get(), [&](udev_device* interface, udev_device* device) {
        devices.push_back({.deviceClass = isAudioFunction(interface) ? "MEDIA" : "",
                           .hardwareId = hardwareId(interface, device),
                           .manufacturer = attribute(device, "manufacturer")});
        return true;
    });
    return devices;
}

PlugAndPlayStatus plugAndPlayStatus(const std::string& name)
{
    const Udev context(udev_new());
    if (!context)
        return {.failure = "fail ConnectServer", .code = static_cast<std::uint32_t>(errno), .text = {}};
    PlugAndPlayStatus status;
    const bool listed = visitInterfaces(context.get(), [&](udev_device* interface, udev_device* device) {
        if (!isAudioFunction(interface) || !sameWithoutCase(attribute(device, "product"), name))
            return true;
        status.text = udev_device_get_driver(interface) ? "OK" : "Error";
        return false;
    });
    if (!listed)
        return {.failure = "fail ExecQuery", .code = static_cast<std::uint32_t>(errno), .text = {}};
    return status;
}

} // namespace pyrux::platform
