#include "devices/keyboards/status_effect.h"

#include "core/state.h"
#include "devices/keyboards/keyboard_commands.h"
#include "services/tw_service.h"

#include <algorithm>
#include <cstddef>

namespace pyrux {

namespace {

namespace cmd {                                       // numbers are report bytes
constexpr Report frame{0x56, 0x42, 0x00, 0x00, 0x02}; // 6: count, 7: first LED, 9: colors
/// The program of the effect: one record that leaves the lights to a host.
constexpr Report program{0x56, 0x81, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                         0x01, 0x00, 0x00, 0x00, 0xBB, 0x0B, 0x55, 0x55};
constexpr Report image{0x56, 0x83, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x04, 0xF0, 0x00, 0xC1};
} // namespace cmd

constexpr std::uint32_t otherType = 2; // the first that is none
constexpr std::size_t colorBytes = 3;

} // namespace

StatusEffect::StatusEffect(DeviceLink& link, const StatusRow& row, std::uint8_t effect, ProfileState& state)
    : link(link), row(row), effect(effect), state(state),
      painter(
          row.chart, [this] { return shown(); },
          [this](std::span<const std::uint8_t> colors) { show(colors); })
{
}

_error StatusEffect::set(const SystemStatusEffect* params)
{
    return params ? begin(*params) : E_INVALID_SET;
}

void StatusEffect::beginAgain()
{
    begin({type, companion});
}

void StatusEffect::giveWay()
{
    if (row.customEnds)
        begin({otherType, 0});
}

_error StatusEffect::begin(const SystemStatusEffect& params)
{
    const bool other = params.statusEffectType >= otherType;
    if (other && row.otherTypes == OtherStatusTypes::refused)
        return E_INVALID_SET;
    if (!backgroundMode)
        askService(params.statusEffectType);
    else if (const _error failure = prepareFrames())
        return failure;
    if (other) {
        state.setEffect(EFFECT_PREVIEW);
        return E_OK;
    }
    type = params.statusEffectType;
    companion = params.companion;
    state.setEffect(effect);
    return E_OK;
}

/// Puts the lights under a host's control.
_error StatusEffect::prepareFrames()
{
    if (keys::set(link, cmd::program) || keys::set(link, cmd::image))
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    keys::set(link, keys::showPreview);
    return E_OK;
}

/// Hands the effect over to the resident service. What it answers, or whether it is there, does not matter.
void StatusEffect::askService(std::uint32_t wanted)
{
    TW_SERVICE().sendToHostService(
        deviceCommand(row.serviceName, "setSystemStatusEffect", {{"type", wanted}}));
}

_error StatusEffect::registerNotify(SystemStatusCallback callback)
{
    if (!callback)
        return E_INVALID_SET;
    notify.set(callback);
    return E_OK;
}

_error StatusEffect::unRegisterNotify()
{
    notify.set(nullptr);
    return E_OK;
}

std::optional<std::uint32_t> StatusEffect::shown() const
{
    if (state.effect() != effect)
        return std::nullopt;
    return type;
}

/// In background mode the keyboard shows a frame, otherwise the host may.
void StatusEffect::show(std::span<const std::uint8_t> frame)
{
    if (backgroundMode)
        paint(frame);
    else
        notify.call(frame.data());
}

/// Does not wait for replies.
void StatusEffect::paint(std::span<const std::uint8_t> frame)
{
    const StatusChart& chart = row.chart;
    for (std::size_t first = 0; first < chart.ledsSent; first += reportLeds) {
        const std::size_t count = std::min<std::size_t>(reportLeds, chart.ledsSent - first);
        const bool last = first + count == chart.ledsSent;
        const auto said = last && chart.lastReportSays ? *chart.lastReportSays : std::uint8_t(count);
        const std::size_t from = std::min(first * colorBytes, frame.size());
        const auto colors = frame.subspan(from, std::min(count * colorBytes, frame.size() - from));
        const Report report = cmd::frame.at(6, said).at(7, std::uint8_t(first)).at(9, colors);
        if (link.send(report) == E_NOT_OPEN)
            return;
    }
}

} // namespace pyrux
