#include "devices/mice/wired_mouse.h"

#include "core/log.h"
#include "devices/mice/system_pointer.h"

#include <algorithm>
#include <ranges>
#include <string>

namespace pyrux {

namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report hello{0x43, 0x00, 0x00, 0x00, 0x01};
constexpr Report resetProfile{0x50, 0x10}; // 5: 0xFF for all profiles
constexpr Report save{0x50, 0x55};
constexpr Report setProfile{0x51, 0x00};         // 5: profile
constexpr Report setBank{0x51, 0x10};            // 13: combo button, 17: settingBank
constexpr Report setMacroPlace{0x51, 0x18};      // 3: button, 5 and 6: address and page with play mode
constexpr Report setMacroName{0x51, 0x19};       // 3: button, 5 to 44: name
constexpr Report setButton{0x51, 0x20};          // 3: address, 4: page, 5: code
constexpr Report setWheel{0x51, 0x22};           // 5 and 6: the two tilt directions
constexpr Report setPerformance{0x51, 0x40};     // 5: place of the current level, and so on
constexpr Report resetPart{0x51, 0x98};          // 3: mask
constexpr Report setOrder{0x51, 0x9B};           // 5 to 11: order table
constexpr Report setF0{0x51, 0xF0};              // 5: settingF0
constexpr Report getProfile{0x52, 0x00};         // reply 4: profile
constexpr Report getBank{0x52, 0x10};            // reply 12: combo button, 16: settingBank
constexpr Report getMacroPlace{0x52, 0x18};      // 3: button; reply 4 to 6
constexpr Report getMacroName{0x52, 0x19};       // 3: button; reply 4 to 43
constexpr Report getButton{0x52, 0x20};          // 3: address, 4: page; reply 4: code
constexpr Report getComboCode{0x52, 0x20, 0xD8}; // reply 4: code that the combo button has otherwise
constexpr Report getWheel{0x52, 0x22};           // reply 4 and 5
constexpr Report getPerformance{0x52, 0x40};
constexpr Report getOrder{0x52, 0x9B};       // reply 4 to 10
constexpr Report getF0{0x52, 0xF0};          // reply 4: settingF0
constexpr Report writeEvents{0x53, 0x00};    // 2: 1 behind the first chunk, 3: count, 5: events
constexpr Report readEvents{0x53, 0x10};     // 2: 0x11 behind the first chunk, 3: count
constexpr Report readStep{0x53, 0x10, 0x02}; // reply 4 to 6
constexpr Report learningState{0x80, 0x00};  // reply 4: state
constexpr Report learningStop{0x80, 0x01};
constexpr Report learningStart{0x80, 0x01, 0x00, 0x00, 0x01};
/// Deliberate: the whole report but for the command is 0xFF, the report id too.
constexpr Report clearOrder = Report::filled(0xFF).at(1, std::array<std::uint8_t, 4>{0x51, 0x9B, 0x00, 0x00});
} // namespace cmd

