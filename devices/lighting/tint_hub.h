#pragma once

#include "devices/host_object.h"
#include "devices/lighting/lighting_controller.h"
#include "pyrux/tint_hub.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace pyrux {

/// Four plain RGB ports, with commands in letters. Operations are those of the host interface, whose header
/// tells arguments, results and bytes.
class TINT_HUB : public LightingController {
public:
    static constexpr const ModelRow& model = modelRow("tint_hub");
    explicit TINT_HUB(const std::string& path);
    ~TINT_HUB() override { link.stop(); }

    void sayGoodbye() override;

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setEffectParameter(std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                              const std::uint8_t* rgb);
    _error getEffectParameter(std::uint8_t* mode, std::uint8_t* speed, std::uint8_t* brightness,
                              std::uint8_t* rgb);
    _error getEffectStandardMode(std::uint8_t* mode);
    _error setPortMultiColor(const TintMultiColor* colors);
    _error getPortMultiColor(TintMultiColor* colors);
    _error setEffectMultilayer(const TintMultilayer* effect);

private:
    /// What an effect is written for.
    enum class Layer : std::uint8_t { effect = 0, multilayer = 1 };

    _error writeEffect(Layer layer, std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                       std::span<const std::uint8_t> color);
    void commitPortMultiColor();

    std::atomic<bool> pendingCommit{false}; ///< Colors of the ports are not stored yet.
    std::mutex frameMutex;                  ///< Guards `frame`.
    Report frame; ///< The last colors of slot 2. Deliberate: without a head before the first slot 0.
};

class PYRUX_TINT final : public LitHost<HostObject<TINT_HUB, PYRUX_TINT_Base>> {
public:
    using LitHost::LitHost;

    _error setEffectParameter(std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                              const std::uint8_t* rgb) override
    {
        return FORWARD(setEffectParameter(mode, speed, brightness, rgb));
    }
    _error getEffectParameter(std::uint8_t* mode, std::uint8_t* speed, std::uint8_t* brightness,
                              std::uint8_t* rgb) override
    {
        return FORWARD(getEffectParameter(mode, speed, brightness, rgb));
    }
    _error getEffectStandardMode(std::uint8_t* mode) override { return FORWARD(getEffectStandardMode(mode)); }
    _error setPortMultiColor(const TintMultiColor* colors) override
    {
        return FORWARD(setPortMultiColor(colors));
    }
    _error getPortMultiColor(TintMultiColor* colors) override { return FORWARD(getPortMultiColor(colors)); }
    _error setEffectMultilayer(const TintMultilayer* effect) override
    {
        return FORWARD(setEffectMultilayer(effect));
    }
};

} // namespace pyrux
