#include "simulator/models/lights.h"

#include <array>

namespace pyrux::sim {

Light dimmed(Light color, int brightness)
{
    const auto part = [=](std::uint8_t value) { return std::uint8_t(value * brightness / 255); };
    return {part(color.red), part(color.green), part(color.blue)};
}

std::vector<Light> spectrum(std::size_t leds, int brightness)
{
    std::vector<Light> lights(leds);
    for (std::size_t i = 0; i < leds; ++i) {
        const std::size_t angle = i * 6 * 255 / leds; // six sides of 255 steps each
        const auto rising = std::uint8_t(angle % 255);
        const auto falling = std::uint8_t(255 - rising);
        const std::array<Light, 6> sides{{{255, rising, 0},
                                          {falling, 255, 0},
                                          {0, 255, rising},
                                          {0, falling, 255},
                                          {rising, 0, 255},
                                          {255, 0, falling}}};
        lights[i] = dimmed(sides[angle / 255], brightness);
    }
    return lights;
}

std::vector<Light> lightsOf(std::span<const std::uint8_t> colors)
{
    std::vector<Light> lights;
    for (std::size_t i = 0; i + 2 < colors.size(); i += 3)
        lights.push_back({colors[i], colors[i + 1], colors[i + 2]});
    return lights;
}

} // namespace pyrux::sim