namespace {

constexpr std::uint8_t profiles = 5;
constexpr std::uint8_t buttons = 13;
constexpr std::uint8_t dpiLevels = 7;
constexpr std::uint8_t noCombo = 0xFF;   // bank: no button is the shift
constexpr std::uint8_t noOrder = 0xFF;   // first byte of the order table: there is none
constexpr std::uint8_t comboButton = 5;  // the button that `setMouseCombo` makes the shift
constexpr std::uint8_t tiltDown = 6;     // a tilt of the wheel that can act as a step down
constexpr std::uint8_t tiltUp = 7;       // the other one, a step up
constexpr std::uint8_t shiftKey = 1;     // number of the shift in key reports
constexpr std::uint16_t shiftValue = 32; // added to the values of the others while it is held
constexpr std::uint16_t noFunction = 0x00FF;
constexpr std::uint16_t disabled = 0x0181; // read as 0
constexpr std::uint8_t wheelOn = 0xC0;
constexpr std::uint8_t wheelOff = 0x10;
constexpr std::uint8_t wheelOffToo = 0x20;
constexpr std::uint8_t stepPage = 0x5C; // play mode of a one-step sequence
constexpr std::uint8_t stepKind = 0x9E; // second byte of a step in the macro memory
constexpr std::uint8_t endKind = 0xFC;  // second byte of the end of a macro
constexpr std::uint8_t defaultSurfaceA = 10;
constexpr std::uint8_t defaultSurfaceB = 16;
constexpr std::uint16_t singleDpiLimit = 16000; // levels above are stored halved
constexpr std::size_t eventsPerChunk = 15;
constexpr std::size_t eventsLastChunk = 5;
constexpr std::size_t eventsInFullChunks = 195;
constexpr std::size_t mostEvents = 198;
constexpr int chunkTries = 3; // of one chunk
constexpr std::size_t bytesPerEvent = 4;
constexpr MouseMacroEvent endEvent{.code = 0, .kind = 3, .delay = 0xFFFF};

/// How the device numbers button n: address and page.
constexpr std::uint8_t address(std::uint8_t button)
{
    return button == tiltDown ? 0xBE : button == tiltUp ? 0xBF : std::uint8_t(0xB0 + (button & 7));
}
constexpr std::uint8_t page(std::uint8_t button)
{
    return button >> 3;
}

constexpr std::uint8_t wheelByte(bool on)
{
    return on ? wheelOn : wheelOff;
}

constexpr bool isDpiLevel(std::uint16_t code)
{
    return code >= KEY_DPI_LEVEL && code < KEY_DPI_LEVEL + dpiLevels;
}

/// The level that a code of `KEY_DPI_LEVEL` goes to.
constexpr std::uint8_t levelOf(std::uint16_t code)
{
    return std::uint8_t(code - KEY_DPI_LEVEL);
}

/// `command` with what a read has given, in the places where it is written: byte n of the reply in byte n
/// + 1.
Report repeat(const Report& command, const Reply& reply)
{
    return command.at(3, reply.part(2, Reply::size));
}

/// How the device stores a level: in hundreds less one, halved above `singleDpiLimit`. Deliberate: divided
/// towards zero, so that a value that is no multiple of the step loses the rest.
constexpr std::uint8_t storedLevel(std::uint16_t dpi)
{
    return std::uint8_t(((dpi <= singleDpiLimit ? dpi : dpi / 2) - 100) / 100);
}

constexpr std::uint8_t doublingFlags(const DpiLevel& level)
{
    return std::uint8_t((level.x > singleDpiLimit ? 0x01 : 0) | (level.y > singleDpiLimit ? 0x10 : 0));
}

constexpr DpiLevel readLevel(std::uint8_t x, std::uint8_t y, std::uint8_t flags)
{
    const int factors = flags + 0x11;
    return {.x = std::uint16_t((x + 1) * 100 * (factors & 0x0F)),
            .y = std::uint16_t((y + 1) * 100 * (factors >> 4 & 0x0F))};
}

/// Writes an event's four bytes in the macro memory.
std::array<std::uint8_t, bytesPerEvent> encodeEvent(const MouseMacroEvent& event)
{
    const auto delay = std::uint16_t(event.delay * 2);
    const auto delayLow = std::uint8_t(delay);
    const auto delayHigh = std::uint8_t(delay >> 8);
    if (event.code == KEY_STEP_UP || event.code == KEY_STEP_DOWN)
        return {std::uint8_t(event.code == KEY_STEP_UP ? 0x01 : 0xFF), stepKind, delayLow, delayHigh};
    const std::uint8_t kind = event.kind == 0 ? 0x5C : event.kind == 1 ? 0x3C : endKind;
    return {std::uint8_t(event.code), std::uint8_t((event.code >> 8) + kind), delayLow, delayHigh};
}

MouseMacroEvent decodeEvent(const Reply& reply, std::size_t from)
{
    const std::uint8_t first = reply[from];
    const std::uint8_t second = reply[from + 1];
    const auto delay = std::uint16_t(reply.u16(from + 2) / 2);
    if (second == stepKind && (first == 0x01 || first == 0xFF))
        return {.code = first == 0x01 ? KEY_STEP_UP : KEY_STEP_DOWN, .kind = 2, .delay = delay};
    return {.code = std::uint16_t(first | (second & 0x03) << 8),
            .kind = std::uint8_t(second >> 5 == 1 ? 1 : 0),
            .delay = delay};
}

} // namespace

