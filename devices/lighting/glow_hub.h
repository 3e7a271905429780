#pragma once

#include "devices/host_object.h"
#include "devices/lighting/lighting_controller.h"
#include "pyrux/glow_hub.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace pyrux {

/// Four addressable ports and one plain RGB strip. Operations are those of the host interface, whose header
/// tells arguments, results and bytes.
class GLOW_HUB : public NotifyingController<ArgbEffectNotify> {
public:
    static constexpr const ModelRow& model = modelRow("glow_hub");
    static constexpr std::uint32_t portCount = 4;

    explicit GLOW_HUB(const std::string& path);

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setEffectParameter(ArgbEffectParam* record);
    _error getEffectParameter(ArgbEffectParam* record);
    _error setEffectCustomize(std::uint8_t port, const ArgbCustomBuffer* buffer);
    _error getEffectCustomize(std::uint8_t port, ArgbCustomBuffer* buffer);
    _error setRgbLightingEffectParameter(const ArgbEffectParam* record);
    _error getRgbLightingEffectParameter(ArgbEffectParam* record);
    _error setLEDSize(std::uint8_t port, std::uint8_t a, std::uint8_t b);
    _error getLEDSize(std::uint8_t port, std::uint8_t* a, std::uint8_t* b);
    _error setUID(const std::uint8_t* bytes);
    _error getUID(std::uint8_t* bytes);
    _error setIdentify(std::uint8_t value);
    _error saveConfig();
    _error resetConfig(std::uint8_t value);
    _error resetData();
    _error getVersion(std::uint16_t* version);
    _error setMultilayerMode(std::uint8_t value);
    _error getMultilayerMode(std::uint8_t* value);
    _error setEffectMode(std::uint8_t port, std::uint8_t mode);
    _error getEffectMode(std::uint8_t port, std::uint8_t* mode);
    _error setRgbEffectMode(std::uint8_t port, std::uint8_t mode);
    _error getRgbEffectMode(std::uint8_t port, std::uint8_t* mode);

private:
    static constexpr std::size_t framesPerPort = 3;
    static constexpr std::size_t ledPlaces = 62; ///< LEDs that the frames of a port have room for.

    /// Who drives the lights.
    struct Status {
        bool hostDrivesStrip = false;
        bool hostDrivesPorts = false;
    };

    /// What slots 2 and 3 make anew for each frame, in place.
    struct PortFrame {
        std::array<std::uint8_t, 3 * ledPlaces> colors{};
        std::array<Report, framesPerPort> frames{};
    };

    Status status();
    void follow();
    void endFollowing();
    void queuePort(std::uint32_t port);

    std::atomic<bool> followMode{false}; ///< The ports stand in mode 12, as far as this object knows.
    std::mutex framesMutex;              ///< Guards `portFrames`.
    std::array<PortFrame, portCount> portFrames;
};

class PYRUX_GLOW final : public LitHost<HostObject<GLOW_HUB, PYRUX_GLOW_Base>> {
public:
    using LitHost::LitHost;

    _error setEffectParameter(ArgbEffectParam* record) override
    {
        return FORWARD(setEffectParameter(record));
    }
    _error getEffectParameter(ArgbEffectParam* record) override
    {
        return FORWARD(getEffectParameter(record));
    }
    _error setEffectCustomize(std::uint8_t port, const ArgbCustomBuffer* buffer) override
    {
        return FORWARD(setEffectCustomize(port, buffer));
    }
    _error getEffectCustomize(std::uint8_t port, ArgbCustomBuffer* buffer) override
    {
        return FORWARD(getEffectCustomize(port, buffer));
    }
    _error setRgbLightingEffectParameter(const ArgbEffectParam* record) override
    {
        return FORWARD(setRgbLightingEffectParameter(record));
    }
    _error getRgbLightingEffectParameter(ArgbEffectParam* record) override
    {
        return FORWARD(getRgbLightingEffectParameter(record));
    }
    _error setLEDSize(std::uint8_t port, std::uint8_t a, std::uint8_t b) override
    {
        return FORWARD(setLEDSize(port, a, b));
    }
    _error getLEDSize(std::uint8_t port, std::uint8_t* a, std::uint8_t* b) override
    {
        return FORWARD(getLEDSize(port, a, b));
    }
    _error setUID(const std::uint8_t* bytes) override { return FORWARD(setUID(bytes)); }
    _error getUID(std::uint8_t* bytes) override { return FORWARD(getUID(bytes)); }
    _error setIdentify(std::uint8_t value) override { return FORWARD(setIdentify(value)); }
    _error saveConfig() override { return FORWARD(saveConfig()); }
    _error resetConfig(std::uint8_t value) override { return FORWARD(resetConfig(value)); }
    _error resetData() override { return FORWARD(resetData()); }
    _error getVersion(std::uint16_t* version) override { return FORWARD(getVersion(version)); }
    _error setMultilayerMode(std::uint8_t value) override { return FORWARD(setMultilayerMode(value)); }
    _error getMultilayerMode(std::uint8_t* value) override { return FORWARD(getMultilayerMode(value)); }
    _error registerNotify(GlowHubNotifyCallback callback) override
    {
        return FORWARD(registerNotify(callback));
    }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
    _error setEffectMode(std::uint8_t port, std::uint8_t mode) override
    {
        return FORWARD(setEffectMode(port, mode));
    }
    _error getEffectMode(std::uint8_t port, std::uint8_t* mode) override
    {
        return FORWARD(getEffectMode(port, mode));
    }
    _error setRgbEffectMode(std::uint8_t port, std::uint8_t mode) override
    {
        return FORWARD(setRgbEffectMode(port, mode));
    }
    _error getRgbEffectMode(std::uint8_t port, std::uint8_t* mode) override
    {
        return FORWARD(getRgbEffectMode(port, mode));
    }
};

} // namespace pyrux
