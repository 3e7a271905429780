#include "tests/kernel/hidraw.h"

#include "tests/kernel/gadget.h"

#include <libudev.h>
#include <poll.h>
#include <stdexcept>

namespace pyrux::test {

namespace {

using Device = std::unique_ptr<udev_device, udev_device* (*)(udev_device*)>;

std::string text(const char* value)
{
    return value ? value : "";
}

/// Takes what the monitor has to tell, waiting for it. False: nothing came.
bool waitForNews(udev_monitor* monitor)
{
    pollfd file{.fd = udev_monitor_get_fd(monitor), .events = POLLIN, .revents = 0};
    if (poll(&file, 1, int(std::chrono::milliseconds(patience).count())) <= 0)
        return false;
    const Device news(udev_monitor_receive_device(monitor), udev_device_unref);
    return true;
}

} // namespace

Udev::Udev()
    : context(udev_new(), udev_unref),
      monitor(udev_monitor_new_from_netlink(context.get(), "udev"), udev_monitor_unref)
{
    if (!monitor || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "hidraw", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0)
        throw std::runtime_error("udev cannot be heard");
}

Udev::~Udev() = default;

std::map<std::string, HidrawNode> Udev::nodes(const std::string& vid, const std::string& pid)
{
    const std::unique_ptr<udev_enumerate, udev_enumerate* (*)(udev_enumerate*)> list(
        udev_enumerate_new(context.get()), udev_enumerate_unref);
    udev_enumerate_add_match_subsystem(list.get(), "hidraw");
    udev_enumerate_scan_devices(list.get());
    std::map<std::string, HidrawNode> found;
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(list.get()); entry;
         entry = udev_list_entry_get_next(entry)) {
        const Device node(udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)),
                          udev_device_unref);
        if (!node || !udev_device_get_is_initialized(node.get()))
            continue;
        // Parents belong to their child.
        udev_device* const hid = udev_device_get_parent_with_subsystem_devtype(node.get(), "hid", nullptr);
        udev_device* const interface =
            udev_device_get_parent_with_subsystem_devtype(node.get(), "usb", "usb_interface");
        udev_device* const device =
            udev_device_get_parent_with_subsystem_devtype(node.get(), "usb", "usb_device");
        if (!hid || !interface || !device || text(udev_device_get_sysattr_value(device, "idVendor")) != vid ||
            text(udev_device_get_sysattr_value(device, "idProduct")) != pid)
            continue;
        HidrawNode one{.path = text(udev_device_get_devnode(node.get())),
                       .interface = text(udev_device_get_sysattr_value(interface, "bInterfaceNumber")),
                       .hidDriver = text(udev_device_get_driver(hid)),
                       .usbDriver = text(udev_device_get_driver(interface)),
                       .attributes = {}};
        for (const char* name : {"bcdDevice", "serial", "product", "manufacturer", "bNumInterfaces"})
            one.attributes[name] = text(udev_device_get_sysattr_value(device, name));
        for (const char* name : {"bInterfaceClass", "bInterfaceSubClass", "bInterfaceProtocol"})
            one.attributes[name] = text(udev_device_get_sysattr_value(interface, name));
        found[one.interface] = one;
    }
    return found;
}

std::map<std::string, HidrawNode> Udev::waitForNodes(const std::string& vid, const std::string& pid,
                                                     std::size_t count)
{
    for (;;) {
        std::map<std::string, HidrawNode> now = nodes(vid, pid);
        if (now.size() == count || !waitForNews(monitor.get()))
            return now;
    }
}

} // namespace pyrux::test
