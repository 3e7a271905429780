#include "devices/keyboards/status_chart.h"

#include <algorithm>
#include <array>

namespace pyrux {

namespace {

using Color = std::array<std::uint8_t, 3>;

/// From the bottom up, and the loads that they end at. A chart of fewer rows lacks the lowest.
constexpr std::array<Color, 6> palette{
    {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 128, 0}, {255, 0, 0}}};
constexpr std::array<std::int32_t, palette.size()> loads{16, 32, 48, 64, 80, 100};

constexpr int dark = -1;

int rowsLacking(const StatusChart& chart)
{
    return int(palette.size()) - chart.rows;
}

} // namespace

int levelOfLoad(const StatusChart& chart, std::int32_t load)
{
    if (load <= 0 || load > loads.back())
        return dark;
    const auto step = std::ranges::lower_bound(loads, load) - loads.begin();
    return std::max(int(step) - rowsLacking(chart), dark);
}

std::vector<std::uint8_t> chartFrame(const StatusChart& chart, std::span<const std::int32_t> levels)
{
    std::vector<std::uint8_t> frame(chart.leds * 3);
    const int columns = std::min(chart.columns, int(levels.size()));
    for (int column = 0; column < columns; ++column) {
        const int bottom = chart.firstLed + chart.ledsPerColumn * column + chart.rows - 1;
        const int lit = std::min(levels[std::size_t(column)] + 1, chart.rows);
        for (int row = 0; row < lit; ++row)
            std::ranges::copy(palette[std::size_t(rowsLacking(chart) + row)],
                              frame.begin() + (bottom - row) * 3);
    }
    return frame;
}

} // namespace pyrux
