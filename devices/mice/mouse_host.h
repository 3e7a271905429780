#pragma once

#include "devices/host_object.h"
#include "pyrux/mouse_records.h"
#include "pyrux/records.h"

#include <cstdint>

namespace pyrux {

// The host operations of the mice, by the part of the protocol object that does them. A model's host object
// is a chain of those that the model has; the slot order is that of its interface.

template <class Host>
class MouseProfilesHost : public Host {
public:
    using Host::Host;

    _error changeProfileId(std::uint8_t profile) override
    {
        return FORWARD(profiles.changeProfileId(profile));
    }
    _error getCurrProfileId(std::uint8_t* profile) override
    {
        return FORWARD(profiles.getCurrProfileId(profile));
    }
    _error resetProfile(std::uint8_t all) override { return FORWARD(profiles.resetProfile(all)); }
    _error saveConfig() override { return FORWARD(profiles.saveConfig()); }

protected:
    ~MouseProfilesHost() = default;
};

template <class Host>
class MouseResetHost : public Host {
public:
    using Host::Host;

    _error resetPartial(std::uint8_t part) override { return FORWARD(reset.resetPartial(part)); }

protected:
    ~MouseResetHost() = default;
};

template <class Host>
class ButtonMapHost : public Host {
public:
    using Host::Host;

    _error setKeyMapping(std::uint8_t button, std::uint16_t code) override
    {
        return FORWARD(buttonMap.setKeyMapping(button, code));
    }
    _error setKeyMappingAll(const std::uint16_t* map) override
    {
        return FORWARD(buttonMap.setKeyMappingAll(map));
    }
    _error getKeyMappingAll(std::uint16_t* map) override { return FORWARD(buttonMap.getKeyMappingAll(map)); }

protected:
    ~ButtonMapHost() = default;
};

template <class Host>
class MouseComboHost : public Host {
public:
    using Host::Host;

    _error setMouseCombo(std::uint8_t on) override { return FORWARD(combo.setMouseCombo(on)); }
    _error getMouseCombo(std::uint8_t* on) override { return FORWARD(combo.getMouseCombo(on)); }

protected:
    ~MouseComboHost() = default;
};

template <class Host>
class MouseMacrosHost : public Host {
public:
    using Host::Host;

    _error startRecordMacro() override { return FORWARD(macros.startRecordMacro()); }
    _error stopRecordMacro() override { return FORWARD(macros.stopRecordMacro()); }
    _error setMacro(MouseMacroRecord* macro) override { return FORWARD(macros.setMacro(macro)); }
    _error getMacro(MouseMacroRecord* macro) override { return FORWARD(macros.getMacro(macro)); }
    _error clearMacro(std::uint8_t button) override { return FORWARD(macros.clearMacro(button)); }

protected:
    ~MouseMacrosHost() = default;
};

/// The models that also read all macros at once.
template <class Host>
class MouseMacroListHost : public Host {
public:
    using Host::Host;

    _error getMacroAll(MouseMacroList* list) override { return FORWARD(macros.getMacroAll(list)); }

protected:
    ~MouseMacroListHost() = default;
};

template <class Host>
class MousePerformanceHost : public Host {
public:
    using Host::Host;

    _error setPerformance(const PerformanceRecord* record) override
    {
        return FORWARD(performance.setPerformance(record));
    }
    _error getPerformance(PerformanceRecord* record) override
    {
        return FORWARD(performance.getPerformance(record));
    }
    _error changeDpiLevel(std::uint8_t level) override { return FORWARD(performance.changeDpiLevel(level)); }

protected:
    ~MousePerformanceHost() = default;
};

template <class Host>
class SurfaceLearningHost : public Host {
public:
    using Host::Host;

    _error startSurfaceLearning() override { return FORWARD(learning.startSurfaceLearning()); }
    _error stopSurfaceLearning() override { return FORWARD(learning.stopSurfaceLearning()); }
    _error getSurfaceLearningStatus(std::uint8_t* status) override
    {
        return FORWARD(learning.getSurfaceLearningStatus(status));
    }
    _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b) override
    {
        return FORWARD(learning.getSurfaceLearningResult(a, b));
    }

protected:
    ~SurfaceLearningHost() = default;
};

template <class Host>
class MouseNotifyHost : public Host {
public:
    using Host::Host;

    _error registerNotify(NotifyCallback callback) override { return FORWARD(registerNotify(callback)); }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }

protected:
    ~MouseNotifyHost() = default;
};

template <class Host>
class MouseEffectsHost : public Host {
public:
    using Host::Host;

    _error setEffectMode(std::uint8_t mode) override { return FORWARD(effects.setEffectMode(mode)); }
    _error getEffectMode(std::uint8_t* mode) override { return FORWARD(effects.getEffectMode(mode)); }
    _error setGeneralEffect(const MouseEffectRecord* effect) override
    {
        return FORWARD(effects.setGeneralEffect(effect));
    }
    _error getGeneralEffect(MouseEffectRecord* effect) override
    {
        return FORWARD(effects.getGeneralEffect(effect));
    }
    _error setCustomEffect(const std::uint8_t* colors) override
    {
        return FORWARD(effects.setCustomEffect(colors));
    }
    _error getCustomEffect(std::uint8_t* colors) override { return FORWARD(effects.getCustomEffect(colors)); }

protected:
    ~MouseEffectsHost() = default;
};

/// What all wired mice have.
template <class Device, class Interface>
using WiredMouseChain = MouseProfilesHost<MouseResetHost<ButtonMapHost<MouseComboHost<MouseMacrosHost<
    MousePerformanceHost<SurfaceLearningHost<MouseNotifyHost<HostObject<Device, Interface>>>>>>>>>;

template <class Device, class Interface>
class MouseHost : public WiredMouseChain<Device, Interface> {
public:
    using WiredMouseChain<Device, Interface>::WiredMouseChain;

protected:
    ~MouseHost() = default;
};

} // namespace pyrux
