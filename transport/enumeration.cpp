#include "transport/enumeration.h"

#include "core/catalogue.h"
#include "platform/device_names.h"
#include "platform/text.h"
#include "transport/hid_handle.h"

#include <hidapi/hidapi.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <ranges>
#include <span>
#include <string_view>
#include <utility>

namespace pyrux {

namespace {

constexpr std::uint16_t makerVid = 0x3A7E;
constexpr std::int32_t receiverCollectionsInterface = 4;

std::string lowerCased(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return result;
}

bool sameInterface(const HidEntry& entry, const DeviceRow& row)
{
    return entry.vid == row.vid && entry.pid == row.pid && entry.interface == row.interface;
}

bool matches(const HidEntry& entry, const DeviceRow& row)
{
    return row.enabled == 1 && sameInterface(entry, row) &&
           (row.usagePage == anyUsagePage || row.usagePage == entry.usagePage);
}

/// Copies a text into a record's field, cut to what fits with its NUL.
void put(std::span<char> field, std::string_view text)
{
    const auto end = std::ranges::copy(text.substr(0, field.size() - 1), field.begin()).out;
    *end = '\0';
}

DevInfoRecord recordOf(const HidEntry& entry)
{
    DevInfoRecord record{};
    put(record.path, lowerCased(entry.path));
    put(record.serial, entry.serial);
    put(record.product, entry.product);
    put(record.vendor, entry.manufacturer);
    record.release = entry.release;
    record.pid = entry.pid;
    record.vid = entry.vid;
    record.driverOk = 1;
    record.statusOk = 1;
    return record;
}

} // namespace

namespace {

/// What hidapi has listed, with the names and interface numbers that it gives.
std::vector<HidEntry> listedByHidapi(std::uint16_t vid, std::uint16_t pid)
{
    const std::lock_guard lock(hidLibraryMutex());
    const std::unique_ptr<hid_device_info, decltype(&hid_free_enumeration)> list(hid_enumerate(vid, pid),
                                                                                 &hid_free_enumeration);
    std::vector<HidEntry> entries;
    for (const hid_device_info* one = list.get(); one; one = one->next)
        entries.push_back({.path = one->path ? one->path : "",
                           .vid = one->vendor_id,
                           .pid = one->product_id,
                           .interface = one->interface_number,
                           .usagePage = one->usage_page,
                           .release = one->release_number,
                           .serial = platform::narrow(one->serial_number),
                           .product = platform::narrow(one->product_string),
                           .manufacturer = platform::narrow(one->manufacturer_string)});
    return entries;
}

} // namespace

std::vector<HidEntry> enumerateHid(std::uint16_t vid, std::uint16_t pid)
{
    const std::vector<HidEntry> entries = listedByHidapi(vid, pid);
    std::vector<platform::ListedInterface> listed;
    for (const HidEntry& entry : entries)
        listed.push_back({{entry.path, entry.interface, entry.usagePage}, listed.size()});
    std::vector<HidEntry> named;
    for (platform::ListedInterface& one : platform::deviceInterfaces(std::move(listed))) {
        HidEntry& entry = named.emplace_back(entries[one.source]);
        entry.path = std::move(one.interface.name);
        entry.interface = one.interface.interface;
        entry.usagePage = one.interface.usagePage;
    }
    return named;
}

std::int32_t countDevices()
{
    std::int32_t count = 0;
    for (const HidEntry& entry : enumerateHid(0, 0))
        count += std::int32_t(std::ranges::count_if(
            deviceCatalogue, [&](const DeviceRow& row) { return sameInterface(entry, row); }));
    return count;
}

std::vector<DevInfoRecord> listDevices()
{
    std::vector<DevInfoRecord> records;
    for (const HidEntry& entry : enumerateHid(0, 0))
        for (const DeviceRow& row : deviceCatalogue)
            if (matches(entry, row))
                records.push_back(recordOf(entry));
    return records;
}

int findDevicePath(std::uint16_t vid, std::uint16_t pid, std::int32_t interface, std::int32_t usagePage,
                   std::string& path)
{
    for (const HidEntry& entry : enumerateHid(vid, pid)) {
        if (entry.vid != vid || entry.pid != pid || entry.interface != interface)
            continue;
        if (usagePage != anyUsagePage && entry.usagePage != usagePage)
            continue;
        path = entry.path;
        return 0;
    }
    return 1;
}

int findCollectionPath(std::uint16_t pid, int collection, std::string& path)
{
    const std::string wanted = "col0" + std::to_string(collection);
    for (const HidEntry& entry : enumerateHid(makerVid, pid)) {
        if (entry.interface != receiverCollectionsInterface ||
            lowerCased(entry.path).find(wanted) == std::string::npos)
            continue;
        path = entry.path;
        return 0;
    }
    return 1;
}

} // namespace pyrux
