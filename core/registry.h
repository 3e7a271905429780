#pragma once

#include "core/dev_probe.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// One host object that is in use.
struct DeviceEntry {
    std::string_view model;
    std::int32_t deviceType = 0;         ///< Index of the family's first row in `deviceCatalogue`.
    void* host = nullptr;                ///< What the factory returns: the host object's interface.
    std::string path;                    ///< Key: the factory's argument, see `registryKey`.
    DEV_PROBE* probe = nullptr;          ///< The host object's hooks.
    std::uint8_t backgroundAtCreate = 0; ///< Whether the library was in background mode.
    std::uint8_t unplugged = 0;          ///< 1: the device has gone, and the object is on its way out.
    /// When the factory began to open the device: an older notice of its removal means another plug.
    std::chrono::steady_clock::time_point opened{};
};

/// The host objects in use, in order of creation. All access goes through `mutex`; factories hold it for
/// their whole call, so that constructors run one at a time and a path never gets two objects.
class Registry {
public:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex;

    /// The entry of a path, byte by byte; null when there is none. Valid while `mutex` is held.
    DeviceEntry* find(std::string_view path);

    /// The entry of a host object; null when it has left.
    DeviceEntry* findHost(const void* host);

    /// All entries. Valid while `mutex` is held.
    std::vector<DeviceEntry*> all();

    void add(DeviceEntry entry);

    /// Takes an entry out. Its host object stays in the world: hosts may call it to the end of the process.
    void remove(const DeviceEntry* entry);

    /// Runs `device_exit` of every entry in order, with the device still there unless it is known to have
    /// gone, and empties the registry.
    void exitAll();

    std::size_t size() const { return entries.size(); }

private:
    std::vector<std::unique_ptr<DeviceEntry>> entries;
    std::vector<void*> retiredHosts;
};

/// The library's registry. Never destroyed.
Registry& registry();

} // namespace pyrux
