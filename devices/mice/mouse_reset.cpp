#include "devices/mice/mouse_reset.h"

#include <array>

namespace pyrux {

namespace {

namespace cmd {                         // numbers are report bytes
constexpr Report resetPart{0x51, 0x98}; // 3 to 6: mask
}

constexpr std::array<std::uint32_t, 3> masks{1U << 1, 1U << 2, 1U << 4}; // by part
constexpr std::uint8_t buttonPart = 1;
constexpr std::uint8_t performancePart = 2;

} // namespace

_error MouseReset::resetPartial(std::uint8_t part)
{
    if (part >= masks.size())
        return E_INVALID_SET;
    modes.configure();
    WheelTilt::State tilt;
    if (part == performancePart)
        wheel.read(tilt); // a state that cannot be read counts as both on
    if (link.set(cmd::resetPart.at32(3, masks[part])))
        return E_INVALID_SET;
    if (part == buttonPart)
        return wheel.write(true, true);
    if (part == performancePart)
        return wheel.write(tilt.b, tilt.a) ? E_INVALID_SET : performance.restoreDefaults();
    return E_OK;
}

} // namespace pyrux
