#pragma once

#include "devices/host_object.h"
#include "devices/lighting/lighting_controller.h"
#include "pyrux/glow_hub2.h"
#include "services/message_thread.h"
#include "services/service.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace pyrux {

/// Four addressable ports that all play one effect, one plain RGB strip, and a link to the computer's sound.
/// Operations are those of the host interface, whose header tells arguments, results and bytes.
class GLOW_HUB2 : public NotifyingController<GlowHub2Notify> {
public:
    static constexpr const ModelRow& model = modelRow("glow2");
    explicit GLOW_HUB2(const std::string& path);

    void sayGoodbye() override;
    bool endThreads(std::chrono::steady_clock::time_point deadline) override;

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setARGBEffectParameter(std::uint8_t port, GlowHub2Effect effect, std::uint8_t level);
    _error getARGBEffectParameter(std::uint8_t port, std::uint8_t* bytes);
    _error setARGBCustomize(std::uint8_t port, const std::uint8_t* rgb);
    _error getARGBCustomize(std::uint8_t port, std::uint8_t* rgb);
    _error setLayerSelect(std::uint8_t value);
    _error setRGBEffectParameter(std::uint8_t mode, std::uint8_t param, std::uint8_t speed);
    _error getRGBEffectParameter(std::uint8_t* mode, std::uint8_t* param, std::uint8_t* speed);
    _error setRGBCustomize(const std::uint8_t* rgb);
    _error getRGBCustomize(std::uint8_t* rgb);
    _error setRGBFollowParameter(std::uint8_t source, std::uint8_t flag, std::uint8_t speed);
    _error getRGBFollowParameter(std::uint8_t* source, std::uint8_t* flag, std::uint8_t* speed);

protected:
    Subscription audio;     // the blocks of its messages stay until the thread has ended
    MessageThread messages; // goes before the callback that it calls

private:
    void paintZone(std::uint32_t zone, std::uint8_t red, std::uint8_t green, std::uint8_t blue);
    void takeMessage(const platform::ThreadMessage& message);
    void startAudio();
    bool endAudio(std::chrono::milliseconds limit);
};

class PYRUX_GLOW2 final : public LitHost<HostObject<GLOW_HUB2, PYRUX_GLOW2_Base>> {
public:
    using LitHost::LitHost;

    _error setARGBEffectParameter(std::uint8_t port, GlowHub2Effect effect, std::uint8_t level) override
    {
        return FORWARD(setARGBEffectParameter(port, effect, level));
    }
    _error getARGBEffectParameter(std::uint8_t port, std::uint8_t* bytes) override
    {
        return FORWARD(getARGBEffectParameter(port, bytes));
    }
    _error setARGBCustomize(std::uint8_t port, const std::uint8_t* rgb) override
    {
        return FORWARD(setARGBCustomize(port, rgb));
    }
    _error getARGBCustomize(std::uint8_t port, std::uint8_t* rgb) override
    {
        return FORWARD(getARGBCustomize(port, rgb));
    }
    _error setLayerSelect(std::uint8_t value) override { return FORWARD(setLayerSelect(value)); }
    _error setRGBEffectParameter(std::uint8_t mode, std::uint8_t param, std::uint8_t speed) override
    {
        return FORWARD(setRGBEffectParameter(mode, param, speed));
    }
    _error getRGBEffectParameter(std::uint8_t* mode, std::uint8_t* param, std::uint8_t* speed) override
    {
        return FORWARD(getRGBEffectParameter(mode, param, speed));
    }
    _error setRGBCustomize(const std::uint8_t* rgb) override { return FORWARD(setRGBCustomize(rgb)); }
    _error getRGBCustomize(std::uint8_t* rgb) override { return FORWARD(getRGBCustomize(rgb)); }
    _error setRGBFollowParameter(std::uint8_t source, std::uint8_t flag, std::uint8_t speed) override
    {
        return FORWARD(setRGBFollowParameter(source, flag, speed));
    }
    _error getRGBFollowParameter(std::uint8_t* source, std::uint8_t* flag, std::uint8_t* speed) override
    {
        return FORWARD(getRGBFollowParameter(source, flag, speed));
    }
    _error registerNotify(GlowHub2NotifyCallback callback) override
    {
        return FORWARD(registerNotify(callback));
    }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
};

} // namespace pyrux
