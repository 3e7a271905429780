#pragma once

#include "pyrux/error.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

/// @file
/// Lights that a host drives by itself, frame by frame.

/// One color for several zones, as `setLightingPortColor` takes it: the head of a `LightingPortColorOf` with
/// as many zones as the device has, which the record itself does not tell.
struct LightingPortColor {};

/// @tparam zones  the number of entries that the device takes, stated with its interface
template <std::size_t zones>
struct LightingPortColorOf : LightingPortColor {
    std::uint32_t zone[zones]; ///< Zones of the device, from 1; others, such as the filler 0, are skipped.
    std::uint8_t red, green, blue;
};

/// One LED of a zone.
struct LightingLed {
    std::uint32_t index; ///< Place in the zone, from 0.
    std::uint8_t red, green, blue;
};

/// LEDs of one zone. LEDs of the zone that are not listed go dark.
struct LightingLedZone {
    std::uint32_t zone;
    std::vector<LightingLed> leds;
};

static_assert(sizeof(LightingPortColorOf<5>) == 24 && std::is_standard_layout_v<LightingPortColorOf<5>>);
static_assert(offsetof(LightingPortColorOf<5>, zone) == 0 && offsetof(LightingPortColorOf<5>, red) == 20);
static_assert(offsetof(LightingPortColorOf<5>, green) == 21 && offsetof(LightingPortColorOf<5>, blue) == 22);
static_assert(sizeof(LightingLed) == 8 && offsetof(LightingLed, index) == 0 &&
              offsetof(LightingLed, red) == 4);
static_assert(offsetof(LightingLed, green) == 5 && offsetof(LightingLed, blue) == 6);
static_assert(offsetof(LightingLedZone, zone) == 0 && offsetof(LightingLedZone, leds) == sizeof(void*));
static_assert(sizeof(LightingLedZone) == sizeof(void*) + sizeof(std::vector<LightingLed>));

/// The operations with which a host takes a device's lights over. They are the first five slots of every
/// model with lights.
///
/// A host calls `setLightingInit`, then slots 2 and 3 for each frame, then `setLightingUninit`. Frames go
/// through a queue: the calls return at once, and a frame that the device has no time for is replaced by the
/// next; the newest always goes out. Slots 2 and 3 are meant for frame rate and write no log.
///
/// The boundary: `setSyncLightingData` takes a `std::vector` by reference, so that a host that calls it must
/// be built with a C++ library whose `std::vector` has the layout of the library's own.
///
/// Results: E_NOT_SUPPORTED for a slot that the device does not have; E_CLOSED once the device has gone or
/// `exit_device` has run, in every slot. Any thread may call.
struct DEV_LIGHTING {
    /// Slot 0. Takes the lights over: what is queued is dropped, the device's own effects end, all lights go
    /// dark, and frames go out at the fast pace.
    /// @note Waits at most 3 s, 1.032 s for a device that answers nothing.
    virtual _error setLightingInit() { return E_NOT_SUPPORTED; }

    /// Slot 1. Gives the lights back: what is queued is dropped, the device's effects go on, the queue is
    /// slow again.
    /// @note Waits at most 2.032 s, 1.032 s for a device that answers nothing.
    virtual _error setLightingUninit() { return E_NOT_SUPPORTED; }

    /// Slot 2. Paints the listed zones in one color.
    /// @param color  a `LightingPortColorOf` with the number of zones that the device states
    /// @note Waits at most 1 s.
    virtual _error setLightingPortColor(const LightingPortColor* /*color*/) { return E_NOT_SUPPORTED; }

    /// Slot 3. Paints LEDs one by one.
    /// @return E_INVALID_SET for an empty vector, nothing sent
    /// @note Does not wait.
    virtual _error setSyncLightingData(const std::vector<LightingLedZone>& /*zones*/)
    {
        return E_NOT_SUPPORTED;
    }

    /// Slot 4. Drops what is queued and turns all lights off.
    /// @note Waits at most 1 s.
    virtual _error setLightingTurnOff() = 0;

protected:
    ~DEV_LIGHTING() = default;
};
