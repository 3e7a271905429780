#pragma once

#include <cstdint>

namespace pyrux {

/// Life-cycle hooks through which the core reaches a host object. The last base of every host class.
class DEV_PROBE {
public:
    /// Slot 0. Not called by the core.
    virtual std::int32_t device_pre_init(const std::uint8_t*) { return 0; }

    /// Slot 1. Not called by the core.
    virtual std::int32_t device_post_init(const std::uint8_t*) { return 0; }

    /// Slot 2. The device is going: host calls answer -11 from now on; the protocol object stays.
    virtual std::int32_t device_pre_exit(const std::uint8_t* flag) = 0;

    /// Slot 3. Not called by the core.
    virtual std::int32_t device_post_exit(const std::uint8_t*) { return 0; }

    /// Slot 4. Runs the object's own `exit_device` with the byte that `unplugged` points to.
    virtual std::int32_t device_exit(const std::uint8_t* unplugged) = 0;

protected:
    ~DEV_PROBE() = default;
};

/// The two halves of `device_exit`, for the end of the library: it announces all devices' exits in order,
/// then lets their goodbyes run side by side.
class HostProbe : public DEV_PROBE {
public:
    virtual void announceExit() = 0; ///< Writes the log lines.
    virtual void shutDown(bool unplugged) = 0;

protected:
    ~HostProbe() = default;
};

} // namespace pyrux
