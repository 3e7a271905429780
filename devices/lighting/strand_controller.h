#pragma once

#include "devices/host_object.h"
#include "devices/lighting/lighting_controller.h"
#include "pyrux/strandhub.h"
#include "transport/notify.h"
#include "transport/operation_requests.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// What tells one strand controller from another.
struct StrandTraits {
    const ModelRow& model;
};

/// The protocol of the strand controllers. Deliberate: a callback is only kept, these devices tell nothing by
/// themselves. Operations are those of the host interface, whose header tells
/// arguments, results and bytes.
class StrandController : public NotifyingDevice<NotifyCallback, LightingController> {
public:
    StrandController(const std::string& path, const StrandTraits& traits);
    ~StrandController() override;

    _error setLightingInit();
    _error setLightingUninit();
    _error setLightingPortColor(const LightingPortColor* color);
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones);
    _error setLightingTurnOff();

    _error setEffectParameter(const StrandEffectParam* effect);
    _error getEffectParameter(StrandEffectParam* effect);
    _error getAnyEffectParameter(StrandEffectParam* effect);
    _error getAllEffectParameter(StrandEffectTable* table);
    _error setEffectCustomize(std::uint8_t zone, const StrandCustomBuffer* buffer);
    _error getEffectCustomize(std::uint8_t zone, StrandCustomBuffer* buffer);
    _error setGen1Size(const StrandGen1Size* size);
    _error getGen1Size(StrandGen1Size* size);
    _error getGen2Size(StrandGen2Size* size);
    _error remapGen2SubPort(const StrandRemap* remap);
    _error setUID(std::uint8_t port, const std::uint8_t* id);
    _error getUID(std::uint8_t* id);
    _error setIdentify(std::uint8_t port, std::uint8_t subPort);
    _error saveConfig();
    _error resetConfig(std::uint8_t value);
    _error resetData();
    _error getVersion(std::uint16_t* version);
    _error setARGBType(std::uint8_t port, std::uint8_t type);
    _error getARGBType(std::uint8_t port, std::uint8_t* type);
    _error refreshPortInfo(std::uint8_t port);
    _error setMultilayerMode(std::uint8_t value);
    _error getMultilayerMode(std::uint8_t* value);
    _error setEffectMode(StrandEffectParam* place, std::uint8_t effect);
    _error getEffectMode(StrandEffectParam* place, std::uint8_t* effect);
    _error setOverlayMode(std::uint8_t value);
    _error getOverlayMode(std::uint8_t* value);
    _error setOverlayEffectParameter(const StrandOverlayParam* overlay);
    _error getOverlayEffectParameter(StrandOverlayParam* overlay);
    _error getOverlayEffectParameterAll(StrandOverlayParam* overlays);

private:
    struct Zone;
    struct Colors;

    void paint(const Zone& zone, const Colors& colors);
    _error readEffect(std::string_view operation, const Report& command, StrandEffectParam& effect);
    _error writeEffect(std::string_view operation, const StrandEffectParam& effect);
    _error readByte(std::string_view operation, const Report& command, std::size_t place,
                    std::uint8_t* value);
    std::optional<std::size_t> customBytes(std::uint8_t zone) const;
    _error customFrame(std::string_view operation, const Report& frame, Reply& reply);

    static constexpr std::size_t customZones = 18;

    OperationRequests requests;
    std::array<std::atomic<std::uint16_t>, customZones> ledCounts; ///< By custom zone less one.
};

/// The host operations of the strand controllers.
template <class Device, class Interface>
class StrandHost : public LitHost<HostObject<Device, Interface>> {
public:
    using LitHost<HostObject<Device, Interface>>::LitHost;

    _error setEffectParameter(const StrandEffectParam* effect) override
    {
        return FORWARD(setEffectParameter(effect));
    }
    _error getEffectParameter(StrandEffectParam* effect) override
    {
        return FORWARD(getEffectParameter(effect));
    }
    _error getAnyEffectParameter(StrandEffectParam* effect) override
    {
        return FORWARD(getAnyEffectParameter(effect));
    }
    _error getAllEffectParameter(StrandEffectTable* table) override
    {
        return FORWARD(getAllEffectParameter(table));
    }
    _error setEffectCustomize(std::uint8_t zone, const StrandCustomBuffer* buffer) override
    {
        return FORWARD(setEffectCustomize(zone, buffer));
    }
    _error getEffectCustomize(std::uint8_t zone, StrandCustomBuffer* buffer) override
    {
        return FORWARD(getEffectCustomize(zone, buffer));
    }
    _error setGen1Size(const StrandGen1Size* size) override { return FORWARD(setGen1Size(size)); }
    _error getGen1Size(StrandGen1Size* size) override { return FORWARD(getGen1Size(size)); }
    _error getGen2Size(StrandGen2Size* size) override { return FORWARD(getGen2Size(size)); }
    _error remapGen2SubPort(const StrandRemap* remap) override { return FORWARD(remapGen2SubPort(remap)); }
    _error setUID(std::uint8_t port, const std::uint8_t* id) override { return FORWARD(setUID(port, id)); }
    _error getUID(std::uint8_t* id) override { return FORWARD(getUID(id)); }
    _error setIdentify(std::uint8_t port, std::uint8_t subPort) override
    {
        return FORWARD(setIdentify(port, subPort));
    }
    _error saveConfig() override { return FORWARD(saveConfig()); }
    _error resetConfig(std::uint8_t value) override { return FORWARD(resetConfig(value)); }
    _error resetData() override { return FORWARD(resetData()); }
    _error getVersion(std::uint16_t* version) override { return FORWARD(getVersion(version)); }
    _error setARGBType(std::uint8_t port, std::uint8_t type) override
    {
        return FORWARD(setARGBType(port, type));
    }
    _error getARGBType(std::uint8_t port, std::uint8_t* type) override
    {
        return FORWARD(getARGBType(port, type));
    }
    _error refreshPortInfo(std::uint8_t port) override { return FORWARD(refreshPortInfo(port)); }
    _error registerNotify(NotifyCallback callback) override { return FORWARD(registerNotify(callback)); }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
    _error setMultilayerMode(std::uint8_t value) override { return FORWARD(setMultilayerMode(value)); }
    _error getMultilayerMode(std::uint8_t* value) override { return FORWARD(getMultilayerMode(value)); }
    _error setEffectMode(StrandEffectParam* place, std::uint8_t effect) override
    {
        return FORWARD(setEffectMode(place, effect));
    }
    _error getEffectMode(StrandEffectParam* place, std::uint8_t* effect) override
    {
        return FORWARD(getEffectMode(place, effect));
    }
    _error setOverlayMode(std::uint8_t value) override { return FORWARD(setOverlayMode(value)); }
    _error getOverlayMode(std::uint8_t* value) override { return FORWARD(getOverlayMode(value)); }
    _error setOverlayEffectParameter(const StrandOverlayParam* overlay) override
    {
        return FORWARD(setOverlayEffectParameter(overlay));
    }
    _error getOverlayEffectParameter(StrandOverlayParam* overlay) override
    {
        return FORWARD(getOverlayEffectParameter(overlay));
    }
    _error getOverlayEffectParameterAll(StrandOverlayParam* overlays) override
    {
        return FORWARD(getOverlayEffectParameterAll(overlays));
    }

protected:
    ~StrandHost() = default;
};

} // namespace pyrux
