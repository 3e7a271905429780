#include "devices/keyboards/macro_memory.h"

#include "devices/keyboards/keyboard_commands.h"
#include "devices/macro_codec.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
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

/// What is not looked at stays as it is.
void makeEmpty(MacroRecord& record)
{
    record.triggerMode = macros::noMacro;
    record.boundKey = 0;
    std::ranges::fill(record.name, '\0');
}

} // namespace

/// What the device answers does not matter here.
_error MacroMemory::set(MacroRecord* record)
{
    if (!record || record->index >= places || record->eventCount > macros::mostEvents ||
        record->triggerMode > macros::noMacro)
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    keys::set(link, macros::setPlace.at(3, record->index).at(5, placeField(*record)));
    if (record->triggerMode == macros::noMacro)
        return E_OK;
    keys::set(link, macros::setName.at(3, record->index).at(5, bytesOf(record->name)), macros::numberedMatch);
    record->events[record->eventCount] = macros::end<MacroEvent>;
    const auto events = std::span<const MacroEvent>(record->events).first(record->eventCount + 1U);
    // Deliberate: after full chunks there is one of no events.
    for (const Report& report : macros::eventReports(events, macros::Tail::emptyChunk))
        keys::set(link, report);
    return E_OK;
}

_error MacroMemory::get(MacroRecord* record)
{
    return record ? read(keys::editOn, *record) : E_INVALID_GET;
}

_error MacroMemory::read(const Report& mode, MacroRecord& record)
{
    const std::uint8_t index = record.index;
    if (index >= places)
        return E_INVALID_GET;
    keys::set(link, mode);
    Reply place;
    if (const _error failure = link.get(macros::getPlace.at(3, index), place, macros::numberedMatch))
        return failure;
    MacroRecord found = record;
    if (place.begins({0x52, 0x18, index})) {
        if (macros::isEmptyPlace(place)) {
            makeEmpty(record);
            return E_OK;
        }
        found.boundKey = std::uint16_t(place[4] | (place[5] & 0x03) << 8);
        found.triggerMode = macros::modeOf(place[5]);
        readName(found);
    }
    keys::set(link, macros::setPlace.at(3, index).at(5, place.part(4, 3))); // opens the macro
    if (const _error failure = readEvents(found))
        return failure;
    record = found;
    return E_OK;
}

/// A name that the device does not tell is empty.
void MacroMemory::readName(MacroRecord& record)
{
    Reply name;
    if (link.get(macros::getName.at(3, record.index), name, macros::numberedMatch) ||
        !name.begins({0x52, 0x19, record.index}))
        name = Reply();
    std::ranges::copy(name.part(4, sizeof record.name), bytesOf(record.name).begin());
}

_error MacroMemory::readEvents(MacroRecord& record)
{
    macros::Collector collector(std::size(record.events));
    while (!closed) {
        const Report command = collector.command();
        Reply chunk;
        if (link.get(command, chunk, macros::numberedMatch))
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

_error MacroMemory::getAll(MacroList* list)
{
    if (!list)
        return E_INVALID_GET;
    keys::set(link, keys::macroListOn);
    list->count = 0;
    for (std::uint8_t index = 0; index < places; ++index) {
        MacroRecord record{};
        record.index = index;
        if (read(keys::macroOfListOn, record))
            break;
        if (record.triggerMode != macros::noMacro)
            list->macros[list->count++] = record;
    }
    keys::endEdit(link);
    return E_OK;
}

_error MacroMemory::clear(std::uint8_t index)
{
    if (index != allMacros)
        return index < places ? remove(index) : E_OK;
    for (std::uint8_t each = 0; each < places; ++each)
        if (const _error failure = remove(each))
            return failure;
    return E_OK;
}

_error MacroMemory::remove(std::uint8_t index)
{
    MacroRecord record{};
    record.index = index;
    record.triggerMode = macros::noMacro;
    return set(&record);
}

} // namespace pyrux
