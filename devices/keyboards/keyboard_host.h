#pragma once

#include "devices/host_object.h"
#include "devices/keyboards/keyboard.h"

#include <cstdint>
#include <vector>

namespace pyrux {

/// The host operations that all keyboards of the family have. What only some have is put around it, part by
/// part; the slot order is that of the interface.
template <class Device, class Interface>
class KeyboardHost : public HostObject<Device, Interface> {
public:
    using HostObject<Device, Interface>::HostObject;

    _error changeProfileId(std::uint8_t id) override { return FORWARD(profiles.change(id)); }
    _error getCurrProfileId(std::uint8_t* id) override { return FORWARD(profiles.getCurrent(id)); }
    _error resetProfile(std::uint8_t scope) override { return FORWARD(profiles.reset(scope)); }
    _error resetPartial(std::uint8_t part) override { return FORWARD(profiles.resetPartial(part)); }
    _error startRecordMacro() override { return FORWARD(startRecordMacro()); }
    _error stopRecordMacro() override { return FORWARD(stopRecordMacro()); }
    _error setMacro(MacroRecord* record) override { return FORWARD(macros.set(record)); }
    _error getMacro(MacroRecord* record) override { return FORWARD(macros.get(record)); }
    _error clearMacro(std::uint8_t index) override { return FORWARD(macros.clear(index)); }
    _error registerNotify(typename Device::HostCallback callback) override
    {
        return FORWARD(registerNotify(callback));
    }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
    _error saveConfig() override { return FORWARD(effects.save()); }

protected:
    ~KeyboardHost() = default;
};

/// With lights that a host drives.
template <class Host>
class DirectLightHost : public Host {
public:
    using Host::Host;

    _error setLightingInit() override { return FORWARD(lights->init()); }
    _error setLightingUninit() override { return FORWARD(lights->uninit()); }
    _error setLightingPortColor(const std::uint8_t* rgb) override
    {
        return FORWARD_QUIET(lights->paint(rgb));
    }
    _error setSyncLightingData(const std::vector<DirectKeyColor>& list) override
    {
        return FORWARD_QUIET(lights->paintKeys(list));
    }
    _error setLightingTurnOff() override { return FORWARD(lights->turnOff()); }

protected:
    ~DirectLightHost() = default;
};

/// With actions of single keys.
template <class Host>
class KeyMapHost : public Host {
public:
    using Host::Host;

    _error setKeyMapping(std::uint32_t count, const KeyMapEntry* entries) override
    {
        return FORWARD(keyMap.set(count, entries));
    }

protected:
    ~KeyMapHost() = default;
};

/// With the actions of all keys in one table.
template <class Host>
class KeyMapTableHost : public Host {
public:
    using Host::Host;

    _error setKeyMappingAll(const KeyMapTable* table) override { return FORWARD(keyMap.setAll(table)); }
    _error getKeyMappingAll(KeyMapTable* table) override { return FORWARD(keyMap.getAll(table)); }

protected:
    ~KeyMapTableHost() = default;
};

/// With a list of all macros.
template <class Host>
class MacroListHost : public Host {
public:
    using Host::Host;

    _error getMacroAll(MacroList* list) override { return FORWARD(macros.getAll(list)); }

protected:
    ~MacroListHost() = default;
};

/// With an effect memory.
template <class Host>
class EffectHost : public Host {
public:
    using Host::Host;

    _error setEffectMode(std::uint8_t id) override { return FORWARD(effects.setMode(id)); }
    _error getEffectMode(std::uint8_t* id) override { return FORWARD(effects.getMode(id)); }
    _error setGeneralEffect(const EffectRecord* effect) override
    {
        return FORWARD(effects.setGeneral(effect));
    }
    _error getGeneralEffect(std::uint8_t id, EffectRecord* effect) override
    {
        return FORWARD(effects.getGeneral(id, effect));
    }
    _error getGeneralEffectAll(EffectRecord* all) override { return FORWARD(effects.getGeneralAll(all)); }
    _error setCustomEffect(EffectRecord* effect, const std::uint8_t* matrix) override
    {
        return FORWARD(effects.setCustom(effect, matrix));
    }
    _error getCustomEffect(EffectRecord* effect, std::uint8_t* matrix) override
    {
        return FORWARD(effects.getCustom(effect, matrix));
    }
    _error setMultilayerEffect(const EffectRecord* layers) override
    {
        return FORWARD(effects.setMultilayer(layers));
    }
    _error getMultilayerEffect(EffectRecord* layers) override
    {
        return FORWARD(effects.getMultilayer(layers));
    }
    _error setMultizoneEffect(const EffectRecord* zones, const std::uint8_t* zoneMatrix) override
    {
        return FORWARD(effects.setMultizone(zones, zoneMatrix));
    }
    _error getMultizoneEffect(EffectRecord* zones, std::uint8_t* zoneMatrix) override
    {
        return FORWARD(effects.getMultizone(zones, zoneMatrix));
    }

protected:
    ~EffectHost() = default;
};

/// With a status effect.
template <class Host>
class StatusHost : public Host {
public:
    using Host::Host;

    _error setSystemStatusEffect(const SystemStatusEffect* params) override
    {
        return FORWARD(status->set(params));
    }
    _error registerSystemStatusNotify(SystemStatusCallback callback) override
    {
        return FORWARD(status->registerNotify(callback));
    }
    _error unRegisterSystemStatusNotify() override { return FORWARD(status->unRegisterNotify()); }

protected:
    ~StatusHost() = default;
};

/// With all of that: QW210, QW220.
template <class Device, class Interface>
using FullKeyboardHost = DirectLightHost<
    KeyMapTableHost<KeyMapHost<MacroListHost<EffectHost<StatusHost<KeyboardHost<Device, Interface>>>>>>>;

} // namespace pyrux
