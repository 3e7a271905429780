// The effects: the copy that hosts see, the device's memory behind it, and the status effect.

#include "core/log.h"
#include "core/state.h"
#include "devices/keyboards/keyboard.h"
#include "devices/keyboards/keyboard_commands.h"
#include "services/tw_service.h"

#include <algorithm>
#include <span>
#include <string>

namespace pyrux {

namespace {

namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report commit{0x50, 0x55};
constexpr Report getEffect{0x52, 0x28};                     // reply 4: effect
constexpr Report statusFrame{0x56, 0x42, 0x00, 0x00, 0x02}; // 6: count, 7: first LED, 9: colors
/// The program of the status effect: one record that leaves the lights to a host.
constexpr Report statusProgram{0x56, 0x81, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                               0x01, 0x00, 0x00, 0x00, 0xBB, 0x0B, 0x55, 0x55};
constexpr Report statusImage{0x56, 0x83, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x04, 0xF0, 0x00, 0xC1};
} // namespace cmd

constexpr std::uint8_t otherStatusType = 2; // the first that is none

} // namespace

/// Does work on effects that are those of the device.
template <class Work>
_error Keyboard::withEffects(Work work)
{
    const std::lock_guard lock(effectsLock);
    if (const _error failure = reload())
        return failure;
    return work();
}

_error Keyboard::reload()
{
    if (!reloadNeeded.exchange(false))
        return E_OK;
    const EffectMemory::Loaded loaded = loadEffects();
    if (!loaded.complete) {
        reloadNeeded = true;
        return loaded.result;
    }
    setActiveEffect(readEffectMode());
    return E_OK; // deliberate: also with records that cannot be read
}

EffectMemory::Loaded Keyboard::loadEffects()
{
    const EffectMemory::Loaded loaded = effectMemory.load(effects);
    if (loaded.complete && addMissingEffects(layout.effects, effects))
        log(layout.model.logCategory, "RAIN effect not found");
    return loaded;
}

std::uint8_t Keyboard::activeEffect() const
{
    const std::uint8_t profile = currentProfile;
    return profile < profiles ? activeEffects[profile].load() : std::uint8_t{0};
}

/// A profile that the device alone knows of has no place here.
void Keyboard::setActiveEffect(std::uint8_t effect)
{
    const std::uint8_t profile = currentProfile;
    if (profile < profiles)
        activeEffects[profile] = effect;
}

std::uint8_t Keyboard::readEffectMode()
{
    set(keys::editOn);
    Reply reply;
    if (get(cmd::getEffect, reply) || !reply.begins({0x52, 0x28}) || reply[4] == EFFECT_PREVIEW)
        return activeEffect();
    return reply[4];
}

_error Keyboard::selectEffect(std::uint8_t id)
{
    if (layout.customEndsStatus && id == layout.effects.custom)
        beginStatusEffect({otherStatusType, 0});
    set(keys::editOn);
    if (id == layout.effects.systemStatus)
        beginStatusEffect({statusEffectType, statusCompanion});
    const _error result = set(keys::setEffect.at(5, id));
    if (id != EFFECT_PREVIEW)
        setActiveEffect(id); // deliberate: also when the device has not answered
    return result;
}

_error Keyboard::setEffectMode(std::uint8_t id)
{
    return withEffects([&] { return selectEffect(id); });
}

_error Keyboard::getEffectMode(std::uint8_t* id)
{
    if (!id)
        return E_INVALID_GET;
    return withEffects([&] {
        *id = readEffectMode();
        return E_OK;
    });
}

/// Shows an effect; the current one from now on.
_error Keyboard::preview(std::uint8_t effect, const EffectData& data)
{
    const _error result = effectMemory.preview(effect, data);
    if (!result)
        setActiveEffect(effect);
    return result;
}

_error Keyboard::setGeneralEffect(const EffectRecord* effect)
{
    if (!effect)
        return E_INVALID_SET;
    return withEffects([&] {
        const EffectRecord wanted = *effect;
        if (!layout.effects.isGeneral(wanted.effectId))
            return E_INVALID_SET;
        const EffectData data{.records = {&wanted, 1}, .customMatrix = {}, .zoneMatrix = {}};
        const _error result = preview(wanted.effectId, data);
        if (!result)
            effects.slots[wanted.effectId] = wanted;
        return result;
    });
}

_error Keyboard::getGeneralEffect(std::uint8_t id, EffectRecord* effect)
{
    if (!effect)
        return E_INVALID_GET;
    return withEffects([&] {
        if (!layout.effects.isGeneral(id))
            return E_INVALID_GET;
        *effect = effects.slots[id];
        return E_OK;
    });
}

_error Keyboard::getGeneralEffectAll(EffectRecord* all)
{
    if (!all)
        return E_INVALID_GET;
    return withEffects([&] {
        std::ranges::copy(std::span(effects.slots).first(layout.effects.multilayer), all);
        return E_OK;
    });
}

_error Keyboard::setCustomEffect(EffectRecord* effect, const std::uint8_t* matrix)
{
    if (!effect || !matrix)
        return E_INVALID_SET;
    return withEffects([&] {
        const std::uint8_t custom = layout.effects.custom;
        const std::span colors(matrix, layout.effects.matrixBytes());
        effect->effectId = custom; // deliberate: in the caller's record
        const EffectRecord wanted = *effect;
        const _error result =
            preview(custom, {.records = {&wanted, 1}, .customMatrix = colors, .zoneMatrix = {}});
        if (!result) {
            effects.slots[custom] = wanted;
            effects.customMatrix.assign(colors.begin(), colors.end());
        }
        return result;
    });
}