WiredMouse::WiredMouse(const std::string& path, const MouseTraits& traits)
    : NotifyingDevice(path, {.model = traits.model, .paceMs = traits.paceMs}), traits(traits)
{
    if (!link.opened())
        return;
    link.start([this](const Reply& reply) { take(reply); });
    for (const Report& report : traits.startUp)
        link.write(report);
    set(cmd::hello);
}

WiredMouse::~WiredMouse()
{
    link.stop();
}

void WiredMouse::sayGoodbye()
{
    if (link.unplugged())
        return;
    link.resume();
    set(cmd::serviceOn);
    if (link.isOpen())
        set(cmd::configOff);
}

_error WiredMouse::changeProfileId(std::uint8_t profile)
{
    if (profile >= profiles)
        return E_INVALID_SET;
    log(traits.model.logCategory, [&] { return "change profile id = " + std::to_string(profile); });
    set(cmd::configOn);
    return set(cmd::setProfile.at(5, profile));
}

_error WiredMouse::getCurrProfileId(std::uint8_t* profile)
{
    if (!profile)
        return E_INVALID_GET;
    set(cmd::configOn);
    Reply reply;
    if (const _error result = get(cmd::getProfile, reply))
        return result;
    *profile = reply[4];
    log(traits.model.logCategory, [&] { return "get profile id = " + std::to_string(*profile); });
    return E_OK;
}

_error WiredMouse::resetProfile(std::uint8_t all)
{
    set(cmd::serviceOn);
    const _error result = set(cmd::resetProfile.at(5, all ? 0xFF : 0x00));
    if (!all)
        set(cmd::save);
    if (link.isOpen())
        set(cmd::configOff);
    return result;
}

_error WiredMouse::resetPartial(std::uint8_t part)
{
    constexpr std::array<std::uint32_t, 3> masks{1U << 1, 1U << 2, 1U << 4};
    if (part >= masks.size())
        return E_INVALID_SET;
    set(cmd::configOn);
    const Wheel wheel = part == 2 ? readWheel().value_or(Wheel{}) : Wheel{};
    if (set(cmd::resetPart.at32(3, masks[part])))
        return E_INVALID_SET;
    if (part == 0)
        return E_OK;
    if (part == 1)
        return set(cmd::setWheel.at(5, wheelOn).at(6, wheelOn));
    if (set(cmd::setWheel.at(5, wheelByte(wheel.b)).at(6, wheelByte(wheel.a))))
        return E_INVALID_SET;
    if (set(cmd::clearOrder))
        return E_INVALID_SET;
    if (set(cmd::setF0.at(5, 1)))
        return E_INVALID_SET;
    const std::optional<Reply> bank = readBank();
    if (!bank || set(cmd::setBank.at(13, (*bank)[12]).at(17, 3)))
        return E_INVALID_SET;
    return setSystemPointer(middleSpeed, middleSpeed) ? E_OK : E_INVALID_SET;
}

std::optional<WiredMouse::Wheel> WiredMouse::readWheel()
{
    Reply reply;
    if (get(cmd::getWheel, reply))
        return std::nullopt;
    constexpr std::array known{wheelOn, wheelOff, wheelOffToo};
    if (!std::ranges::count(known, reply[4]) || !std::ranges::count(known, reply[5]))
        return std::nullopt;
    return Wheel{.a = reply[5] == wheelOn, .b = reply[4] == wheelOn};
}

std::optional<Reply> WiredMouse::readBank()
{
    Reply reply;
    return get(cmd::getBank, reply) ? std::nullopt : std::optional(reply);
}

