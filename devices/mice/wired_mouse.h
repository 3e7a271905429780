#pragma once

#include "core/models.h"
#include "devices/linked_device.h"
#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "pyrux/records.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pyrux {

namespace cmd { // the states of the device
inline constexpr Report configOff{0x41, 0x00};
inline constexpr Report serviceOn{0x41, 0x01}; // reset, save and macro recording work
inline constexpr Report configOn{0x41, 0x80};  // the device accepts configuration
} // namespace cmd

/// What the host is told of a change without a value.
template <std::uint32_t event>
NotifyRecord changed(const Reply&)
{
    return {.event = event, .value = 0};
}

/// `NotifyRecord::value` of the buttons of all wired mice, by button number; 0 behind the end.
inline constexpr std::array<std::uint8_t, 24> wiredKeyValues{0x1E, 0x20, 0x1F, 0x22, 0x21,
                                                             0x23, 0,    0,    0x09, 0x0A};

/// What tells one mouse of the family from another.
struct MouseTraits {
    const ModelRow& model;
    std::span<const Report> startUp; ///< Written at the start, without waiting for replies.
    std::span<const DeviceEvent<NotifyRecord>> events;
    std::uint32_t keyDownEvent, keyUpEvent;  ///< `NotifyRecord::event` of a button.
    std::span<const std::uint8_t> keyValues; ///< `NotifyRecord::value` by button number; 0 behind its end.
    std::atomic<bool>& shift;             ///< Whether button 1 is held: one flag per model, not per device.
    std::optional<std::int32_t> paceMs{}; ///< Of the queue for frames; none: there is none.
};

/// The protocol of the wired mice: every command waits for its reply. Operations are those of the host
/// interfaces, whose headers tell arguments, results and bytes.
///
/// A command's reply repeats its first two bytes, or as many as its call names, so that a reply that does not
/// begin as asked for shows as a missing one.
class WiredMouse : public NotifyingDevice<NotifyCallback> {
public:
    WiredMouse(const std::string& path, const MouseTraits& traits);
    ~WiredMouse() override;

    void sayGoodbye() override;

    _error changeProfileId(std::uint8_t profile);
    _error getCurrProfileId(std::uint8_t* profile);
    _error resetProfile(std::uint8_t all);
    _error resetPartial(std::uint8_t part);
    _error setKeyMapping(std::uint8_t button, std::uint16_t code);
    _error setKeyMappingAll(const std::uint16_t* map);
    _error getKeyMappingAll(std::uint16_t* map);
    _error setMouseCombo(std::uint8_t on);
    _error getMouseCombo(std::uint8_t* on);
    _error startRecordMacro();
    _error stopRecordMacro();
    _error setMacro(MouseMacroRecord* macro);
    _error getMacro(MouseMacroRecord* macro);
    _error clearMacro(std::uint8_t button);
    _error setPerformance(const PerformanceRecord* record);
    _error getPerformance(PerformanceRecord* record);
    _error changeDpiLevel(std::uint8_t level);
    _error startSurfaceLearning();
    _error stopSurfaceLearning();
    _error getSurfaceLearningStatus(std::uint8_t* status);
    _error getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b);
    _error saveConfig();

protected:
    _error get(const Report& command, Reply& reply, std::size_t matchLength = DeviceLink::plainMatch)
    {
        return link.get(command, reply, matchLength);
    }
    _error set(const Report& command, std::size_t matchLength = DeviceLink::plainMatch)
    {
        return link.set(command, matchLength);
    }

    /// `getMacro` of a button that exists, on a device that accepts configuration.
    _error readMacro(MouseMacroRecord& macro);

    const MouseTraits& traits;

private:
    /// Which of the wheel's two tilt directions act as steps.
    struct Wheel {
        bool a = true;
        bool b = true;
    };
    enum class MacroState { none, stepUp, stepDown, macro };
    enum class Step : std::uint8_t { up = 0x01, down = 0xFF };

    std::optional<Wheel> readWheel();
    std::optional<Reply> readBank();
    std::optional<Reply> readOrder();
    _error writeBank(std::uint8_t comboButton);
    _error writeButton(std::uint8_t button, std::uint16_t code);
    _error readButton(std::uint8_t button, std::uint16_t& code);
    _error writeStep(std::uint8_t button, Step step);
    _error removeMacro(std::uint8_t button);
    _error writeMapping(std::uint8_t button, std::uint16_t code);
    MacroState macroState(std::uint8_t button);
    _error writeMacroEvents(std::span<const MouseMacroEvent> events);
    _error readMacroEvents(MouseMacroRecord& macro);
    std::optional<Reply> readMacroChunk(const Report& command);

    void take(const Reply& reply);
    void takeKey(std::uint8_t button, std::uint8_t state);
};

} // namespace pyrux
