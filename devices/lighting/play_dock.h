#pragma once

#include "devices/host_object.h"
#include "devices/lighting/lighting_controller.h"
#include "pyrux/play_dock.h"
#include "transport/operation_requests.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// A desk dock: three zones and a bottom light. Every operation is a request whose reply is judged.
/// Operations are those of the host interface, whose header tells arguments, results and bytes.
class PLAY_DOCK : public NotifyingController<PlayDockNotify> {
public:
    static constexpr const ModelRow& model = modelRow("playdock");
    explicit PLAY_DOCK(const std::string& path);

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setEffectParameter(const PlayDockEffect* effect);
    _error getEffectParameter(PlayDockEffect* effect);
    _error getAnyEffectParameter(PlayDockEffect* effect);
    _error setEffectMode(std::uint8_t zone, std::uint8_t effect);
    _error getEffectMode(std::uint8_t zone, std::uint8_t* effect);
    _error setBottomEffectParameter(const std::uint8_t* rgb);
    _error getBottomEffectParameter(std::uint8_t* rgb);
    _error saveConfig();
    _error resetConfig(std::uint8_t value);
    _error resetData();
    _error getVersion(std::uint16_t* version);

private:
    _error EnterDeviceControl(std::string_view operation, bool on);
    _error readEffect(std::string_view operation, const Report& command, PlayDockEffect& effect);

    OperationRequests judged;
};

class PYRUX_PLAY_DOCK final : public LitHost<HostObject<PLAY_DOCK, PYRUX_PLAY_DOCK_Base>> {
public:
    using LitHost::LitHost;

    _error setEffectParameter(const PlayDockEffect* effect) override
    {
        return FORWARD(setEffectParameter(effect));
    }
    _error getEffectParameter(PlayDockEffect* effect) override { return FORWARD(getEffectParameter(effect)); }
    _error getAnyEffectParameter(PlayDockEffect* effect) override
    {
        return FORWARD(getAnyEffectParameter(effect));
    }
    _error setEffectMode(std::uint8_t zone, std::uint8_t effect) override
    {
        return FORWARD(setEffectMode(zone, effect));
    }
    _error getEffectMode(std::uint8_t zone, std::uint8_t* effect) override
    {
        return FORWARD(getEffectMode(zone, effect));
    }
    _error setBottomEffectParameter(const std::uint8_t* rgb) override
    {
        return FORWARD(setBottomEffectParameter(rgb));
    }
    _error getBottomEffectParameter(std::uint8_t* rgb) override
    {
        return FORWARD(getBottomEffectParameter(rgb));
    }
    _error saveConfig() override { return FORWARD(saveConfig()); }
    _error resetConfig(std::uint8_t value) override { return FORWARD(resetConfig(value)); }
    _error resetData() override { return FORWARD(resetData()); }
    _error getVersion(std::uint16_t* version) override { return FORWARD(getVersion(version)); }
    _error registerNotify(PlayDockNotifyCallback callback) override
    {
        return FORWARD(registerNotify(callback));
    }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
};

} // namespace pyrux