/// The order table's reply, when the device has one.
std::optional<Reply> WiredMouse::readOrder()
{
    Reply reply;
    return get(cmd::getOrder, reply) || reply[4] == noOrder ? std::nullopt : std::optional(reply);
}

_error WiredMouse::writeBank(std::uint8_t comboButtonNow)
{
    const std::optional<Reply> bank = readBank();
    return bank ? set(repeat(cmd::setBank, *bank).at(13, comboButtonNow)) : E_INVALID_SET;
}

_error WiredMouse::writeButton(std::uint8_t button, std::uint16_t code)
{
    if (isDpiLevel(code)) {
        if (const std::optional<Reply> order = readOrder()) {
            const auto levels = order->part(4, dpiLevels);
            const auto place = std::ranges::find(levels, levelOf(code)) - levels.begin();
            code = std::uint16_t(KEY_DPI_LEVEL + (place < dpiLevels ? place : 0));
        }
    }
    return set(cmd::setButton.at(3, address(button)).at(4, page(button)).at16(5, code), 4);
}

_error WiredMouse::readButton(std::uint8_t button, std::uint16_t& code)
{
    Reply reply;
    if (const _error result = get(cmd::getButton.at(3, address(button)).at(4, page(button)), reply))
        return result;
    code = reply.u16(4);
    if (code == noFunction && button < 8)
        code = reply[2]; // the button's own function is named by its address
    else if (code == disabled)
        code = 0;
    else if (isDpiLevel(code))
        if (const std::optional<Reply> order = readOrder())
            code = std::uint16_t(KEY_DPI_LEVEL + (*order)[4U + levelOf(code)]);
    return E_OK;
}

_error WiredMouse::writeStep(std::uint8_t button, Step step)
{
    const Report place =
        cmd::setMacroPlace.at(3, button).at(5, address(button)).at(6, std::uint8_t(page(button) + stepPage));
    if (const _error result = set(place, 3))
        return result;
    constexpr std::uint8_t events = 2; // the step and the end
    return set(
        cmd::writeEvents.at(3, events).at(5, std::uint8_t(step)).at(6, stepKind).at(7, 0x80).at(10, endKind));
}

_error WiredMouse::removeMacro(std::uint8_t button)
{
    return set(cmd::setMacroPlace.at(3, button).at(5, 0xFF).at(6, 0x3F));
}

_error WiredMouse::writeMapping(std::uint8_t button, std::uint16_t code)
{
    const _error result = writeButton(button, code);
    removeMacro(button);
    return result;
}

WiredMouse::MacroState WiredMouse::macroState(std::uint8_t button)
{
    Reply place;
    if (get(cmd::getMacroPlace.at(3, button), place, 3))
        return MacroState::none;
    if (place[4] == 0xFF && (place[5] == 0xFF || place[5] == 0x3F))
        return MacroState::none;
    Reply events;
    if (get(cmd::readStep, events, 3))
        return MacroState::none;
    if (events[5] != stepKind || events[6] != 0x80)
        return MacroState::macro;
    return events[4] == 0x01   ? MacroState::stepUp
           : events[4] == 0xFF ? MacroState::stepDown
                               : MacroState::macro;
}

_error WiredMouse::setKeyMapping(std::uint8_t button, std::uint16_t code)
{
    if (button >= buttons)
        return E_INVALID_SET;
    set(cmd::configOn);
    const std::optional<Reply> bank = readBank();
    if (!bank)
        return E_INVALID_SET;
    const bool tilt = button == tiltDown || button == tiltUp;
    const std::optional<Wheel> wheel = tilt ? readWheel() : Wheel{};
    if (!wheel)
        return E_INVALID_SET;
    if (button == (*bank)[12] || code == KEY_MACRO)
        return E_OK;
    const bool tiltAsStep =
        (button == tiltUp && code == KEY_STEP_UP) || (button == tiltDown && code == KEY_STEP_DOWN);
    if (tilt) {
        // Deliberate: each tilt keeps the other's byte from the state that is read crosswise.
        const std::uint8_t own = tiltAsStep ? wheelOn : wheelOff;
        const Report command = button == tiltUp ? cmd::setWheel.at(5, wheelByte(wheel->b)).at(6, own)
                                                : cmd::setWheel.at(5, own).at(6, wheelByte(wheel->a));
        if (set(command))
            return E_INVALID_SET;
    }
    if (tiltAsStep)
        return writeMapping(button, noFunction); // the wheel itself makes the step
    if (code == KEY_STEP_UP || code == KEY_STEP_DOWN)
        return writeStep(button, code == KEY_STEP_UP ? Step::up : Step::down);
    return writeMapping(button, code);
}

