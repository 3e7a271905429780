#pragma once

#include "devices/host_object.h"
#include "devices/keyboards/keyboard.h"

#include <cstdint>
#include <vector>

namespace pyrux {

/// The host operations of the keyboards with direct lighting and a status effect. The slot order is that of
/// the interface.
template <class Device, class Interface>
class KeyboardHost : public HostObject<Device, Interface> {
public:
    using HostObject<Device, Interface>::HostObject;

    _error setLightingInit() override { return FORWARD(setLightingInit()); }
    _error setLightingUninit() override { return FORWARD(setLightingUninit()); }
    _error setLightingPortColor(const std::uint8_t* rgb) override
    {
        return FORWARD_QUIET(setLightingPortColor(rgb));
    }
    _error setSyncLightingData(const std::vector<DirectKeyColor>& list) override
    {
        return FORWARD_QUIET(setSyncLightingData(list));
    }
    _error setLightingTurnOff() override { return FORWARD(setLightingTurnOff()); }
    _error changeProfileId(std::uint8_t id) override { return FORWARD(changeProfileId(id)); }
    _error getCurrProfileId(std::uint8_t* id) override { return FORWARD(getCurrProfileId(id)); }
    _error resetProfile(std::uint8_t scope) override { return FORWARD(resetProfile(scope)); }
    _error resetPartial(std::uint8_t part) override { return FORWARD(resetPartial(part)); }
    _error setKeyMapping(std::uint32_t count, const KeyMapEntry* entries) override
    {
        return FORWARD(setKeyMapping(count, entries));
    }
    _error setKeyMappingAll(const KeyMapTable* table) override { return FORWARD(setKeyMappingAll(table)); }
    _error getKeyMappingAll(KeyMapTable* table) override { return FORWARD(getKeyMappingAll(table)); }
    _error startRecordMacro() override { return FORWARD(startRecordMacro()); }
    _error stopRecordMacro() override { return FORWARD(stopRecordMacro()); }
    _error setMacro(MacroRecord* record) override { return FORWARD(setMacro(record)); }
    _error getMacro(MacroRecord* record) override { return FORWARD(getMacro(record)); }
    _error getMacroAll(MacroList* list) override { return FORWARD(getMacroAll(list)); }
    _error clearMacro(std::uint8_t index) override { return FORWARD(clearMacro(index)); }
    _error setEffectMode(std::uint8_t id) override { return FORWARD(setEffectMode(id)); }
    _error getEffectMode(std::uint8_t* id) override { return FORWARD(getEffectMode(id)); }
    _error setGeneralEffect(const EffectRecord* effect) override { return FORWARD(setGeneralEffect(effect)); }
    _error getGeneralEffect(std::uint8_t id, EffectRecord* effect) override
    {
        return FORWARD(getGeneralEffect(id, effect));
    }
    _error getGeneralEffectAll(EffectRecord* effects) override
    {
        return FORWARD(getGeneralEffectAll(effects));
    }
    _error setCustomEffect(EffectRecord* effect, const std::uint8_t* matrix) override
    {
        return FORWARD(setCustomEffect(effect, matrix));
    }
    _error getCustomEffect(EffectRecord* effect, std::uint8_t* matrix) override
    {
        return FORWARD(getCustomEffect(effect, matrix));
    }
    _error setMultilayerEffect(const EffectRecord* effects) override
    {
        return FORWARD(setMultilayerEffect(effects));
    }
    _error getMultilayerEffect(EffectRecord* effects) override
    {
        return FORWARD(getMultilayerEffect(effects));
    }
    _error setMultizoneEffect(const EffectRecord* effects, const std::uint8_t* zoneMatrix) override
    {
        return FORWARD(setMultizoneEffect(effects, zoneMatrix));
    }
    _error getMultizoneEffect(EffectRecord* effects, std::uint8_t* zoneMatrix) override
    {
        return FORWARD(getMultizoneEffect(effects, zoneMatrix));
    }
    _error setSystemStatusEffect(const SystemStatusEffect* params) override
    {
        return FORWARD(setSystemStatusEffect(params));
    }
    _error registerSystemStatusNotify(SystemStatusCallback callback) override
    {
        return FORWARD(registerSystemStatusNotify(callback));
    }
    _error unRegisterSystemStatusNotify() override { return FORWARD(unRegisterSystemStatusNotify()); }
    _error registerNotify(NotifyCallback callback) override { return FORWARD(registerNotify(callback)); }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
    _error saveConfig() override { return FORWARD(saveConfig()); }

protected:
    ~KeyboardHost() = default;
};

} // namespace pyrux