_error Keyboard::getCustomEffect(EffectRecord* effect, std::uint8_t* matrix)
{
    if (!effect || !matrix)
        return E_INVALID_GET;
    return withEffects([&] {
        *effect = effects.slots[layout.effects.custom];
        std::ranges::copy(effects.customMatrix, matrix);
        return E_OK;
    });
}

_error Keyboard::setMultilayerEffect(const EffectRecord* layers)
{
    if (!layers)
        return E_INVALID_SET;
    return withEffects([&] {
        const std::span wanted(layers, layerCount);
        const EffectData data{.records = wanted, .customMatrix = effects.customMatrix, .zoneMatrix = {}};
        const _error result = preview(layout.effects.multilayer, data);
        if (!result)
            std::ranges::copy(wanted, effects.multilayer.begin());
        return result;
    });
}

_error Keyboard::getMultilayerEffect(EffectRecord* layers)
{
    if (!layers)
        return E_INVALID_GET;
    return withEffects([&] {
        std::ranges::copy(effects.multilayer, layers);
        return E_OK;
    });
}

_error Keyboard::setMultizoneEffect(const EffectRecord* zones, const std::uint8_t* zoneMatrix)
{
    if (!zones || !zoneMatrix)
        return E_INVALID_SET;
    return withEffects([&] {
        const std::span wanted(zones, zoneCount);
        const std::span matrix(zoneMatrix, effects.zoneMatrix.size());
        const EffectData data{.records = wanted, .customMatrix = effects.customMatrix, .zoneMatrix = matrix};
        const _error result = preview(layout.effects.multizone, data);
        if (!result) {
            std::ranges::copy(wanted, effects.multizone.begin());
            effects.zoneMatrix.assign(matrix.begin(), matrix.end());
        }
        return result;
    });
}

_error Keyboard::getMultizoneEffect(EffectRecord* zones, std::uint8_t* zoneMatrix)
{
    if (!zones || !zoneMatrix)
        return E_INVALID_GET;
    return withEffects([&] {
        std::ranges::copy(effects.multizone, zones);
        std::ranges::copy(effects.zoneMatrix, zoneMatrix);
        return E_OK;
    });
}

_error Keyboard::saveConfig()
{
    return withEffects([&] {
        effectMemory.store(effects); // deliberate: what else there is to keep is kept without it too
        selectEffect(activeEffect());
        set(keys::serviceOn);
        const _error result = set(cmd::commit);
        endEdit();
        return result;
    });
}

_error Keyboard::setSystemStatusEffect(const SystemStatusEffect* params)
{
    return params ? beginStatusEffect(*params) : E_INVALID_SET;
}

_error Keyboard::beginStatusEffect(const SystemStatusEffect& params)
{
    const bool other = params.statusEffectType >= otherStatusType;
    if (other && layout.otherStatusTypes == OtherStatusTypes::refused)
        return E_INVALID_SET;
    if (!backgroundMode)
        askService(params.statusEffectType);
    else if (const _error failure = prepareStatusFrames())
        return failure;
    if (other) {
        setActiveEffect(EFFECT_PREVIEW);
        return E_OK;
    }
    statusEffectType = params.statusEffectType;
    statusCompanion = params.companion;
    setActiveEffect(*layout.effects.systemStatus);
    return E_OK;
}

/// Puts the lights under a host's control.
_error Keyboard::prepareStatusFrames()
{
    if (set(cmd::statusProgram) || set(cmd::statusImage))
        return E_INVALID_SET;
    set(keys::editOn);
    set(keys::showPreview);
    return E_OK;
}

/// Hands the effect over to the resident service. What it answers, or whether it is there, does not matter.
void Keyboard::askService(std::uint32_t type)
{
    TW_SERVICE().sendToHostService(
        deviceCommand(layout.serviceName, "setSystemStatusEffect", {{"type", type}}));
}

_error Keyboard::registerSystemStatusNotify(SystemStatusCallback callback)
{
    if (!callback)
        return E_INVALID_SET;
    statusNotify.set(callback);
    return E_OK;
}

_error Keyboard::unRegisterSystemStatusNotify()
{
    statusNotify.set(nullptr);
    return E_OK;
}

std::optional<std::uint32_t> Keyboard::statusShown() const
{
    if (activeEffect() != layout.effects.systemStatus)
        return std::nullopt;
    return statusEffectType;
}

/// In background mode the keyboard shows a frame, otherwise the host may. Without a wait for replies.
void Keyboard::showStatus(std::span<const std::uint8_t> frame)
{
    if (!backgroundMode) {
        statusNotify.call(frame.data());
        return;
    }
    const StatusChart& chart = layout.chart;
    for (std::size_t first = 0; first < chart.ledsSent; first += reportLeds) {
        const std::size_t count = std::min<std::size_t>(reportLeds, chart.ledsSent - first);
        const bool last = first + count == chart.ledsSent;
        const auto said = last && chart.lastReportSays ? *chart.lastReportSays : std::uint8_t(count);
        const std::size_t from = std::min(first * 3, frame.size());
        const auto colors = frame.subspan(from, std::min(count * 3, frame.size() - from));
        if (send(cmd::statusFrame.at(6, said).at(7, std::uint8_t(first)).at(9, colors)) == E_NOT_OPEN)
            return;
    }
}

} // namespace pyrux
