#pragma once

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

    /// The first names stay: a device that is about to go may be read wrongly. A place that has been
    /// forgotten is not remembered again; there are no two devices of one place.
    void remember(const std::string& place, Names names);
    Names recall(const std::string& place) const;
    Names forget(const std::string& place);
    std::vector<std::string> places() const;

private:
    mutable std::mutex mutex;
    int readers = 0;
    std::map<std::string, Names> byPlace;
    std::deque<std::string> forgotten; ///< The newest ones.
};

/// The one memory. Never destroyed.
NameMemory& nameMemory();

} // namespace pyrux::platform
