#pragma once

#include "devices/mice/mouse_host.h"
#include "devices/mice/wired_mouse.h"
#include "pyrux/led_mouse.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// What tells one wired mouse with lights from another.
struct LedMouseTraits {
    MouseTraits mouse;
    std::span<const std::uint8_t> effectModes;
};

/// The traits of a model. What is not named here is alike in all of them.
/// @param shift        whether button 1 is held, one flag per model
LedMouseTraits ledMouseTraits(const ModelRow& model, std::atomic<bool>& shift,
                              std::span<const std::uint8_t> effectModes);

inline constexpr std::uint8_t customEffect = 176; ///< Effect mode of the colours of `setCustomEffect`.

/// Effect modes of the first models, and of those that have one more.
inline constexpr std::array<std::uint8_t, 6> firstEffectModes{0, 1, 2, 4, customEffect, 254};
inline constexpr std::array<std::uint8_t, 7> laterEffectModes{0, 1, 2, 4, 5, customEffect, 254};

/// The wired mouse with lights: effects that the device plays by itself, and frames of a host, which go
/// through a queue.
class LedMouse : public WiredMouse {
public:
    LedMouse(const std::string& path, const LedMouseTraits& traits);

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setEffectMode(std::uint8_t mode);
    _error getEffectMode(std::uint8_t* mode);
    _error setGeneralEffect(const MouseEffectRecord* effect);
    _error getGeneralEffect(MouseEffectRecord* effect);
    _error setCustomEffect(const std::uint8_t* colors);
    _error getCustomEffect(std::uint8_t* colors);

private:
    bool hasMode(std::uint8_t mode) const;

    const std::span<const std::uint8_t> effectModes;
};

/// The host operations of the wired mice with lights.
template <class Device, class Interface>
class LedMouseHost : public LitHost<MouseHost<Device, Interface>> {
public:
    using LitHost<MouseHost<Device, Interface>>::LitHost;

    _error setEffectMode(std::uint8_t mode) override { return FORWARD(setEffectMode(mode)); }
    _error getEffectMode(std::uint8_t* mode) override { return FORWARD(getEffectMode(mode)); }
    _error setGeneralEffect(const MouseEffectRecord* effect) override
    {
        return FORWARD(setGeneralEffect(effect));
    }
    _error getGeneralEffect(MouseEffectRecord* effect) override { return FORWARD(getGeneralEffect(effect)); }
    _error setCustomEffect(const std::uint8_t* colors) override { return FORWARD(setCustomEffect(colors)); }
    _error getCustomEffect(std::uint8_t* colors) override { return FORWARD(getCustomEffect(colors)); }

protected:
    ~LedMouseHost() = default;
};

} // namespace pyrux
