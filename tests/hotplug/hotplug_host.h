#pragma once

#include "pyrux/records.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <vector>

namespace pyrux::test {

/// A host with a hotplug callback in a library that has been started, which happens once per process.
/// Collects the events while the object lives.
class HotplugHost {
public:
    HotplugHost();
    ~HotplugHost();
    HotplugHost(const HotplugHost&) = delete;
    HotplugHost& operator=(const HotplugHost&) = delete;

    /// Called with each event, on the library's thread.
    void onEvent(std::function<void(const HotplugEvent&)> call);

    /// Waits until there are `count` events and takes all that there are.
    std::vector<HotplugEvent> take(std::size_t count = 0,
                                   std::chrono::milliseconds limit = std::chrono::seconds(10));
};

} // namespace pyrux::test