_error WiredMouse::setKeyMappingAll(const std::uint16_t* map)
{
    if (!map)
        return E_INVALID_SET;
    set(cmd::configOn);
    const std::optional<Reply> bank = readBank();
    if (!bank)
        return E_INVALID_SET;
    const bool stepDown = map[tiltDown] == KEY_STEP_DOWN;
    const bool stepUp = map[tiltUp] == KEY_STEP_UP;
    if (set(cmd::setWheel.at(5, wheelByte(stepDown)).at(6, wheelByte(stepUp))))
        return E_INVALID_SET;
    _error result = E_OK;
    for (std::uint8_t button = 0; button < buttons; ++button) {
        const std::uint16_t code = map[button];
        if (button == (*bank)[12] || code == KEY_MACRO)
            continue;
        if ((button == tiltDown && stepDown) || (button == tiltUp && stepUp))
            result = writeMapping(button, noFunction);
        else if (code == KEY_STEP_UP || code == KEY_STEP_DOWN)
            result = writeStep(button, code == KEY_STEP_UP ? Step::up : Step::down);
        else
            result = writeMapping(button, code);
    }
    return result;
}

_error WiredMouse::getKeyMappingAll(std::uint16_t* map)
{
    if (!map)
        return E_INVALID_GET;
    set(cmd::configOn);
    std::array<std::uint16_t, buttons> codes{};
    for (std::uint8_t button = 0; button < buttons; ++button) {
        switch (macroState(button)) {
        case MacroState::stepUp:
            codes[button] = KEY_STEP_UP;
            break;
        case MacroState::stepDown:
            codes[button] = KEY_STEP_DOWN;
            break;
        case MacroState::macro:
            codes[button] = KEY_MACRO;
            break;
        case MacroState::none:
            if (readButton(button, codes[button]))
                return E_INVALID_GET;
            break;
        }
    }
    if (const std::optional<Reply> bank = readBank(); bank && (*bank)[12] < 6) {
        Reply reply;
        if (!get(cmd::getComboCode, reply) && reply[2] == cmd::getComboCode[3])
            codes[(*bank)[12]] = reply.u16(4);
    }
    if (const std::optional<Wheel> wheel = readWheel()) {
        if (wheel->b)
            codes[tiltUp] = KEY_STEP_UP;
        if (wheel->a)
            codes[tiltDown] = KEY_STEP_DOWN;
    }
    std::ranges::copy(codes, map);
    return E_OK;
}

_error WiredMouse::setMouseCombo(std::uint8_t on)
{
    set(cmd::configOn);
    set(cmd::configOn); // deliberate: this operation sends it twice
    const std::optional<Reply> bank = readBank();
    if (!bank)
        return E_INVALID_SET;
    const std::uint8_t current = (*bank)[12] != noCombo ? 1 : 0;
    if (current == on)
        return E_OK;
    if (!on)
        return writeBank(noCombo);
    if (writeButton(comboButton, KEY_COMBO))
        return E_INVALID_SET;
    return writeBank(comboButton);
}

_error WiredMouse::getMouseCombo(std::uint8_t* on)
{
    if (!on)
        return E_INVALID_GET;
    set(cmd::configOn);
    const std::optional<Reply> bank = readBank();
    if (!bank)
        return E_INVALID_GET;
    *on = (*bank)[12] == noCombo ? 0 : 1;
    return E_OK;
}

_error WiredMouse::startRecordMacro()
{
    set(cmd::serviceOn);
    return set(cmd::setWheel.at(5, wheelOn).at(6, wheelOn));
}

