#pragma once

#include "devices/mice/mouse_effects.h"
#include "devices/mice/mouse_frames.h"
#include "devices/mice/mouse_host.h"
#include "devices/mice/wired_mouse.h"
#include "pyrux/led_mouse.h"
#include "pyrux/lighting.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace pyrux {

/// What tells one wired mouse with lights from another.
struct LedMouseTraits {
    const ModelRow& model;
    std::span<const std::uint8_t> effectModes;
};

/// The wired mouse with lights: effects that the device plays by itself, and frames of a host, which go
/// through a queue.
class LedMouse : public WiredMouse {
public:
    LedMouse(const std::string& path, const LedMouseTraits& traits);

    _error setLightingInit() { return frames.setLightingInit(); }
    _error setLightingUninit() { return frames.setLightingUninit(); }
    _error setLightingPortColor(const LightingPortColor* color) { return frames.setLightingPortColor(color); }
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones)
    {
        return frames.setSyncLightingData(zones);
    }
    _error setLightingTurnOff() { return frames.setLightingTurnOff(); }

    MouseEffects effects;

private:
    MouseFrames frames{link};
};

/// The host operations of the wired mice with lights.
template <class Device, class Interface>
class LedMouseHost : public MouseEffectsHost<LitHost<MouseHost<Device, Interface>>> {
public:
    using MouseEffectsHost<LitHost<MouseHost<Device, Interface>>>::MouseEffectsHost;

protected:
    ~LedMouseHost() = default;
};

} // namespace pyrux
