#pragma once

#include "pyrux/error.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <cstdint>

namespace pyrux {

/// The states of a mouse's firmware, as commands.
namespace modes {
inline constexpr Report configOff{0x41, 0x00}; // the device goes its own way again
inline constexpr Report serviceOn{0x41, 0x01}; // reset, save and macro recording work
inline constexpr Report configOn{0x41, 0x80};  // the device accepts configuration
} // namespace modes

/// How the parts of a mouse ask for the state that they need. Nobody keeps track of it: each operation asks
/// anew, and what the device answers does not matter as a rule.
class MouseModes {
public:
    explicit MouseModes(DeviceLink& link) : link(link) {}

    _error configure() { return link.set(modes::configOn); }
    void serve() { link.set(modes::serviceOn); }

    /// Ends either state, unless the channel has been closed meanwhile.
    void release();

private:
    DeviceLink& link;
};

/// `command` with what a read has given, in the places where it is written: byte n of the reply in byte
/// n + 1, from byte 3 on.
Report repeated(const Report& command, const Reply& reply);

/// The buttons of the wired mice.
namespace mouse {
inline constexpr std::uint8_t buttons = 13;
inline constexpr std::uint8_t tiltDown = 6; ///< A tilt of the wheel that can act as a step down.
inline constexpr std::uint8_t tiltUp = 7;   ///< The other one, a step up.

/// How the device numbers a button: address and page.
constexpr std::uint8_t address(std::uint8_t button)
{
    return button == tiltDown ? 0xBE : button == tiltUp ? 0xBF : std::uint8_t(0xB0 + (button & 7));
}
constexpr std::uint8_t page(std::uint8_t button)
{
    return button >> 3;
}
constexpr bool isTilt(std::uint8_t button)
{
    return button == tiltDown || button == tiltUp;
}
} // namespace mouse

} // namespace pyrux
