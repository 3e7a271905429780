#include "devices/keyboards/key_reports.h"

#include "pyrux/keyboard_records.h"

#include <cstdint>

namespace pyrux {

namespace {

constexpr std::uint8_t up = 0x40;
constexpr std::uint8_t down = 0xC0;

} // namespace

std::optional<NotifyRecord> KeyReports::read(const Reply& report) const
{
    const std::uint8_t number = report[4];
    const std::uint8_t state = report[5];
    if (state != up && state != down)
        return std::nullopt;
    if (number == row.fnKey)
        fnHeld = state == down;
    std::uint16_t value = USAGE_NO_KEY;
    if (number < row.usages.size())
        value = row.usages[number];
    if (fnHeld && (value != USAGE_FN || row.fnRaisesItself))
        value = std::uint16_t(value + USAGE_FN);
    return NotifyRecord{.event = state == down ? KEYBOARD_KEY_DOWN : KEYBOARD_KEY_UP, .value = value};
}

} // namespace pyrux
