// The macro memory: twenty places, each with a key, a name and up to 198 events.

#include "devices/keyboards/keyboard.h"
#include "devices/keyboards/keyboard_commands.h"
#include "devices/macro_codec.h"

#include <algorithm>
#include <optional>
#include <span>

namespace pyrux {

namespace {

constexpr std::uint8_t places = 20;
constexpr std::uint8_t allMacros = 0xFF;

/// The place field of a macro: low byte of the key; its bits 8 and 9 and the play mode.
std::array<std::uint8_t, 2> placeField(const MacroRecord& record)
{
    if (record.triggerMode == macros::noMacro)
        return macros::emptyPlace;
    return {std::uint8_t(record.boundKey),
            macros::modeByte(record.triggerMode, std::uint8_t(record.boundKey >> 8 & 0x03))};
}

} // namespace

_error Keyboard::startRecordMacro()
{
    return set(keys::serviceOn);
}

_error Keyboard::stopRecordMacro()
{
    set(keys::editOn);
    // Recording disturbs the lights. Deliberate: what is shown anew is not read anew.
    const std::lock_guard lock(effectsLock);
    const std::uint8_t effect = activeEffect();
    return effectMemory.preview(effect, cachedEffect(layout.effects, effects, effect));
}

/// What the device answers does not matter here.
_error Keyboard::setMacro(MacroRecord* record)
{
    if (!record || record->index >= places || record->eventCount > macros::mostEvents ||
        record->triggerMode > macros::noMacro)
        return E_INVALID_SET;
    set(keys::editOn);
    set(macros::setPlace.at(3, record->index).at(5, placeField(*record)));
    if (record->triggerMode == macros::noMacro)
        return E_OK;
    set(macros::setName.at(3, record->index).at(5, bytesOf(record->name)), numberedMatch);
    record->events[record->eventCount] = macros::end<MacroEvent>;
    const auto events = std::span<const MacroEvent>(record->events).first(record->eventCount + 1U);
    // Deliberate: after full chunks there is one of no events.
    for (const Report& report : macros::eventReports(events, macros::Tail::emptyChunk))
        set(report);
    return E_OK;
}

_error Keyboard::getMacro(MacroRecord* record)
{
    return record ? readMacro(keys::editOn, *record) : E_INVALID_GET;
}

_error Keyboard::readMacro(const Report& mode, MacroRecord& record)
{
    const std::uint8_t index = record.index;
    if (index >= places)
        return E_INVALID_GET;
    set(mode);
    Reply place;
    if (const _error failure = get(macros::getPlace.at(3, index), place, numberedMatch))
        return failure;
    MacroRecord found = record;
    if (place.begins({0x52, 0x18, index})) {
        if (macros::isEmptyPlace(place)) {
            record.triggerMode = macros::noMacro;
            record.boundKey = 0;
            std::ranges::fill(record.name, '\0');
            return E_OK;
        }
        found.boundKey = std::uint16_t(place[4] | (place[5] & 0x03) << 8);
        found.triggerMode = macros::modeOf(place[5]);
        Reply name;
        if (get(macros::getName.at(3, index), name, numberedMatch) || !name.begins({0x52, 0x19, index}))
            name = Reply();
        std::ranges::copy(name.part(4, sizeof found.name), bytesOf(found.name).begin());
    }
    set(macros::setPlace.at(3, index).at(5, place.part(4, 3))); // opens the macro
    if (const _error failure = readMacroEvents(found))
        return failure;
    record = found;
    return E_OK;
}

_error Keyboard::readMacroEvents(MacroRecord& record)
{
    macros::Collector collector(std::size(record.events));
    while (!closed) {
        const Report command = collector.command();
        Reply chunk;
        if (get(command, chunk, macros::numberedMatch))
            return E_INVALID_GET;
        if (!chunk.begins({command[1], command[2], command[3]}))
            continue; // the answer to another call
        const macros::Collector::State state = collector.take(chunk);
        if (state == macros::Collector::State::overfull)
            return E_INVALID_GET;
        if (state == macros::Collector::State::complete) {
            collector.copyTo(record.events);
            record.eventCount = std::uint8_t(collector.events().size());
            return E_OK;
        }
    }
    return E_INVALID_GET;
}

_error Keyboard::getMacroAll(MacroList* list)
{
    if (!list)
        return E_INVALID_GET;
    set(keys::macroListOn);
    list->count = 0;
    for (std::uint8_t index = 0; index < places; ++index) {
        MacroRecord record{};
        record.index = index;
        if (readMacro(keys::macroOfListOn, record))
            break;
        if (record.triggerMode != macros::noMacro)
            list->macros[list->count++] = record;
    }
    endEdit();
    return E_OK;
}

_error Keyboard::clearMacro(std::uint8_t index)
{
    if (index != allMacros)
        return index < places ? deleteMacro(index) : E_OK;
    for (std::uint8_t each = 0; each < places; ++each)
        if (const _error failure = deleteMacro(each))
            return failure;
    return E_OK;
}

_error Keyboard::deleteMacro(std::uint8_t index)
{
    MacroRecord record{};
    record.index = index;
    record.triggerMode = macros::noMacro;
    return setMacro(&record);
}

} // namespace pyrux