_error WiredMouse::stopRecordMacro()
{
    return set(cmd::configOn);
}

_error WiredMouse::setMacro(MouseMacroRecord* macro)
{
    constexpr std::uint8_t clearing = 3;
    constexpr std::array<std::uint8_t, 3> modePages{0x3C, 0x5C, 0x7C};
    if (!macro || macro->button >= buttons || macro->mode > clearing || macro->count > mostEvents)
        return E_INVALID_SET;
    const std::uint8_t button = macro->button;
    const bool clear = macro->mode == clearing;
    set(cmd::configOn);
    const std::optional<Wheel> wheel = readWheel();
    if (!wheel)
        return E_INVALID_SET;
    if (button == tiltDown && set(cmd::setWheel.at(5, wheelByte(clear)).at(6, wheelByte(wheel->a))))
        return E_INVALID_SET;
    if (button == tiltUp && set(cmd::setWheel.at(5, wheelByte(wheel->b)).at(6, wheelByte(clear))))
        return E_INVALID_SET;
    if (clear)
        return removeMacro(button) ? E_INVALID_SET : E_OK;
    const auto pageAndMode = std::uint8_t(page(button) + modePages[macro->mode]);
    if (set(cmd::setMacroPlace.at(3, button).at(5, address(button)).at(6, pageAndMode)))
        return E_INVALID_SET;
    std::array<std::uint8_t, sizeof macro->name> name{};
    std::ranges::transform(macro->name, name.begin(), [](char c) { return std::uint8_t(c); });
    if (set(cmd::setMacroName.at(3, button).at(5, name), 3))
        return E_INVALID_SET;
    macro->events[macro->count] = endEvent;
    return writeMacroEvents({macro->events, macro->count + std::size_t{1}});
}

_error WiredMouse::writeMacroEvents(std::span<const MouseMacroEvent> events)
{
    for (bool first = true; !events.empty(); first = false) {
        const auto chunk = events.first(std::min(events.size(), eventsPerChunk));
        Report report = cmd::writeEvents.at(2, first ? 0 : 1).at(3, std::uint8_t(chunk.size()));
        for (std::size_t i = 0; i < chunk.size(); ++i)
            report = report.at(5 + i * bytesPerEvent, encodeEvent(chunk[i]));
        if (set(report))
            return E_INVALID_SET;
        events = events.subspan(chunk.size());
    }
    return E_OK;
}

_error WiredMouse::getMacro(MouseMacroRecord* macro)
{
    if (!macro || macro->button >= buttons)
        return E_INVALID_GET;
    set(cmd::configOn);
    return readMacro(*macro);
}

_error WiredMouse::readMacro(MouseMacroRecord& macro)
{
    const std::uint8_t button = macro.button;
    Reply place;
    if (const _error result = get(cmd::getMacroPlace.at(3, button), place, 3))
        return result;
    if (place[4] == 0xFF && (place[5] == 0x3F || place[5] == 0xFF)) {
        macro.mode = 3;
        std::ranges::fill(macro.name, '\0');
        macro.count = 0;
        return E_OK;
    }
    Reply name;
    if (const _error result = get(cmd::getMacroName.at(3, button), name, 3))
        return result;
    const Report cursor =
        cmd::setMacroPlace.at(3, button).at(5, address(button)).at(6, place[5]).at(7, place[6]);
    Reply pointed;
    if (const _error result = get(cursor, pointed))
        return result;
    MouseMacroRecord found = macro;
    if (const _error result = readMacroEvents(found))
        return result;
    const int mode = place[5] >> 4;
    found.mode = mode == 5 ? 1 : mode == 7 ? 2 : 0;
    std::ranges::transform(name.part(4, sizeof found.name), found.name,
                           [](std::uint8_t byte) { return char(byte); });
    macro = found;
    return E_OK;
}

