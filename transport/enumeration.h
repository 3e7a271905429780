#pragma once

#include "pyrux/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pyrux {

/// One interface, or one collection of it, that hidapi has found.
struct HidEntry {
    std::string path;
    std::uint16_t vid = 0;
    std::uint16_t pid = 0;
    std::int32_t interface = -1;
    std::int32_t usagePage = 0;
    std::uint16_t release = 0;
    std::string serial; ///< In the system's code page, as the two below.
    std::string product;
    std::string manufacturer;
};

/// Everything attached with an identity; 0 stands for any vendor or product.
std::vector<HidEntry> enumerateHid(std::uint16_t vid, std::uint16_t pid);

/// Counts the catalogue rows of all entries. Deliberately looser than `listDevices`: neither `enabled` nor
/// the usage page counts, so that a host's buffer is never too small.
std::int32_t countDevices();

/// One record per entry and matching catalogue row, in the order of both.
std::vector<DevInfoRecord> listDevices();

/// Finds the path of the first interface with this identity; `usagePage` -1 for any.
/// @return 0, or 1 when there is none and `path` stays as it was
int findDevicePath(std::uint16_t vid, std::uint16_t pid, std::int32_t interface, std::int32_t usagePage,
                   std::string& path);

/// Finds the path of a collection of interface 4 of a receiver of the maker's, by "col0" and the number, in
/// any case.
/// @return 0 or 1 as above
int findCollectionPath(std::uint16_t pid, int collection, std::string& path);

} // namespace pyrux
