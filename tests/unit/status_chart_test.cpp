#include "devices/keyboards/status_chart.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace pyrux {
namespace {

constexpr StatusChart qw210Chart{};
constexpr StatusChart qw220Chart{.columns = 23, .firstLed = 0, .ledsPerColumn = 6, .ledsSent = 138};

struct Color {
    int red, green, blue;
    bool operator==(const Color&) const = default;
};

// From the bottom up.
constexpr std::array<Color, 6> palette{
    {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 128, 0}, {255, 0, 0}}};

Color colorOf(const std::vector<std::uint8_t>& frame, int led)
{
    const std::size_t at = std::size_t(3 * led);
    return {frame.at(at), frame.at(at + 1), frame.at(at + 2)};
}

/// All LEDs of a frame against the levels that it shows; `top` is the topmost LED of column 0.
void expectFrame(const StatusChart& chart, const std::vector<std::int32_t>& levels, int top, int step)
{
    const std::vector<std::uint8_t> frame = chartFrame(chart, levels);
    ASSERT_EQ(frame.size(), 504U);
    std::vector<Color> expected(168, Color{0, 0, 0});
    for (std::size_t column = 0; column < levels.size(); ++column)
        for (int row = 0; row <= levels[column]; ++row)
            expected.at(std::size_t(step * int(column) + top + 5 - row)) = palette.at(std::size_t(row));
    for (int led = 0; led < 168; ++led)
        EXPECT_EQ(colorOf(frame, led), expected[std::size_t(led)]) << led;
}

} // namespace

TEST(StatusChart, hasALevelForEachLoad)
{
    struct Row {
        std::int32_t load;
        int level;
    };
    for (const Row& row : {Row{0, -1}, Row{1, 0}, Row{16, 0}, Row{17, 1}, Row{32, 1}, Row{33, 2}, Row{48, 2},
                           Row{49, 3}, Row{64, 3}, Row{65, 4}, Row{80, 4}, Row{81, 5}, Row{99, 5},
                           Row{100, 5}, Row{101, -1}, Row{-1, -1}, Row{100000, -1}}) {
        EXPECT_EQ(levelOfLoad(qw210Chart, row.load), row.level) << row.load;
        EXPECT_EQ(levelOfLoad(qw220Chart, row.load), row.level) << row.load;
    }
}

TEST(StatusChart, isDarkAtTheStart)
{
    expectFrame(qw210Chart, std::vector<std::int32_t>(19, -1), 7, 7);
    expectFrame(qw220Chart, std::vector<std::int32_t>(23, -1), 0, 6);
}

TEST(StatusChart, lightsItsColumnsFromTheBottomUp)
{
    const std::vector<std::uint8_t> frame =
        chartFrame(qw210Chart, std::vector<std::int32_t>{5, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                                         -1, -1, -1, -1, 2});
    EXPECT_EQ(colorOf(frame, 7), (Color{255, 0, 0}));
    EXPECT_EQ(colorOf(frame, 8), (Color{255, 128, 0}));
    EXPECT_EQ(colorOf(frame, 12), (Color{0, 0, 255}));
    EXPECT_EQ(colorOf(frame, 13), (Color{0, 0, 0}));
    EXPECT_EQ(colorOf(frame, 18), (Color{0, 0, 0}));
    EXPECT_EQ(colorOf(frame, 19), (Color{0, 0, 255}));
    EXPECT_EQ(colorOf(frame, 136), (Color{0, 255, 0})); // column 18: 133 to 138
    EXPECT_EQ(colorOf(frame, 138), (Color{0, 0, 255}));
    expectFrame(qw210Chart, {0, 1, 2, 3, 4, 5, -1, 0, 1, 2, 3, 4, 5, -1, -2, 5, 4, 3, 5}, 7, 7);
    expectFrame(qw220Chart, {0, 1, 2, 3, 4, 5, -1, 0, 1, 2, 3, 4, 5, -1, -2, 5, 4, 3, 5, 1, 0, -1, 5}, 0, 6);
}

} // namespace pyrux
