#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pyrux {

/// The status effect's bars on the keys. A bar's level is that of its topmost row, from 0 at the bottom; a
/// negative one is a dark bar.
struct StatusChart {
    int columns = 19;
    int rows = 6;
    int firstLed = 7;           ///< Of column 0, at the top.
    int ledsPerColumn = 7;      ///< From a column to the next; a row is one LED.
    std::size_t leds = 168;     ///< Of a frame.
    std::size_t ledsSent = 175; ///< Deliberate where there are more than `leds`: dark ones follow them.
    std::optional<std::uint8_t> lastReportSays{}; ///< LEDs that the last report names, if not those it has.
};

inline constexpr std::uint8_t reportLeds = 18; ///< LEDs in a report of a frame.

/// The level of a processor load in %; dark for a load outside 1 to 100.
int levelOfLoad(const StatusChart& chart, std::int32_t load);

/// The frame that shows a level per column: red, green and blue of each LED.
std::vector<std::uint8_t> chartFrame(const StatusChart& chart, std::span<const std::int32_t> levels);

} // namespace pyrux
