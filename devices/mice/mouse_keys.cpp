#include "devices/mice/mouse_keys.h"

namespace pyrux {

namespace {

constexpr std::uint8_t up = 0x40;
constexpr std::uint8_t down = 0xC0;

} // namespace

std::optional<NotifyRecord> MouseKeys::take(const Reply& report)
{
    const std::uint8_t button = report[4];
    const std::uint8_t state = report[5];
    if (state != up && state != down)
        return std::nullopt;
    if (button == facts.shiftKey) {
        shift = state == down;
        return std::nullopt;
    }
    const int value = button < facts.values.size() ? facts.values[button] : 0;
    return NotifyRecord{.event = state == down ? facts.downEvent : facts.upEvent,
                        .value = std::uint16_t(value + (shift ? facts.shiftValue : 0))};
}

} // namespace pyrux
