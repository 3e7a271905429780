#pragma once

#include <cstdint>

// Windows headers define E_FAIL as a macro. A host that includes them can still include this header, before
// or after them; it then writes _error(-1) where it needs that one member.
#pragma push_macro("E_FAIL")
#undef E_FAIL

/// Result code of every operation: 0 for success, negative for failure.
enum _error : std::int32_t {
    E_OK = 0,    ///< Success.
    E_FAIL = -1, ///< General failure; of any operation: no memory for what it needs.
    E_INVALID_SET =
        -2, ///< Bad argument of a set operation, or a set command that the device did not acknowledge.
    E_INVALID_GET = -3,  ///< Bad argument of a get operation, no reply in time, or a reply that does not fit.
    E_INVALID_MODE = -4, ///< Effect or mode number out of range, or one that this device does not have.
    E_INVALID_STATE = -5,  ///< The device's state does not allow to go on.
    E_INVALID_PARAM = -6,  ///< Parameter of an effect (speed, direction and the like) out of range.
    E_PIPE_FAIL = -7,      ///< The pipe to a resident service or control application failed.
    E_CFG_FAIL = -9,       ///< A configuration file could not be read or written.
    E_NOT_OPEN = -10,      ///< The channel to the device is not open.
    E_CLOSED = -11,        ///< The host object is closed: the device has gone or `exit_device` has run.
    E_WRITE_TIMEOUT = -12, ///< A write to the device took longer than its limit.
    E_NO_SPACE = -13,      ///< No space on a display device.
    E_NOT_SUPPORTED = -15, ///< A lighting operation that this device does not have.
    E_WRONG_REPLY = -98,   ///< Lighting controllers: a reply that does not fit the request.
};

#pragma pop_macro("E_FAIL")
