#pragma once

#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "transport/device_link.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace pyrux {

/// The order in which the device keeps its DPI levels: the enabled ones first. Sends 51 9B and 52 9B.
class DpiOrder {
public:
    static constexpr std::uint8_t levels = 7;

    /// Level by place. A device without a table keeps the levels in their own order.
    struct Table {
        std::array<std::uint8_t, levels> levelAt{0, 1, 2, 3, 4, 5, 6};
        bool stored = false; ///< The device has a table.

        /// Where a level stands; none: nowhere.
        std::optional<std::uint8_t> placeOf(std::uint8_t level) const;
    };

    explicit DpiOrder(DeviceLink& link) : link(link) {}

    /// Reads the table. Without an answer, or without a table, `table` stays.
    _error read(Table& table);
    _error write(const std::array<std::uint8_t, levels>& levelAt);

    /// Takes the table away.
    _error clear();

private:
    DeviceLink& link;
};

/// How a device stores the DPI of a level.
namespace dpi {

/// Whether a value is stored halved.
constexpr bool isDoubled(std::uint16_t value, std::uint16_t singleLimit)
{
    return value > singleLimit;
}

/// In hundreds less one, halved above `singleLimit`. Deliberate: divided towards zero, so that a value that
/// is no multiple of the step loses the rest.
constexpr std::uint8_t stored(std::uint16_t value, std::uint16_t singleLimit)
{
    return std::uint8_t(((isDoubled(value, singleLimit) ? value / 2 : value) - 100) / 100);
}

/// Which of a level's two values are stored halved.
constexpr std::uint8_t doublingFlags(const DpiLevel& level, std::uint16_t singleLimit)
{
    return std::uint8_t((isDoubled(level.x, singleLimit) ? 0x01 : 0) |
                        (isDoubled(level.y, singleLimit) ? 0x10 : 0));
}

/// A level from its two stored bytes and their flags.
constexpr DpiLevel level(std::uint8_t x, std::uint8_t y, std::uint8_t flags)
{
    const int factors = flags + 0x11;
    return {.x = std::uint16_t((x + 1) * 100 * (factors & 0x0F)),
            .y = std::uint16_t((y + 1) * 100 * (factors >> 4 & 0x0F))};
}

} // namespace dpi
} // namespace pyrux
