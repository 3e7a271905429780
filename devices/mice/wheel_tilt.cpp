#include "devices/mice/wheel_tilt.h"

#include "devices/mice/mouse_protocol.h"

#include <algorithm>
#include <array>

namespace pyrux {

namespace {

namespace cmd {                        // numbers are report bytes; a reply counts from 0
constexpr Report setWheel{0x51, 0x22}; // 5 and 6: the two tilt directions
constexpr Report getWheel{0x52, 0x22}; // reply 4 and 5
} // namespace cmd

constexpr std::uint8_t on = 0xC0;
constexpr std::uint8_t off = 0x10;
constexpr std::array<std::uint8_t, 3> known{on, off, 0x20}; // the last one is off too

bool isKnown(std::uint8_t byte)
{
    return std::ranges::find(known, byte) != known.end();
}

std::uint8_t wheelByte(bool step)
{
    return step ? on : off;
}

} // namespace

_error WheelTilt::read(State& state)
{
    Reply reply;
    if (const _error result = link.get(cmd::getWheel, reply))
        return result;
    if (!isKnown(reply[4]) || !isKnown(reply[5]))
        return E_INVALID_GET;
    state = {.a = reply[5] == on, .b = reply[4] == on};
    return E_OK;
}

_error WheelTilt::write(bool first, bool second)
{
    return link.set(cmd::setWheel.at(5, wheelByte(first)).at(6, wheelByte(second)));
}

_error WheelTilt::writeOne(std::uint8_t button, bool step, const State& state)
{
    return button == mouse::tiltUp ? write(state.b, step) : write(step, state.a);
}

} // namespace pyrux
