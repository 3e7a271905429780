// The macro memory: twenty places, each with a key, a name and up to 198 events.

#include "devices/keyboards/keyboard.h"
#include "devices/keyboards/keyboard_commands.h"

#include <algorithm>
#include <optional>
#include <span>

namespace pyrux {

namespace {

namespace cmd {                         // numbers are report bytes; a reply counts from 0
constexpr Report setPlace{0x51, 0x18};  // 3: macro, 5 and 6: key field
constexpr Report setName{0x51, 0x19};   // 3: macro, 5 to 20: name
constexpr Report getPlace{0x52, 0x18};  // 3: macro; reply 4 and 5: key field
constexpr Report getName{0x52, 0x19};   // 3: macro; reply 4 to 19: name
constexpr Report setEvents{0x53, 0x00}; // 2: 1 behind the first block, 3: count, 5: events
constexpr Report getEvents{0x53, 0x10}; // 2: 0x11 behind the first block, 3: count; reply 4: events
} // namespace cmd

constexpr std::uint8_t macros = 20;
constexpr std::uint8_t allMacros = 0xFF;
constexpr std::uint8_t emptyPlace = 3; // trigger mode
constexpr std::uint8_t mostEvents = 198;
constexpr std::size_t eventsPerBlock = 15;
constexpr std::size_t eventsLastBlock = 5;
constexpr std::size_t eventsInFullBlocks = 195;
constexpr std::size_t bytesPerEvent = 4;
constexpr std::uint8_t endKind = 0xFC;   // second byte of the end mark
constexpr std::uint8_t wheelKind = 0x9E; // second byte of a wheel event
constexpr MacroEvent endMark{.code = 0, .kind = 3, .delay = 0xFFFF};

/// The key field of a macro's header: low byte of the key; its bits 8 and 9 and the trigger mode.
constexpr std::array<std::uint8_t, 3> modeBases{0x3C, 0x5C, 0x7C};
constexpr std::array<std::uint8_t, 2> emptyField{0xFF, 0x3F};

std::array<std::uint8_t, 2> keyField(const MacroRecord& record)
{
    if (record.triggerMode == emptyPlace)
        return emptyField;
    return {std::uint8_t(record.boundKey),
            std::uint8_t((record.boundKey >> 8 & 0x03) + modeBases[record.triggerMode])};
}

bool isEmptyField(std::uint8_t a, std::uint8_t b)
{
    return a == 0xFF && (b == 0x3F || b == 0xFF);
}

std::uint8_t triggerModeOf(std::uint8_t b)
{
    const int mode = b >> 4;
    return mode == 5 ? 1 : mode == 7 ? 2 : 0;
}

/// An event's four bytes in the macro memory.
std::array<std::uint8_t, bytesPerEvent> encodeEvent(const MacroEvent& event)
{
    const auto delay = std::uint16_t(event.delay * 2); // deliberate: the top bit is lost
    const auto delayLow = std::uint8_t(delay);
    const auto delayHigh = std::uint8_t(delay >> 8);
    if (event.code == MACRO_WHEEL_UP || event.code == MACRO_WHEEL_DOWN)
        return {std::uint8_t(event.code == MACRO_WHEEL_UP ? 0x01 : 0xFF), wheelKind, delayLow, delayHigh};
    const std::uint8_t kind = event.kind == 0 ? 0x5C : event.kind == 1 ? 0x3C : endKind;
    return {std::uint8_t(event.code), std::uint8_t((event.code >> 8) + kind), delayLow, delayHigh};
}

MacroEvent decodeEvent(const Reply& reply, std::size_t from)
{
    const std::uint8_t first = reply[from];
    const std::uint8_t second = reply[from + 1];
    const auto delay = std::uint16_t(reply.u16(from + 2) / 2);
    if (second == wheelKind && (first == 0x01 || first == 0xFF))
        return {.code = first == 0x01 ? MACRO_WHEEL_UP : MACRO_WHEEL_DOWN, .kind = 2, .delay = delay};
    return {.code = std::uint16_t(first | (second & 0x03) << 8),
            .kind = std::uint8_t(second >> 5 == 1 ? 1 : 0),
            .delay = delay};
}

/// The reports that carry a macro's events. Deliberate: behind full blocks there is one of no events.
std::vector<Report> eventReports(std::span<const MacroEvent> events)
{
    std::vector<Report> reports;
    const std::size_t blocks = events.size() / eventsPerBlock + 1;
    for (std::size_t block = 0; block < blocks; ++block) {
        const auto part = events.subspan(block * eventsPerBlock)
                              .first(std::min(eventsPerBlock, events.size() - block * eventsPerBlock));
        Report report = cmd::setEvents.at(2, block ? 1 : 0).at(3, std::uint8_t(part.size()));
        for (std::size_t i = 0; i < part.size(); ++i)
            report = report.at(5 + i * bytesPerEvent, encodeEvent(part[i]));
        reports.push_back(report);
    }
    return reports;
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
    if (!record || record->index >= macros || record->eventCount > mostEvents ||
        record->triggerMode > emptyPlace)
        return E_INVALID_SET;
    set(keys::editOn);
    set(cmd::setPlace.at(3, record->index).at(5, keyField(*record)));
    if (record->triggerMode == emptyPlace)
        return E_OK;
    std::array<std::uint8_t, sizeof record->name> name{};
    std::ranges::transform(record->name, name.begin(), [](char c) { return std::uint8_t(c); });
    set(cmd::setName.at(3, record->index).at(5, name), numberedMatch);
    record->events[record->eventCount] = endMark;
    for (const Report& report : eventReports({record->events, record->eventCount + std::size_t{1}}))
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
    if (index >= macros)
        return E_INVALID_GET;
    set(mode);
    Reply place;
    if (const _error failure = get(cmd::getPlace.at(3, index), place, numberedMatch))
        return failure;
    MacroRecord found = record;
    if (place.begins({0x52, 0x18, index})) {
        if (isEmptyField(place[4], place[5])) {
            record.triggerMode = emptyPlace;
            record.boundKey = 0;
            std::ranges::fill(record.name, '\0');
            return E_OK;
        }
        found.boundKey = std::uint16_t(place[4] | (place[5] & 0x03) << 8);
        found.triggerMode = triggerModeOf(place[5]);
        Reply name;
        if (get(cmd::getName.at(3, index), name, numberedMatch) || !name.begins({0x52, 0x19, index}))
            name = Reply();
        std::ranges::transform(name.part(4, sizeof found.name), found.name,
                               [](std::uint8_t byte) { return char(byte); });
    }
    set(cmd::setPlace.at(3, index).at(5, place.part(4, 3))); // opens the macro
    if (const _error failure = readMacroEvents(found))
        return failure;
    record = found;
    return E_OK;
}

_error Keyboard::readMacroEvents(MacroRecord& record)
{
    std::size_t count = 0;
    while (!closed) {
        const auto size = std::uint8_t(count < eventsInFullBlocks ? eventsPerBlock : eventsLastBlock);
        const std::uint8_t kind = count < eventsPerBlock ? 0x10 : 0x11;
        Reply block;
        if (get(cmd::getEvents.at(2, kind).at(3, size), block, numberedMatch))
            return E_INVALID_GET;
        if (!block.begins({0x53, kind, size}))
            continue; // the answer to another call
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t from = 4 + i * bytesPerEvent;
            if (block[from + 1] == endKind) {
                record.eventCount = std::uint8_t(count);
                return E_OK;
            }
            if (count == std::size(record.events))
                return E_INVALID_GET;
            record.events[count++] = decodeEvent(block, from);
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
    for (std::uint8_t index = 0; index < macros; ++index) {
        MacroRecord record{};
        record.index = index;
        if (readMacro(keys::macroOfListOn, record))
            break;
        if (record.triggerMode != emptyPlace)
            list->macros[list->count++] = record;
    }
    endEdit();
    return E_OK;
}

_error Keyboard::clearMacro(std::uint8_t index)
{
    if (index != allMacros)
        return index < macros ? deleteMacro(index) : E_OK;
    for (std::uint8_t each = 0; each < macros; ++each)
        if (const _error failure = deleteMacro(each))
            return failure;
    return E_OK;
}

_error Keyboard::deleteMacro(std::uint8_t index)
{
    MacroRecord record{};
    record.index = index;
    record.triggerMode = emptyPlace;
    return setMacro(&record);
}

} // namespace pyrux
