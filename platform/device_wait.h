#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace pyrux::platform {

/// Waits for a device's input and for a word from another thread at once.
///
/// Linux: for the nodes /dev/hidrawN, with a descriptor beside the one that reads: each open descriptor has a
/// queue of its own, and of several the one that was opened first gets a report first. Windows has no such
/// thing: input is only told of to whoever has a read under way.
class DeviceWait {
public:
    /// To be opened after the handle that reads. Null: the system cannot wait so for what has this path, and
    /// the reader has to look again and again.
    static std::unique_ptr<DeviceWait> open(const std::string& path);
    virtual ~DeviceWait() = default;

    /// Forgets what has come: reports from now on end a wait. Whoever reads looks once more after this.
    virtual void mark() = 0;

    /// Waits for a report since `mark`, the device's end, or a `wake`.
    /// @return false: nothing of that within `limit`
    virtual bool wait(std::chrono::milliseconds limit) = 0;

    /// Ends this wait and all later ones. From any thread.
    virtual void wake() = 0;
};

} // namespace pyrux::platform
