#pragma once

#include "pyrux/records.h"

#include <cstddef>
#include <string>

namespace pyrux::test {

/// Collects what a device's notification callback is given. One for the process, since a callback carries
/// nothing of its own.
class Notifications {
public:
    /// For `registerNotify`.
    static void callback(NotifyRecord* record);

    static void clear();

    /// Waits for `count` notifications since `clear`, and gives all as "event:value", separated by blanks.
    static std::string await(std::size_t count);
};

} // namespace pyrux::test
