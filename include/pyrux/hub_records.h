#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// Records that several lighting controllers share.

#pragma pack(push, 1)

/// One color among several.
struct RgbColor {
    std::uint8_t red, green, blue;
};

/// One effect of a port, or of the plain RGB strip.
struct ArgbEffectParam {
    std::uint8_t port;             ///< 1 to 4. Some operations count it down in place.
    std::uint8_t mode;             ///< Effect number of the device.
    std::uint8_t colorSource;      ///< 16: the color below counts, and is read back.
    std::uint8_t speed;            ///< From 1; the wire carries it less one.
    std::uint8_t brightness;       ///< Sent as it stands.
    std::uint8_t red, green, blue; ///< Meaningful with `colorSource` 16.
};

#pragma pack(pop)

static_assert(sizeof(RgbColor) == 3 && offsetof(RgbColor, red) == 0);
static_assert(offsetof(RgbColor, green) == 1 && offsetof(RgbColor, blue) == 2);
static_assert(sizeof(ArgbEffectParam) == 8 && offsetof(ArgbEffectParam, port) == 0);
static_assert(offsetof(ArgbEffectParam, mode) == 1 && offsetof(ArgbEffectParam, colorSource) == 2);
static_assert(offsetof(ArgbEffectParam, speed) == 3 && offsetof(ArgbEffectParam, brightness) == 4);
static_assert(offsetof(ArgbEffectParam, red) == 5 && offsetof(ArgbEffectParam, green) == 6 &&
              offsetof(ArgbEffectParam, blue) == 7);

/// `colorSource` of an effect that has a color of its own.
inline constexpr std::uint8_t argbOwnColor = 16;
