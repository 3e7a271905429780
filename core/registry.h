#pragma once

#include "core/dev_probe.h"

#include <chrono>
#include <condition_variable>
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
    HostProbe* probe = nullptr;          ///< The host object's hooks.
    std::uint8_t backgroundAtCreate = 0; ///< Whether the library was in background mode.
    std::uint8_t unplugged = 0;          ///< 1: the device has gone, and the object is on its way out.
    /// When the factory began to open the device: an older notice of its removal means another plug.
    std::chrono::steady_clock::time_point opened{};
};

/// The host objects in use, in order of creation. All access goes through `mutex`. A factory leaves it while
/// it makes an object, having put a reservation in the object's place: a path never gets two objects, and a
/// device that does not answer holds back nobody but those who want it.
class Registry {
public:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex;

    /// The place of an object that is being made. Made and destroyed with `mutex` held.
    class Reservation {
    public:
        Reservation(Registry& registry, std::string path);
        ~Reservation();
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

        /// Whether the library has ended since: the object has come too late.
        bool late() const { return exits != registry.exits; }

        const std::string path;
        const Clock::time_point opened = Clock::now(); ///< As in `DeviceEntry`.
        bool gone = false;                             ///< The device has gone meanwhile.

    private:
        Registry& registry;
        const unsigned exits;
    };

    /// Waits while an object of this path is being made. `lock` holds `mutex`, and is free meanwhile.
    void waitUntilMade(std::unique_lock<std::mutex>& lock, std::string_view path);

    /// The objects that are being made. Valid while `mutex` is held.
    const std::vector<Reservation*>& beingMade() const { return reservations; }

    /// The entry of a path, byte by byte; null when there is none. Valid while `mutex` is held.
    DeviceEntry* find(std::string_view path);

    /// The entry of a host object; null when it has left.
    DeviceEntry* findHost(const void* host);

    /// All entries. Valid while `mutex` is held.
    std::vector<DeviceEntry*> all();

    void add(DeviceEntry entry);

    /// Takes an entry out. Its host object stays in the world: hosts may call it to the end of the process.
    void remove(const DeviceEntry* entry);

    /// Keeps a host object that has come too late to have an entry, as long as its last threads may use it.
    void retire(void* host);

    /// Ends every entry as `device_exit` does, with the device still there unless it is known to have gone,
    /// and empties the registry. The log lines stand in order; the goodbyes run side by side, so that it
    /// takes as long as the slowest device.
    void exitAll();

    std::size_t size() const { return entries.size(); }

private:
    std::vector<std::unique_ptr<DeviceEntry>> entries;
    std::vector<Reservation*> reservations;
    std::condition_variable changed; ///< A reservation has ended.
    unsigned exits = 0;              ///< How often the library has ended.
    std::vector<void*> retiredHosts;
};

/// The library's registry. Never destroyed.
Registry& registry();

} // namespace pyrux