/// Asks for a chunk until it comes, but a silent device only so many times.
std::optional<Reply> WiredMouse::readMacroChunk(const Report& command)
{
    for (int tries = 0; tries < chunkTries && !closed && !link.aborted(); ++tries) {
        Reply reply;
        if (!get(command, reply, 3))
            return reply;
    }
    return std::nullopt;
}

_error WiredMouse::readMacroEvents(MouseMacroRecord& macro)
{
    std::size_t count = 0;
    while (count <= mostEvents) {
        const std::size_t size = count >= eventsInFullChunks ? eventsLastChunk : eventsPerChunk;
        const std::uint8_t kind = count < eventsPerChunk ? 0x10 : 0x11;
        const std::optional<Reply> chunk =
            readMacroChunk(cmd::readEvents.at(2, kind).at(3, std::uint8_t(size)));
        if (!chunk)
            return E_INVALID_GET;
        for (std::size_t i = 0; i < size && count <= mostEvents; ++i) {
            const std::size_t from = 4 + i * bytesPerEvent;
            if ((*chunk)[from + 1] == endKind) {
                macro.count = std::uint8_t(count);
                return E_OK;
            }
            macro.events[count++] = decodeEvent(*chunk, from);
        }
    }
    return E_INVALID_GET;
}

_error WiredMouse::clearMacro(std::uint8_t button)
{
    MouseMacroRecord macro{};
    macro.button = button;
    macro.mode = 3;
    return setMacro(&macro);
}

_error WiredMouse::setPerformance(const PerformanceRecord* record)
{
    if (!record || record->currentLevel >= dpiLevels || record->pointerSpeed > 11 ||
        record->doubleClickSpeed > 11 || record->settingBank > 8)
        return E_INVALID_SET;
    std::array<std::uint8_t, dpiLevels> order{0, 1, 2, 3, 4, 5, 6};
    const auto enabled = [&](std::uint8_t level) { return record->levelEnabled[level] == 1; };
    const auto enabledCount = std::stable_partition(order.begin(), order.end(), enabled) - order.begin();
    const auto currentPosition = std::ranges::find(order, record->currentLevel) - order.begin();
    if (currentPosition >= enabledCount)
        return E_INVALID_SET;

    set(cmd::configOn);
    if (set(cmd::setOrder.at(5, order)))
        return E_INVALID_SET;
    Report performance =
        cmd::setPerformance.at(5, std::uint8_t(currentPosition)).at(6, std::uint8_t(enabledCount));
    for (std::size_t place = 0; place < dpiLevels; ++place) {
        const DpiLevel level = record->levels[order[place]];
        performance = performance.at(7 + place, storedLevel(level.y))
                          .at(14 + place, storedLevel(level.x))
                          .at(21 + place, doublingFlags(level));
    }
    performance = performance.at(28, record->pollingCode)
                      .at(29, std::uint8_t(2 + (record->flagA ? 1 : 0) + (record->flagB ? 4 : 0)))
                      .at(30, record->surfaceA ? record->surfaceA : defaultSurfaceA)
                      .at(31, record->surfaceB ? record->surfaceB : defaultSurfaceB);
    if (set(performance))
        return E_INVALID_SET;
    if (set(cmd::setF0.at(5, record->settingF0)))
        return E_INVALID_SET;
    const std::optional<Reply> bank = readBank();
    // Deliberate: all other bytes of the bank are written as zeros.
    if (set(cmd::setBank.at(13, bank ? (*bank)[12] : record->currentLevel).at(17, record->settingBank)))
        return E_INVALID_SET;
    if (!setSystemPointer(record->pointerSpeed, record->doubleClickSpeed))
        log(traits.model.logCategory, "the system refuses pointer speed and double-click time");
    return E_OK; // the device has taken everything
}

