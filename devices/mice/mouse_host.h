#pragma once

#include "devices/host_object.h"
#include "pyrux/mouse_records.h"
#include "pyrux/records.h"

#include <cstdint>

namespace pyrux {

/// The host operations that all wired mice have. The slot order is that of the interface.
template <class Device, class Interface>
class MouseHost : public HostObject<Device, Interface> {
public:
    using HostObject<Device, Interface>::HostObject;

    _error changeProfileId(std::uint8_t profile) override { return FORWARD(changeProfileId(profile)); }
    _error getCurrProfileId(std::uint8_t* profile) override { return FORWARD(getCurrProfileId(profile)); }
    _error resetProfile(std::uint8_t all) override { return FORWARD(resetProfile(all)); }
    _error resetPartial(std::uint8_t part) override { return FORWARD(resetPartial(part)); }
    _error setKeyMapping(std::uint8_t button, std::uint16_t code) override
    {
        return FORWARD(setKeyMapping(button, code));
    }
    _error setKeyMappingAll(const std::uint16_t* map) override { return FORWARD(setKeyMappingAll(map)); }
    _error getKeyMappingAll(std::uint16_t* map) override { return FORWARD(getKeyMappingAll(map)); }
    _error setMouseCombo(std::uint8_t on) override { return FORWARD(setMouseCombo(on)); }
    _error getMouseCombo(std::uint8_t* on) override { return FORWARD(getMouseCombo(on)); }
    _error startRecordMacro() override { return FORWARD(startRecordMacro()); }
    _error stopRecordMacro() override { return FORWARD(stopRecordMacro()); }
    _error setMacro(MouseMacroRecord* macro) override { return FORWARD(setMacro(macro)); }
    _error getMacro(MouseMacroRecord* macro) override { return FORWARD(getMacro(macro)); }
    _error clearMacro(std::uint8_t button) override { return FORWARD(clearMacro(button)); }
    _error setPerformance(const PerformanceRecord* record) override
    {
        return FORWARD(setPerformance(record));
    }
    _error getPerformance(PerformanceRecord* record) override { return FORWARD(getPerformance(record)); }
    _error changeDpiLevel(std::uint8_t level) override { return FORWARD(changeDpiLevel(level)); }
    _error startSurfaceLearning() override { return FORWARD(startSurfaceLearning()); }
    _error stopSurfaceLearning() override { return FORWARD(stopSurfaceLearning()); }
    _error getSurfaceLearningStatus(std::uint8_t* status) override
    {
        return FORWARD(getSurfaceLearningStatus(status));
    }
    _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b) override
    {
        return FORWARD(getSurfaceLearningResult(a, b));
    }
    _error registerNotify(NotifyCallback callback) override { return FORWARD(registerNotify(callback)); }
    _error unRegisterNotify() override { return FORWARD(unRegisterNotify()); }
    _error saveConfig() override { return FORWARD(saveConfig()); }

protected:
    ~MouseHost() = default;
};

} // namespace pyrux
