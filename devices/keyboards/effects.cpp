#include "devices/keyboards/effects.h"

#include "core/log.h"
#include "devices/keyboards/keyboard_commands.h"

#include <algorithm>
#include <span>

namespace pyrux {

namespace {

namespace cmd {                         // numbers are report bytes; a reply counts from 0
constexpr Report getEffect{0x52, 0x28}; // reply 4: effect
} // namespace cmd

} // namespace

Effects::Effects(DeviceLink& link, const ModelRow& model, const EffectLayout& layout, ProfileState& state,
                 StatusEffect* status)
    : link(link), model(model), layout(layout), state(state), status(status), memory(link, layout),
      copy(layout)
{
}

void Effects::load()
{
    const std::lock_guard lock(mutex);
    readCopy();
    state.setEffect(readMode());
}

/// Does work on effects that are those of the device.
template <class Work>
_error Effects::fresh(Work work)
{
    const std::lock_guard lock(mutex);
    if (const _error failure = reload())
        return failure;
    return work();
}

_error Effects::reload()
{
    if (!state.reloadNeeded.exchange(false))
        return E_OK;
    const EffectMemory::Loaded loaded = readCopy();
    if (!loaded.complete) {
        state.reloadNeeded = true;
        return loaded.result;
    }
    state.setEffect(readMode());
    return E_OK; // deliberate: also with records that cannot be read
}

EffectMemory::Loaded Effects::readCopy()
{
    const EffectMemory::Loaded loaded = memory.load(copy);
    if (loaded.complete && addMissingEffects(layout, copy))
        log(model.logCategory, "RAIN effect not found");
    return loaded;
}

std::uint8_t Effects::readMode()
{
    keys::set(link, keys::editOn);
    Reply reply;
    if (link.get(cmd::getEffect, reply) || !reply.begins({0x52, 0x28}) || reply[4] == EFFECT_PREVIEW)
        return state.effect();
    return reply[4];
}

_error Effects::select(std::uint8_t id)
{
    if (status && id == layout.custom)
        status->giveWay();
    keys::set(link, keys::editOn);
    if (status && id == layout.systemStatus)
        status->beginAgain();
    const _error result = keys::set(link, keys::setEffect.at(5, id));
    if (id != EFFECT_PREVIEW)
        state.setEffect(id); // deliberate: also when the device has not answered
    return result;
}

_error Effects::setMode(std::uint8_t id)
{
    return fresh([&] { return select(id); });
}

_error Effects::getMode(std::uint8_t* id)
{
    if (!id)
        return E_INVALID_GET;
    return fresh([&] {
        *id = readMode();
        return E_OK;
    });
}

/// Shows an effect; the current one from now on.
_error Effects::preview(std::uint8_t effect, const EffectData& data)
{
    const _error result = memory.preview(effect, data);
    if (!result)
        state.setEffect(effect);
    return result;
}

_error Effects::setGeneral(const EffectRecord* effect)
{
    if (!effect)
        return E_INVALID_SET;
    return fresh([&] {
        const EffectRecord wanted = *effect;
        if (!layout.isGeneral(wanted.effectId))
            return E_INVALID_SET;
        const EffectData data{.records = {&wanted, 1}, .customMatrix = {}, .zoneMatrix = {}};
        const _error result = preview(wanted.effectId, data);
        if (!result)
            copy.slots[wanted.effectId] = wanted;
        return result;
    });
}

_error Effects::getGeneral(std::uint8_t id, EffectRecord* effect)
{
    if (!effect)
        return E_INVALID_GET;
    return fresh([&] {
        if (!layout.isGeneral(id))
            return E_INVALID_GET;
        *effect = copy.slots[id];
        return E_OK;
    });
}

_error Effects::getGeneralAll(EffectRecord* all)
{
    if (!all)
        return E_INVALID_GET;
    return fresh([&] {
        std::ranges::copy(std::span(copy.slots).first(layout.multilayer), all);
        return E_OK;
    });
}

_error Effects::setCustom(EffectRecord* effect, const std::uint8_t* matrix)
{
    if (!effect || !matrix)
        return E_INVALID_SET;
    return fresh([&] {
        const std::span colors(matrix, layout.matrixBytes());
        effect->effectId = layout.custom; // deliberate: in the caller's record
        const EffectRecord wanted = *effect;
        const EffectData data{.records = {&wanted, 1}, .customMatrix = colors, .zoneMatrix = {}};
        const _error result = preview(layout.custom, data);
        if (!result) {
            copy.slots[layout.custom] = wanted;
            copy.customMatrix.assign(colors.begin(), colors.end());
        }
        return result;
    });
}

_error Effects::getCustom(EffectRecord* effect, std::uint8_t* matrix)
{
    if (!effect || !matrix)
        return E_INVALID_GET;
    return fresh([&] {
        *effect = copy.slots[layout.custom];
        std::ranges::copy(copy.customMatrix, matrix);
        return E_OK;
    });
}

_error Effects::setMultilayer(const EffectRecord* layers)
{
    if (!layers)
        return E_INVALID_SET;
    return fresh([&] {
        const std::span wanted(layers, layerCount);
        const EffectData data{.records = wanted, .customMatrix = copy.customMatrix, .zoneMatrix = {}};
        const _error result = preview(layout.multilayer, data);
        if (!result)
            std::ranges::copy(wanted, copy.multilayer.begin());
        return result;
    });
}

_error Effects::getMultilayer(EffectRecord* layers)
{
    if (!layers)
        return E_INVALID_GET;
    return fresh([&] {
        std::ranges::copy(copy.multilayer, layers);
        return E_OK;
    });
}

_error Effects::setMultizone(const EffectRecord* zones, const std::uint8_t* zoneMatrix)
{
    if (!zones || !zoneMatrix)
        return E_INVALID_SET;
    return fresh([&] {
        const std::span wanted(zones, zoneCount);
        const std::span matrix(zoneMatrix, copy.zoneMatrix.size());
        const EffectData data{.records = wanted, .customMatrix = copy.customMatrix, .zoneMatrix = matrix};
        const _error result = preview(layout.multizone, data);
        if (!result) {
            std::ranges::copy(wanted, copy.multizone.begin());
            copy.zoneMatrix.assign(matrix.begin(), matrix.end());
        }
        return result;
    });
}

_error Effects::getMultizone(EffectRecord* zones, std::uint8_t* zoneMatrix)
{
    if (!zones || !zoneMatrix)
        return E_INVALID_GET;
    return fresh([&] {
        std::ranges::copy(copy.multizone, zones);
        std::ranges::copy(copy.zoneMatrix, zoneMatrix);
        return E_OK;
    });
}

_error Effects::save()
{
    return fresh([&] {
        memory.store(copy); // deliberate: what else there is to keep is kept without it too
        select(state.effect());
        keys::set(link, keys::serviceOn);
        const _error result = keys::set(link, keys::commit);
        keys::endEdit(link);
        return result;
    });
}

_error Effects::showAgain()
{
    const std::lock_guard lock(mutex);
    const std::uint8_t effect = state.effect();
    return memory.preview(effect, cachedEffect(layout, copy, effect));
}

} // namespace pyrux
