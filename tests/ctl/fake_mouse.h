#pragma once

#include "pyrux/rd210.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

/// An RD210 that writes down how it was called, and gives what a test has put in.
class FakeMouse final : public PYRUX_RD210_Base {
public:
    std::vector<std::string> calls;
    _error result = E_OK;
    std::uint8_t small[2] = {0x11, 0x22};
    std::uint16_t map[13] = {};
    MouseMacroRecord macro{};
    PerformanceRecord performance{};
    NotifyCallback callback = nullptr;
    std::function<void()> onListen = [] {};

    _error changeProfileId(std::uint8_t profile) override { return note("changeProfileId", {profile}); }
    _error getCurrProfileId(std::uint8_t* profile) override { return give("getCurrProfileId", profile); }
    _error resetProfile(std::uint8_t all) override { return note("resetProfile", {all}); }
    _error resetPartial(std::uint8_t part) override { return note("resetPartial", {part}); }
    _error setKeyMapping(std::uint8_t button, std::uint16_t code) override
    {
        return note("setKeyMapping", {button, code});
    }
    _error setKeyMappingAll(const std::uint16_t* codes) override
    {
        std::copy_n(codes, 13, map);
        return note("setKeyMappingAll", {});
    }
    _error getKeyMappingAll(std::uint16_t* codes) override
    {
        std::copy_n(map, 13, codes);
        return note("getKeyMappingAll", {});
    }
    _error setMouseCombo(std::uint8_t on) override { return note("setMouseCombo", {on}); }
    _error getMouseCombo(std::uint8_t* on) override { return give("getMouseCombo", on); }
    _error startRecordMacro() override { return note("startRecordMacro", {}); }
    _error stopRecordMacro() override { return note("stopRecordMacro", {}); }
    _error setMacro(MouseMacroRecord* record) override
    {
        macro = *record;
        return note("setMacro", {});
    }
    _error getMacro(MouseMacroRecord* record) override
    {
        const std::uint8_t button = record->button;
        *record = macro;
        record->button = button;
        return note("getMacro", {button});
    }
    _error clearMacro(std::uint8_t button) override { return note("clearMacro", {button}); }
    _error setPerformance(const PerformanceRecord* record) override
    {
        performance = *record;
        return note("setPerformance", {});
    }
    _error getPerformance(PerformanceRecord* record) override
    {
        *record = performance;
        return note("getPerformance", {});
    }
    _error changeDpiLevel(std::uint8_t level) override { return note("changeDpiLevel", {level}); }
    _error startSurfaceLearning() override { return note("startSurfaceLearning", {}); }
    _error stopSurfaceLearning() override { return note("stopSurfaceLearning", {}); }
    _error getSurfaceLearningStatus(std::uint8_t* status) override
    {
        return give("getSurfaceLearningStatus", status);
    }
    _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b) override
    {
        *b = small[1];
        return give("getSurfaceLearningResult", a);
    }
    _error registerNotify(NotifyCallback notify) override
    {
        callback = notify;
        onListen();
        return note("registerNotify", {});
    }
    _error unRegisterNotify() override
    {
        callback = nullptr;
        return note("unRegisterNotify", {});
    }
    _error saveConfig() override { return note("saveConfig", {}); }
    _error exit_device(std::uint8_t unplugged) override { return note("exit_device", {unplugged}); }

private:
    _error note(std::string text, const std::vector<int>& values)
    {
        for (const int value : values)
            text += " " + std::to_string(value);
        calls.push_back(std::move(text));
        return result;
    }
    _error give(const char* name, std::uint8_t* out)
    {
        *out = small[0];
        return note(name, {});
    }
};
