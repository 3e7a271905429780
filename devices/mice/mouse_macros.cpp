#include "devices/mice/mouse_macros.h"

#include "devices/macro_codec.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace pyrux {

namespace {

namespace cmd {                                             // those of the macro memory stand with its codec
constexpr Report readStep = macros::readEvents.at(3, 0x02); // reply 4 to 6
}

constexpr int chunkTries = 3;          // of one chunk
constexpr std::uint8_t stepMode = 1;   // play mode of a step
constexpr std::uint8_t stepEvents = 2; // the step and the end
constexpr std::uint8_t stepPause = 64; // delay of a step
constexpr std::uint8_t storedPause = 0x80;

static_assert(macros::wheelUp == KEY_STEP_UP && macros::wheelDown == KEY_STEP_DOWN);

/// Opens the place of a button for what follows.
Report opened(std::uint8_t button, std::uint8_t mode)
{
    return macros::setPlace.at(3, button)
        .at(5, mouse::address(button))
        .at(6, macros::modeByte(mode, mouse::page(button)));
}

} // namespace

_error MouseMacros::startRecordMacro()
{
    modes.serve();
    return wheel.write(true, true);
}

_error MouseMacros::stopRecordMacro()
{
    return modes.configure();
}

_error MouseMacros::setMacro(MouseMacroRecord* macro)
{
    if (!macro || macro->button >= mouse::buttons || macro->mode > macros::noMacro ||
        macro->count > macros::mostEvents)
        return E_INVALID_SET;
    const bool clearing = macro->mode == macros::noMacro;
    modes.configure();
    if (readyWheel(macro->button, clearing))
        return E_INVALID_SET;
    const _error result = clearing ? remove(macro->button) : write(*macro);
    return result ? E_INVALID_SET : E_OK;
}

_error MouseMacros::getMacro(MouseMacroRecord* macro)
{
    if (!macro || macro->button >= mouse::buttons)
        return E_INVALID_GET;
    modes.configure();
    return read(*macro);
}

_error MouseMacros::getMacroAll(MouseMacroList* list)
{
    if (!list)
        return E_INVALID_GET;
    list->count = 0;
    modes.configure();
    for (std::uint8_t button = 0; button < std::size(list->macros); ++button) {
        MouseMacroRecord macro{};
        macro.button = button;
        if (const _error result = read(macro))
            return result;
        if (macro.mode != macros::noMacro)
            list->macros[list->count++] = macro;
    }
    return E_OK;
}

_error MouseMacros::clearMacro(std::uint8_t button)
{
    MouseMacroRecord macro{};
    macro.button = button;
    macro.mode = macros::noMacro;
    return setMacro(&macro);
}

std::optional<std::uint16_t> MouseMacros::codeOf(std::uint8_t button)
{
    Reply place;
    if (link.get(macros::getPlace.at(3, button), place, macros::numberedMatch) || macros::isEmptyPlace(place))
        return std::nullopt;
    Reply events;
    if (link.get(cmd::readStep, events, macros::numberedMatch))
        return std::nullopt;
    const macros::Step step = macros::decode(events, 4);
    const bool turnsWheel = step.code == KEY_STEP_UP || step.code == KEY_STEP_DOWN;
    return turnsWheel && events[6] == storedPause ? step.code : std::uint16_t{KEY_MACRO};
}

_error MouseMacros::writeStep(std::uint8_t button, std::uint16_t code)
{
    if (const _error result = link.set(opened(button, stepMode), macros::numberedMatch))
        return result;
    // Deliberate: the end has no delay, other than in a macro.
    return link.set(macros::writeEvents.at(3, stepEvents)
                        .at(5, macros::encode({.code = code, .delay = stepPause}))
                        .at(10, macros::endKind));
}

_error MouseMacros::remove(std::uint8_t button)
{
    return link.set(macros::setPlace.at(3, button).at(5, macros::emptyPlace));
}

/// Deliberate: the wheel is read for every button.
_error MouseMacros::readyWheel(std::uint8_t button, bool step)
{
    WheelTilt::State state;
    if (const _error result = wheel.read(state))
        return result;
    return mouse::isTilt(button) ? wheel.writeOne(button, step, state) : E_OK;
}

_error MouseMacros::write(MouseMacroRecord& macro)
{
    const std::uint8_t button = macro.button;
    if (const _error result = link.set(opened(button, macro.mode)))
        return result;
    if (const _error result =
            link.set(macros::setName.at(3, button).at(5, bytesOf(macro.name)), macros::numberedMatch))
        return result;
    macro.events[macro.count] = macros::end<MouseMacroEvent>;
    const auto events = std::span<const MouseMacroEvent>(macro.events).first(macro.count + 1U);
    for (const Report& chunk : macros::eventReports(events, macros::Tail::none))
        if (const _error result = link.set(chunk))
            return result;
    return E_OK;
}

_error MouseMacros::read(MouseMacroRecord& macro)
{
    Reply place;
    if (const _error result = link.get(macros::getPlace.at(3, macro.button), place, macros::numberedMatch))
        return result;
    if (!macros::isEmptyPlace(place))
        return readInto(macro, place);
    macro.mode = macros::noMacro;
    std::ranges::fill(macro.name, '\0');
    macro.count = 0;
    return E_OK;
}

/// Reads the macro of a place, which its reply has told. Nothing changes unless all of it comes.
_error MouseMacros::readInto(MouseMacroRecord& macro, const Reply& place)
{
    const std::uint8_t button = macro.button;
    Reply name;
    if (const _error result = link.get(macros::getName.at(3, button), name, macros::numberedMatch))
        return result;
    const Report cursor =
        macros::setPlace.at(3, button).at(5, mouse::address(button)).at(6, place[5]).at(7, place[6]);
    Reply pointed;
    if (const _error result = link.get(cursor, pointed))
        return result;
    if (const _error result = readEvents(macro))
        return result;
    macro.mode = macros::modeOf(place[5]);
    std::ranges::copy(name.part(4, sizeof macro.name), bytesOf(macro.name).begin());
    return E_OK;
}

_error MouseMacros::readEvents(MouseMacroRecord& macro)
{
    macros::Collector collector(macros::mostEvents);
    auto state = macros::Collector::State::reading;
    while (state == macros::Collector::State::reading) {
        const std::optional<Reply> chunk = readChunk(collector.command());
        if (!chunk)
            return E_INVALID_GET;
        state = collector.take(*chunk);
    }
    if (state == macros::Collector::State::overfull)
        return E_INVALID_GET;
    collector.copyTo(macro.events);
    macro.count = std::uint8_t(collector.events().size());
    return E_OK;
}

/// Asks for a chunk until it comes, but a silent device only so many times.
std::optional<Reply> MouseMacros::readChunk(const Report& command)
{
    for (int tries = 0; tries < chunkTries && !closed && !link.aborted(); ++tries) {
        Reply reply;
        if (!link.get(command, reply, macros::numberedMatch))
            return reply;
    }
    return std::nullopt;
}

} // namespace pyrux