_error WiredMouse::getPerformance(PerformanceRecord* record)
{
    if (!record)
        return E_INVALID_GET;
    set(cmd::configOn);
    Reply performance, order, f0, bank;
    if (const _error result = get(cmd::getPerformance, performance))
        return result;
    if (const _error result = get(cmd::getOrder, order))
        return result;
    if (const _error result = get(cmd::getF0, f0))
        return result;
    if (const _error result = get(cmd::getBank, bank))
        return result;

    const std::uint8_t currentPosition = performance[4];
    const bool ordered = order[4] != noOrder;
    const auto levelAt = [&](std::size_t place) { return ordered ? order[4 + place] : std::uint8_t(place); };
    if (currentPosition >= dpiLevels)
        return E_INVALID_GET;
    for (std::size_t place = 0; place < dpiLevels; ++place)
        if (levelAt(place) >= dpiLevels)
            return E_INVALID_GET;

    record->currentLevel = levelAt(currentPosition);
    for (std::size_t place = 0; place < dpiLevels; ++place) {
        const std::uint8_t level = levelAt(place);
        record->levels[level] =
            readLevel(performance[13 + place], performance[6 + place], performance[20 + place]);
        record->levelEnabled[level] = !ordered || place < performance[5] ? 1 : 0;
    }
    record->pollingCode = performance[27];
    record->flagA = performance[28] & 0x01;
    record->flagB = (performance[28] & 0x06) == 0x06 ? 1 : 0;
    record->surfaceA = performance[29];
    record->surfaceB = performance[30];
    record->settingF0 = f0[4];
    record->settingBank = bank[16];
    record->pointerSpeed = systemPointerSpeed();
    record->doubleClickSpeed = systemDoubleClickSpeed();
    return record->pointerSpeed && record->doubleClickSpeed ? E_OK : E_INVALID_GET;
}

_error WiredMouse::changeDpiLevel(std::uint8_t level)
{
    if (level >= dpiLevels)
        return E_INVALID_SET;
    set(cmd::configOn);
    std::uint8_t place = level;
    if (const std::optional<Reply> order = readOrder()) {
        const auto levels = order->part(4, dpiLevels);
        if (const auto found = std::ranges::find(levels, level); found != levels.end())
            place = std::uint8_t(found - levels.begin());
    }
    Reply performance;
    if (get(cmd::getPerformance, performance) || place >= performance[5])
        return E_INVALID_SET;
    return set(repeat(cmd::setPerformance, performance).at(5, place));
}

_error WiredMouse::startSurfaceLearning()
{
    set(cmd::configOn);
    return set(cmd::learningStart);
}

_error WiredMouse::stopSurfaceLearning()
{
    return set(cmd::learningStop);
}

_error WiredMouse::getSurfaceLearningStatus(std::uint8_t* status)
{
    if (!status)
        return E_INVALID_GET;
    set(cmd::configOn);
    Reply reply;
    if (const _error result = get(cmd::learningState, reply))
        return result;
    *status = reply[4];
    return E_OK;
}

_error WiredMouse::getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b)
{
    if (!a || !b)
        return E_INVALID_GET;
    PerformanceRecord record{};
    const _error result = getPerformance(&record);
    *a = result ? defaultSurfaceA : record.surfaceA;
    *b = result ? defaultSurfaceB : record.surfaceB;
    return result;
}

_error WiredMouse::saveConfig()
{
    set(cmd::serviceOn);
    const _error result = set(cmd::save);
    if (link.isOpen())
        set(cmd::configOff);
    return result;
}

void WiredMouse::take(const Reply& reply)
{
    if (takeEvents(traits.events, reply))
        return;
    if (reply.begins({0x43, 0x01}))
        takeKey(reply[4], reply[5]);
    else
        link.deliver(reply);
}

void WiredMouse::takeKey(std::uint8_t button, std::uint8_t state)
{
    constexpr std::uint8_t up = 0x40;
    constexpr std::uint8_t down = 0xC0;
    if (state != up && state != down)
        return;
    if (button == shiftKey) {
        traits.shift = state == down;
        return;
    }
    const int value =
        (button < traits.keyValues.size() ? traits.keyValues[button] : 0) + (traits.shift ? shiftValue : 0);
    tell(NotifyRecord{.event = state == down ? traits.keyDownEvent : traits.keyUpEvent,
                      .value = std::uint16_t(value)});
}

} // namespace pyrux
