#pragma once

#include "devices/mice/mouse_protocol.h"
#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "transport/device_link.h"

#include <array>
#include <cstdint>
#include <span>

namespace pyrux {

inline constexpr std::uint8_t customEffect = 176; ///< Effect mode of the colors of `setCustomEffect`.

/// Effect modes of the first models, and of those that have one more.
inline constexpr std::array<std::uint8_t, 6> firstEffectModes{0, 1, 2, 4, customEffect, 254};
inline constexpr std::array<std::uint8_t, 7> laterEffectModes{0, 1, 2, 4, 5, customEffect, 254};

/// The effects that a mouse with lights plays by itself. Sends 51 28, 51 2B, 51 A8, 52 28, 52 2B and 52 A8.
class MouseEffects {
public:
    /// @param modesOfModel  the effect modes that the model has; they outlive this
    MouseEffects(DeviceLink& link, MouseModes& modes, std::span<const std::uint8_t> modesOfModel)
        : link(link), modes(modes), effectModes(modesOfModel)
    {
    }

    _error setEffectMode(std::uint8_t mode);
    _error getEffectMode(std::uint8_t* mode);
    _error setGeneralEffect(const MouseEffectRecord* effect);
    _error getGeneralEffect(MouseEffectRecord* effect);
    _error setCustomEffect(const std::uint8_t* colors);
    _error getCustomEffect(std::uint8_t* colors);

private:
    bool hasMode(std::uint8_t mode) const;

    DeviceLink& link;
    MouseModes& modes;
    const std::span<const std::uint8_t> effectModes;
};

} // namespace pyrux
