#include "platform/linux/hid_node.h"

#include "platform/linux/file_descriptor.h"
#include "platform/linux/udev.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace pyrux::platform {
namespace {

constexpr std::string_view nameHead = "\\\\?\\HID#VID_";
constexpr std::string_view classId = "{4d1e55b2-f16f-11cf-88cb-001111000030}";
constexpr unsigned usbBus = 3;

/// More than any device has; keeps the names of a malformed descriptor in bounds.
constexpr std::size_t mostCollections = 255;

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

template <class... Values>
std::string formatted(const char* format, Values... values)
{
    char text[64];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// Empty when the file, or the device behind it, has gone.
std::vector<std::uint8_t> fileBytes(const std::string& name)
{
    const FileDescriptor file{open(name.c_str(), O_RDONLY | O_CLOEXEC)};
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 4096> part;
    for (ssize_t count; file && (count = read(file.get(), part.data(), part.size())) > 0;)
        bytes.insert(bytes.end(), part.begin(), part.begin() + count);
    return bytes;
}

/// One item of a report descriptor.
struct Item {
    unsigned kind = 0; ///< Tag and type; the length bits are 0.
    std::uint32_t value = 0;
    std::size_t length = 0; ///< Of the value.
};

/// Takes the first item off; no value at the end and where an item is cut short.
std::optional<Item> takeItem(std::span<const std::uint8_t>& rest)
{
    constexpr std::uint8_t longItem = 0xFE;
    if (rest.empty())
        return {};
    const std::uint8_t head = rest[0];
    if (head == longItem) {
        if (rest.size() < 3 || rest.size() - 3 < rest[1])
            return {};
        rest = rest.subspan(3 + std::size_t{rest[1]});
        return Item{.kind = longItem};
    }
    const std::size_t length = (head & 3) == 3 ? 4 : head & 3;
    if (rest.size() - 1 < length)
        return {};
    Item item{.kind = head & 0xFCU, .value = 0, .length = length};
    for (std::size_t i = 0; i < length; ++i)
        item.value |= std::uint32_t{rest[1 + i]} << (8 * i);
    rest = rest.subspan(1 + length);
    return item;
}

} // namespace

std::vector<std::uint16_t> topLevelUsagePages(std::span<const std::uint8_t> descriptor)
{
    enum : unsigned {
        usagePageItem = 0x04,
        usageItem = 0x08,
        pushItem = 0xA4,
        popItem = 0xB4,
        collectionItem = 0xA0,
        endItem = 0xC0,
        mainType = 0x00,
    };
    std::vector<std::uint16_t> pages;
    std::vector<std::uint16_t> pushed;
    std::uint16_t page = 0;
    std::int32_t ownPage = -1; ///< Of a usage that carries its page; -1: none does.
    std::size_t depth = 0;
    while (const auto item = takeItem(descriptor)) {
        switch (item->kind) {
        case usagePageItem:
            page = static_cast<std::uint16_t>(item->value);
            break;
        case usageItem:
            ownPage = item->length == 4 ? static_cast<std::int32_t>(item->value >> 16) : -1;
            break;
        case pushItem:
            if (pushed.size() < mostCollections)
                pushed.push_back(page);
            break;
        case popItem:
            if (!pushed.empty()) {
                page = pushed.back();
                pushed.pop_back();
            }
            break;
        case collectionItem:
            if (depth++ == 0 && pages.size() < mostCollections)
                pages.push_back(ownPage < 0 ? page : static_cast<std::uint16_t>(ownPage));
            break;
        case endItem:
            depth -= depth > 0;
            break;
        default:
            break;
        }
        if ((item->kind & 0x0C) == mainType)
            ownPage = -1;
    }
    return pages;
}

std::optional<HidNode> readHidNode(udev_device* device)
{
    udev_device* const hid = udev_device_get_parent_with_subsystem_devtype(device, "hid", nullptr);
    if (!hid)
        return {};
    unsigned bus = 0;
    unsigned vid = 0;
    unsigned pid = 0;
    if (std::sscanf(orEmpty(udev_device_get_property_value(hid, "HID_ID")), "%x:%x:%x", &bus, &vid, &pid) !=
            3 ||
        bus != usbBus)
        return {};
    const std::string place = orEmpty(udev_device_get_syspath(hid));
    HidNode node{.name = orEmpty(udev_device_get_sysname(device)),
                 .vid = static_cast<std::uint16_t>(vid),
                 .pid = static_cast<std::uint16_t>(pid),
                 .reportDescriptor = fileBytes(place + "/report_descriptor")};
    // A device that a program presents has no parents on the USB, and one interface.
    if (place.starts_with("/sys/devices/virtual/"))
        return node;
    udev_device* const interface =
        udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_interface");
    udev_device* const usb = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    const char* const number =
        interface ? udev_device_get_sysattr_value(interface, "bInterfaceNumber") : nullptr;
    const char* const count = usb ? udev_device_get_sysattr_value(usb, "bNumInterfaces") : nullptr;
    // A device that goes at this moment has lost some of it; half of it would make another name.
    if (!number || !count || node.reportDescriptor.empty())
        return {};
    node.interface = static_cast<std::int32_t>(std::strtol(number, nullptr, 16));
    node.interfaces = static_cast<std::int32_t>(std::strtol(count, nullptr, 10));
    return node;
}

std::vector<DeviceInterface> interfacesOf(const HidNode& node)
{
    const bool composite = node.interfaces != 1;
    const std::string head =
        std::string(nameHead) + formatted("%04X&PID_%04X", unsigned{node.vid}, unsigned{node.pid}) +
        (composite ? formatted("&MI_%02X", static_cast<unsigned>(node.interface)) : std::string());
    const std::string tail = "#" + node.name + "#" + std::string(classId);
    const std::int32_t interface = composite ? node.interface : -1;
    const std::vector<std::uint16_t> pages = topLevelUsagePages(node.reportDescriptor);
    if (pages.size() < 2)
        return {{head + tail, interface, pages.empty() ? 0 : pages[0]}};
    std::vector<DeviceInterface> interfaces;
    for (const std::uint16_t page : pages)
        interfaces.push_back(
            {head + formatted("&Col%02X", static_cast<unsigned>(interfaces.size() + 1)) + tail, interface,
             page});
    return interfaces;
}

std::string nodeInName(std::string_view name)
{
    constexpr std::string_view key = "hidraw";
    if (name.size() < nameHead.size() || !sameWithoutCase(name.substr(0, nameHead.size()), nameHead))
        return {};
    const std::size_t first = name.find('#', nameHead.size());
    if (first == std::string_view::npos)
        return {};
    const std::string_view instance = name.substr(first + 1, name.find('#', first + 1) - first - 1);
    if (instance.size() <= key.size() || instance.size() > key.size() + 9 ||
        !sameWithoutCase(instance.substr(0, key.size()), key))
        return {};
    const std::string_view number = instance.substr(key.size());
    if (!std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; }))
        return {};
    return std::string(key).append(number);
}

bool sameWithoutCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace pyrux::platform
