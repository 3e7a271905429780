#pragma once

#include "pyrux/error.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// Which of the wheel's two tilt directions act as steps by themselves, without the button map. Sends 51 22
/// and 52 22.
class WheelTilt {
public:
    struct State {
        bool a = true; ///< Tilt down, `mouse::tiltDown`.
        bool b = true; ///< Tilt up, `mouse::tiltUp`.
    };

    explicit WheelTilt(DeviceLink& link) : link(link) {}

    /// @return also E_INVALID_GET for a state that nobody knows; `state` stays then
    _error read(State& state);

    /// Writes the two bytes in their order on the wire.
    _error write(bool first, bool second);

    /// Makes one tilt a step, or none. Deliberate: the other one's byte is kept from the state crosswise.
    /// @param button  one of the two
    _error writeOne(std::uint8_t button, bool step, const State& state);

private:
    DeviceLink& link;
};

} // namespace pyrux
