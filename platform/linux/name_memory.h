#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace pyrux::platform {

/// The names under which devices are known, by their place in /sys: what is gone cannot be read any more.
/// Both the notices and the enumeration write here, so that a device which a host has found by enumeration in
/// front of its notice is named when it goes.
class NameMemory {
public:
    using Names = std::vector<std::string>;

    /// Only while somebody reads removals the memory fills.
    void begin();
    void end();

    /// A point in the order of what is forgotten.
    using Mark = std::uint64_t;
    Mark mark() const;

    /// For who reads arrivals and removals in their order. The first names stay: a device that is about to go
    /// may be read wrongly.
    void remember(const std::string& place, Names names);

    /// For who looks at devices beside that. What has been read since `before` is dropped when the place has
    /// been forgotten since: the names may be those of the device that has gone. Another device of the same
    /// place is remembered.
    void remember(const std::string& place, Names names, Mark before);
    Names recall(const std::string& place) const;
    Names forget(const std::string& place);
    std::vector<std::string> places() const;

private:
    void put(const std::string& place, Names names);

    mutable std::mutex mutex;
    int readers = 0;
    std::map<std::string, Names> byPlace;
    Mark forgets = 0;                  ///< How often something has been forgotten.
    std::deque<std::string> forgotten; ///< Places, the newest ones.
};

/// The one memory. Never destroyed.
NameMemory& nameMemory();

} // namespace pyrux::platform
