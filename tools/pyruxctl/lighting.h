#pragma once

#include "operation.h"

#include "pyrux/hub_records.h"
#include "pyrux/lighting.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace pyrux::ctl {

/// One LED as the command line takes it.
struct NamedLed {
    std::uint32_t zone;
    std::uint32_t led;
    std::uint8_t red, green, blue;
};

/// The argument of `setSyncLightingData` on the command line: LEDs with their zones.
struct LedFrame {
    std::uint8_t count;
    NamedLed leds[255];
};

template <>
struct Layout<NamedLed> {
    using R = NamedLed;
    static constexpr Field fields[]{FIELD(zone), FIELD(led), FIELD(red), FIELD(green), FIELD(blue)};
};

template <>
struct Layout<LedFrame> {
    using R = LedFrame;
    static constexpr Field fields[]{FIELD_COUNTED(leds, count)};
};

/// The zones of a frame, in the order in which they first appear.
inline std::vector<LightingLedZone> zonesOf(const LedFrame& frame)
{
    std::vector<LightingLedZone> zones;
    for (std::size_t i = 0; i < frame.count; ++i) {
        const NamedLed& led = frame.leds[i];
        auto zone = std::ranges::find(zones, led.zone, &LightingLedZone::zone);
        if (zone == zones.end())
            zone = zones.insert(zones.end(), {led.zone, {}});
        zone->leds.push_back({led.led, led.red, led.green, led.blue});
    }
    return zones;
}

template <>
struct Layout<RgbColor> {
    using R = RgbColor;
    static constexpr Field fields[]{FIELD(red), FIELD(green), FIELD(blue)};
};

template <std::size_t zones>
struct Layout<LightingPortColorOf<zones>> {
    using R = LightingPortColorOf<zones>;
    static constexpr Field fields[]{FIELD(zone), FIELD(red), FIELD(green), FIELD(blue)};
};

/// `setLightingPortColor`, whose record does not tell how many zones it has.
/// @tparam Record  the one that the device takes
template <class Interface, class Record>
Operation portColorOperation()
{
    return {"setLightingPortColor",
            {{"color", Direction::in, &typeOf<Record>, {}}},
            [](void* host, std::byte* const* memory) {
                const auto* color = reinterpret_cast<const Record*>(memory[0]);
                return std::int32_t(static_cast<Interface*>(host)->setLightingPortColor(color));
            }};
}

/// `setSyncLightingData`, whose vector no row of bytes can stand for.
template <class Interface>
Operation ledFrameOperation()
{
    return {"setSyncLightingData",
            {{"frame", Direction::in, &typeOf<LedFrame>, {}}},
            [](void* host, std::byte* const* memory) {
                const auto& frame = *reinterpret_cast<const LedFrame*>(memory[0]);
                return std::int32_t(static_cast<Interface*>(host)->setSyncLightingData(zonesOf(frame)));
            }};
}

} // namespace pyrux::ctl
