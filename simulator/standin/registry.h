#pragma once

#include "simulator/standin/device.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace pyrux::sim {

/// What is plugged in, and which handles are open. There is one, which is never destroyed: a host's threads
/// may be inside the stand-in to the end of the process.
class Registry {
public:
    static Registry& instance();

    std::string plug(std::shared_ptr<Firmware> model, std::string instance);
    /// Pulls a device out. False: it had gone before.
    static bool unplug(Device& device);
    void reset();
    /// The plugged devices, in the order in which they were plugged in.
    std::vector<std::shared_ptr<Device>> plugged() const;
    /// The device of a path in any case, also one that has gone. Null: none.
    std::shared_ptr<Device> find(const std::string& path) const;

    /// A handle, from its opening to its closing, has a number that no other one ever gets.
    std::uintptr_t open(const std::string& path);
    /// Null: no such handle is open. The call counts among the handle's callers until `leave`.
    std::shared_ptr<Handle> enter(std::uintptr_t number);
    static void leave(Handle& handle) { --handle.callers; }
    void close(std::uintptr_t number);
    int openHandles() const;

    std::atomic<int> overlaps = 0;
    std::atomic<int> misuses = 0;

private:
    mutable std::mutex devicesMutex;
    std::unordered_map<std::string, std::shared_ptr<Device>>
        byPath;                                   ///< In lower case; also those that have gone.
    std::vector<std::shared_ptr<Device>> present; ///< In the order in which they came.
    int instances = 0;

    mutable std::shared_mutex handlesMutex;
    std::unordered_map<std::uintptr_t, std::shared_ptr<Handle>> handles;
    std::uintptr_t lastHandle = 0;
};

} // namespace pyrux::sim
