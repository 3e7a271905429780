#include "simulator/models/keyboard.h"

#include "simulator/models/hub.h"
#include "simulator/models/identities.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>

namespace pyrux::sim {

namespace {

using Model = KeyboardFirmware::Model;
using State = KeyboardFirmware::State;

/// The models. Never destroyed: a write may hang in one to the end of the process.
struct Models {
    Model qw210{"QW210", 0x0147, 7, 24};
    Model qw220{"QW220", 0x0145, 6, 20};
};

const Models& models()
{
    static const Models& all = *new Models;
    return all;
}

const Identity& identityOf(const Model& model)
{
    return standingIdentity(model.name, model.pid, 0x0104,
                            {{.interface = 0, .usagePage = 0x0001, .usage = 0x0006},
                             {.interface = 1, .usagePage = 0xFF00, .usage = 0x0001}},
                            1);
}

constexpr std::uint8_t resetCurrent = 0x00;
constexpr std::uint8_t resetEverything = 0xFF;
constexpr std::size_t eventSize = 4;
constexpr std::size_t mostChunkEvents = 15;
constexpr std::array<std::uint8_t, eventSize> endEvent{0x00, 0xFC, 0xFE, 0xFF};
constexpr std::uint16_t ownFunction = 0x00FF;
constexpr std::size_t keysOfPage = 16;
constexpr std::size_t dataFrom = 4; // of the reports that carry more than a byte
constexpr std::size_t mostLeds = 15;
constexpr std::size_t mostStatusLeds = 18;
constexpr std::size_t statusFrom = 8;
constexpr std::uint8_t keyIsUp = 0x40;
constexpr std::uint8_t keyIsDown = 0xC0;

// The records of the effect memory.
constexpr std::size_t recordColor = 8;
constexpr std::size_t recordBrightness = 11;
constexpr std::size_t customColors = 16;
constexpr std::size_t customSize = customColors + std::size_t(3 * KeyboardFirmware::ledCount);

using Record = std::vector<std::uint8_t>;

/// What the factory puts into the effect memory.
struct FactoryEffect {
    std::uint8_t frames;
    std::uint8_t extraWords;
    std::array<std::uint8_t, 4> word;
    Record record;
};

constexpr std::array<std::uint8_t, 4> ofGeneral{0x88, 0x88, 0x88, 0x88};
constexpr std::array<std::uint8_t, 4> ofSecond{0x99, 0x99, 0x99, 0x99};
constexpr std::array<std::uint8_t, 4> ofEmpty{0xAA, 0xAA, 0xAA, 0xAA};
constexpr std::array<std::uint8_t, 4> ofCustom{0xBB, 0xBB, 0xBB, 0xBB};
constexpr std::array<std::uint8_t, 4> ofZones{0x88, 0x08, 0x88, 0x88};

Record emptyRecord()
{
    return {0x10, 0x00, 0x00, 0xC1, 0, 0, 0, 0};
}

Record steadyRecord(std::uint8_t color)
{
    return {0x00, 0x01, 0x00, 0xC1, 0, 0, 0, 0, color, color, color, 0xFF, 0, 0, 0, 0};
}

Record blackCustomRecord()
{
    Record record(customSize);
    record[0] = 0x80;
    record[1] = 0x01;
    record[4] = 0xFF;
    record[10] = 0xFF;
    record[recordBrightness] = 0xFF;
    return record;
}

/// The effects by number.
const std::vector<FactoryEffect>& factoryEffects()
{
    // clang-format off
    static const auto& effects = *new std::vector<FactoryEffect>{
        {1, 0, ofGeneral, steadyRecord(0xFF)},
        {1, 0, ofSecond, {0x00, 0x32, 0x00, 0xC1, 0x07, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x06,
                          0x00, 0x00, 0x04, 0x08, 0x00}},
        {2, 0, ofGeneral, {0x00, 0x80, 0x00, 0x80, 0x0B, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x02,
                           0x01, 0x03, 0x00, 0x00, 0x00}},
        {2, 0, ofGeneral, {0x00, 0x80, 0x00, 0x80, 0x0B, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x02,
                           0x00, 0x00, 0x00, 0x00, 0x00}},
        {1, 0, ofCustom, blackCustomRecord()},
        {2, 0, ofGeneral, {0x00, 0x40, 0x00, 0x80, 0x08, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01,
                           0x00, 0x01, 0x10, 0x08, 0x01, 0x10, 0x00, 0x00, 0x00}},
        {2, 0, ofGeneral, {0x81, 0x40, 0x00, 0x80, 0x05, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x03,
                           0x00, 0x30, 0xFF, 0x10, 0x10, 0x01, 0x40, 0x00, 0x00}},
        {1, 0, ofGeneral, {0x00, 0x31, 0x00, 0xC1, 0x08, 0x00, 0x00, 0x00, 0x40, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x03,
                           0x00, 0x00, 0x00, 0x00, 0x00}},
        {1, 0, ofGeneral, {0x00, 0x30, 0x00, 0xC1, 0x0C, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x01, 0x00, 0x04,
                           0x00, 0x00, 0x00, 0x00, 0x00}},
        {2, 0, ofGeneral, {0x01, 0x82, 0x00, 0x80, 0x0C, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01,
                           0x00, 0x00, 0x01, 0x00, 0x00}},
        {2, 0, ofGeneral, {0x28, 0x80, 0x00, 0x80, 0x07, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01,
                           0x00}},
        {2, 0, ofGeneral, {0x20, 0xA0, 0x00, 0x80, 0x20, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x03,
                           0x00, 0x02, 0xFF, 0x00, 0x03}},
        {2, 0, ofGeneral, {0x20, 0xA0, 0x00, 0x80, 0x10, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x03,
                           0x00, 0x01, 0x08, 0x09, 0x04}},
        {1, 0, ofGeneral, {0x00, 0x34, 0x00, 0xC1, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x02,
                           0x00, 0x00, 0x80, 0x00, 0x04, 0xA0, 0x00, 0x30, 0x00}},
        {1, 0, ofGeneral, {0x00, 0x83, 0x00, 0xC1, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x02,
                           0x00, 0x00, 0x80, 0x00, 0x00, 0x30, 0x00, 0x10, 0x00}},
        {2, 0, ofGeneral, {0x01, 0x82, 0x00, 0x80, 0x0C, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x06,
                           0x00, 0x00, 0x90, 0x14, 0x20}},
        {1, 0, ofEmpty, emptyRecord()},
        {2, 0, ofGeneral, {0x81, 0x40, 0x00, 0x80, 0x05, 0x10, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x03,
                           0x00, 0x30, 0x18, 0x04, 0x10, 0x01, 0x00, 0x00, 0x00}},
        {5, 1, ofEmpty, emptyRecord()},
        {8, 0, ofZones, emptyRecord()},
        {1, 0, ofEmpty, {0x04, 0xF0, 0x00, 0xC1}},
    };
    // clang-format on
    return effects;
}

/// Puts the effect memory together, one piece behind the other.
class Assembler {
public:
    /// The pointer of a piece.
    std::uint16_t put(std::span<const std::uint8_t> piece)
    {
        const std::size_t at = end;
        std::ranges::copy(piece, image.begin() + std::ptrdiff_t(at));
        end += piece.size();
        return std::uint16_t(at / 4);
    }

    KeyboardFirmware::Image image{};

private:
    std::size_t end = 0;
};

KeyboardFirmware::Effects assembled(std::size_t maskBytes)
{
    constexpr std::uint8_t noEffect = 16; // in the extra word: a byte for each of four layers
    KeyboardFirmware::Effects effects;
    Assembler memory;
    std::optional<std::uint16_t> sharedMasks;
    for (std::size_t number = 0; number < factoryEffects().size(); ++number) {
        const FactoryEffect& effect = factoryEffects()[number];
        std::vector<std::uint16_t> records;
        for (int frame = 0; frame < effect.frames; ++frame)
            records.push_back(
                memory.put(effect.frames == 2 && frame == 0 ? steadyRecord(0x00) : effect.record));
        std::uint16_t masks = 0;
        if (effect.frames == 2) {
            if (!sharedMasks)
                sharedMasks = memory.put(Record(2 * maskBytes, 0xFF));
            masks = *sharedMasks;
        } else if (effect.frames > 1) {
            masks = memory.put(Record(effect.frames * maskBytes, effect.extraWords ? 0xFF : 0x00));
        }
        Record header(4 * effect.extraWords, noEffect);
        const auto add = [&](std::uint16_t pointer) {
            header.push_back(std::uint8_t(pointer));
            header.push_back(std::uint8_t(pointer >> 8));
        };
        if (effect.frames > 1) {
            add(masks);
            add(masks);
        }
        for (std::uint16_t frame = 0; frame < effect.frames; ++frame) {
            add(records[frame]);
            add(frame);
        }
        effects.descriptors[number] = {effect.frames, effect.extraWords, memory.put(header), effect.word};
    }
    effects.image = memory.image;
    return effects;
}

KeyboardFirmware::Macro emptyMacro()
{
    KeyboardFirmware::Macro macro;
    for (std::size_t i = 0; i < macro.events.size(); ++i)
        macro.events[i] = endEvent[i % eventSize];
    return macro;
}

bool within(int value, int count)
{
    return value >= 0 && value < count;
}

/// From `from` on at most `size` bytes; less where it would lead outside.
std::span<const std::uint8_t> part(std::span<const std::uint8_t> bytes, std::size_t from, std::size_t size)
{
    if (from >= bytes.size())
        return {};
    return bytes.subspan(from, std::min(size, bytes.size() - from));
}

std::uint16_t wordAt(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return at + 1 < bytes.size() ? std::uint16_t(bytes[at] | bytes[at + 1] << 8) : std::uint16_t(0);
}

Light lightAt(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return at + 2 < bytes.size() ? Light{bytes[at], bytes[at + 1], bytes[at + 2]} : Light{};
}

} // namespace

struct KeyboardFirmware::Command {
    enum In : unsigned { any, maintenance, settings, host };

    std::uint8_t command;
    std::uint8_t operation;
    In in;
    bool answered;
    bool (KeyboardFirmware::*take)(const Payload& command, Payload& reply);

    bool takenIn(State state) const
    {
        switch (in) {
        case maintenance:
            return state == State::maintenance;
        case settings:
            return state == State::configuration || state == State::collecting || state == State::host;
        case host:
            return state == State::host;
        case any:
            break;
        }
        return true;
    }
};

KeyboardFirmware::KeyboardFirmware(const Model& model) : model(model), self(identityOf(model))
{
    profiles.fill(factory());
    stored.fill(factory().effects);
}

QW210Firmware::QW210Firmware() : KeyboardFirmware(models().qw210) {}
QW220Firmware::QW220Firmware() : KeyboardFirmware(models().qw220) {}

KeyboardFirmware::Settings KeyboardFirmware::factory() const
{
    Settings settings;
    settings.keys.map.fill(ownFunction);
    settings.keys.actions.fill({0, std::uint8_t(ownFunction), std::uint8_t(ownFunction >> 8)});
    settings.macros.fill(emptyMacro());
    settings.effects = assembled(model.maskBytes);
    return settings;
}

const Identity& KeyboardFirmware::identity() const
{
    return self;
}

void KeyboardFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    for (std::size_t i = 0; i < profiles.size(); ++i)
        profiles[i].effects = stored[i];
    firmwareState = State::off;
    preview = {};
    previewShown = hostDrives = false;
    profileReports = effectReports = keyReports = false;
    cursor.reset();
    status = host = {};
    frameCount = ackCount = saveCount = 0;
}

void KeyboardFirmware::output(Bytes payload)
{
    Payload command{};
    std::ranges::copy(payload.first(std::min(payload.size(), command.size())), command.begin());
    Payload reply{command[0], command[1], command[2], command[3]};
    {
        const std::lock_guard lock(mutex);
        if (!answer(command, reply))
            return;
    }
    emit(reply);
}

bool KeyboardFirmware::answer(const Payload& command, Payload& reply)
{
    using F = KeyboardFirmware;
    static constexpr Command table[]{
        {0x42, 0x00, Command::any, false, &F::askForChanges},
        {0x42, 0x10, Command::any, false, &F::acknowledge},
        {0x43, 0x00, Command::any, true, &F::askForKeys},
        {0x50, 0x10, Command::maintenance, true, &F::reset},
        {0x50, 0x55, Command::maintenance, true, &F::save},
        {0x51, 0x00, Command::settings, true, &F::setProfile},
        {0x52, 0x00, Command::settings, true, &F::getProfile},
        {0x51, 0x20, Command::settings, true, &F::setKey},
        {0x51, 0x21, Command::settings, true, &F::setKeyPage},
        {0x52, 0x21, Command::settings, true, &F::getKeyPage},
        {0x51, 0x18, Command::settings, true, &F::setHeader},
        {0x52, 0x18, Command::settings, true, &F::getHeader},
        {0x51, 0x19, Command::settings, true, &F::setName},
        {0x52, 0x19, Command::settings, true, &F::getName},
        {0x53, 0x00, Command::settings, true, &F::writeMacro},
        {0x53, 0x01, Command::settings, true, &F::writeMacro},
        {0x53, 0x10, Command::settings, true, &F::readMacro},
        {0x53, 0x11, Command::settings, true, &F::readMacro},
        {0x51, 0x28, Command::settings, true, &F::setMode},
        {0x52, 0x28, Command::settings, true, &F::getMode},
        {0x51, 0x98, Command::settings, true, &F::resetParts},
        {0x56, 0x14, Command::any, true, &F::getDescriptor},
        {0x56, 0x15, Command::any, true, &F::setDescriptor},
        {0x56, 0x20, Command::any, true, &F::getPage},
        {0x56, 0x21, Command::any, true, &F::setPage},
        {0x56, 0x81, Command::any, true, &F::beginPreview},
        {0x56, 0x83, Command::any, true, &F::setPreviewPage},
        {0x56, 0x42, Command::any, false, &F::takeStatus},
        {0xC0, 0xF0, Command::host, false, &F::beginFrames},
        {0xC0, 0x00, Command::any, false, &F::takeFrame},
        {0xC0, 0x01, Command::any, false, &F::takeLeds},
    };
    if (command[0] == 0x41)
        return enterState(command, reply);
    const auto found = std::ranges::find_if(table, [&](const Command& one) {
        return one.command == command[0] && one.operation == command[1] && one.takenIn(firmwareState);
    });
    return found != std::end(table) && std::invoke(found->take, this, command, reply) && found->answered;
}

bool KeyboardFirmware::enterState(const Payload& command, Payload&)
{
    static constexpr State all[]{State::off, State::maintenance, State::collecting, State::host,
                                 State::configuration};
    const auto to = std::ranges::find(all, State(command[1]));
    if (to == std::end(all))
        return false;
    firmwareState = *to;
    if (*to == State::maintenance)
        previewShown = false;
    if (*to == State::off)
        hostDrives = false;
    return true;
}

bool KeyboardFirmware::askForChanges(const Payload& command, Payload&)
{
    profileReports = command[4] == 1;
    effectReports = command[7] == 1;
    return true;
}

bool KeyboardFirmware::acknowledge(const Payload& command, Payload&)
{
    if (command[4] == 1 && command[7] == 1)
        ++ackCount;
    return true;
}

bool KeyboardFirmware::askForKeys(const Payload& command, Payload&)
{
    keyReports = command[4] == 1;
    return true;
}

bool KeyboardFirmware::reset(const Payload& command, Payload&)
{
    if (command[4] == resetCurrent) {
        current() = factory();
        return true;
    }
    if (command[4] != resetEverything)
        return false;
    profiles.fill(factory());
    stored.fill(factory().effects);
    useProfile(0);
    return true;
}

bool KeyboardFirmware::save(const Payload&, Payload&)
{
    for (std::size_t i = 0; i < profiles.size(); ++i)
        stored[i] = profiles[i].effects;
    ++saveCount;
    return true;
}

void KeyboardFirmware::useProfile(int number)
{
    currentProfile = std::uint8_t(number);
    previewShown = false;
    cursor.reset();
}

bool KeyboardFirmware::setProfile(const Payload& command, Payload&)
{
    if (command[4] >= profileCount)
        return false;
    useProfile(command[4]);
    return true;
}

bool KeyboardFirmware::getProfile(const Payload&, Payload& reply)
{
    reply[4] = currentProfile;
    return true;
}

bool KeyboardFirmware::setKey(const Payload& command, Payload&)
{
    Keys& keys = current().keys;
    keys.actions[command[2]] = {command[3], command[4], command[5]};
    if (command[3] == 0)
        keys.map[command[2]] = wordAt(command, 4);
    return true;
}

bool KeyboardFirmware::setKeyPage(const Payload& command, Payload&)
{
    if (command[2] >= keyCount / keysOfPage)
        return false;
    for (std::size_t i = 0; i < keysOfPage; ++i) {
        const std::size_t key = keysOfPage * command[2] + i;
        const std::uint16_t value = wordAt(command, dataFrom + 2 * i);
        current().keys.map[key] = value;
        current().keys.actions[key] = {0, std::uint8_t(value), std::uint8_t(value >> 8)};
    }
    return true;
}

bool KeyboardFirmware::getKeyPage(const Payload& command, Payload& reply)
{
    if (command[2] >= keyCount / keysOfPage)
        return false;
    for (std::size_t i = 0; i < keysOfPage; ++i) {
        const std::uint16_t value = current().keys.map[keysOfPage * command[2] + i];
        reply[dataFrom + 2 * i] = std::uint8_t(value);
        reply[dataFrom + 2 * i + 1] = std::uint8_t(value >> 8);
    }
    return true;
}

bool KeyboardFirmware::setHeader(const Payload& command, Payload&)
{
    if (command[2] >= macroCount)
        return false;
    Macro& macro = current().macros[command[2]];
    std::copy_n(command.begin() + dataFrom, macro.header.size(), macro.header.begin());
    cursor = Cursor{command[2], 0};
    return true;
}

bool KeyboardFirmware::getHeader(const Payload& command, Payload& reply)
{
    if (command[2] >= macroCount)
        return false;
    std::ranges::copy(current().macros[command[2]].header, reply.begin() + dataFrom);
    return true;
}

bool KeyboardFirmware::setName(const Payload& command, Payload&)
{
    if (command[2] >= macroCount)
        return false;
    Macro& macro = current().macros[command[2]];
    std::copy_n(command.begin() + dataFrom, macro.name.size(), macro.name.begin());
    return true;
}

bool KeyboardFirmware::getName(const Payload& command, Payload& reply)
{
    if (command[2] >= macroCount)
        return false;
    std::ranges::copy(current().macros[command[2]].name, reply.begin() + dataFrom);
    return true;
}

bool KeyboardFirmware::writeMacro(const Payload& command, Payload&)
{
    if (!cursor || command[2] > mostChunkEvents)
        return false;
    const std::size_t begin = command[1] == 0x00 ? 0 : cursor->event;
    if (begin + command[2] > macroEvents)
        return false;
    auto& events = current().macros[cursor->macro].events;
    if (begin == 0)
        events = emptyMacro().events;
    std::copy_n(command.begin() + dataFrom, eventSize * command[2],
                events.begin() + std::ptrdiff_t(eventSize * begin));
    cursor->event = begin + command[2];
    return true;
}

bool KeyboardFirmware::readMacro(const Payload& command, Payload& reply)
{
    if (!cursor || command[2] == 0 || command[2] > mostChunkEvents)
        return false;
    const std::size_t begin = command[1] == 0x10 ? 0 : cursor->event;
    const auto& events = current().macros[cursor->macro].events;
    std::ranges::copy(part(events, eventSize * begin, eventSize * command[2]), reply.begin() + dataFrom);
    cursor->event = begin + command[2];
    return true;
}

bool KeyboardFirmware::setMode(const Payload& command, Payload&)
{
    const std::uint8_t mode = command[4];
    if (mode != previewMode && mode >= effectCount)
        return false;
    previewShown = mode == previewMode;
    if (!previewShown)
        current().effects.mode = mode;
    return true;
}

bool KeyboardFirmware::getMode(const Payload&, Payload& reply)
{
    reply[4] = previewShown ? previewMode : current().effects.mode;
    return true;
}

bool KeyboardFirmware::resetParts(const Payload& command, Payload&)
{
    struct Part {
        int bit;
        void (*apply)(Settings& settings, const Settings& factory);
    };
    static constexpr Part parts[]{
        {1, [](Settings& settings, const Settings& factory) { settings.effects = factory.effects; }},
        {2, [](Settings& settings, const Settings& factory) { settings.keys = factory.keys; }},
        {4, [](Settings& settings, const Settings& factory) { settings.macros = factory.macros; }},
    };
    for (const Part& one : parts)
        if (command[2] & one.bit)
            one.apply(current(), factory());
    return true;
}

bool KeyboardFirmware::setDescriptor(const Payload& command, Payload&)
{
    if (command[2] >= effectCount)
        return false;
    Descriptor& descriptor = current().effects.descriptors[command[2]];
    descriptor = {command[4], command[5], wordAt(command, 6), {}};
    std::copy_n(command.begin() + 8, descriptor.word.size(), descriptor.word.begin());
    return true;
}

bool KeyboardFirmware::getDescriptor(const Payload& command, Payload& reply)
{
    if (command[2] >= effectCount)
        return false;
    const Descriptor& descriptor = current().effects.descriptors[command[2]];
    reply[4] = descriptor.frames;
    reply[5] = descriptor.extraWords;
    reply[6] = std::uint8_t(descriptor.header);
    reply[7] = std::uint8_t(descriptor.header >> 8);
    return true;
}

bool KeyboardFirmware::setPage(const Payload& command, Payload&)
{
    if (command[2] >= imagePages)
        return false;
    std::copy_n(command.begin() + dataFrom, pageSize,
                current().effects.image.begin() + std::ptrdiff_t(pageSize * command[2]));
    return true;
}

bool KeyboardFirmware::getPage(const Payload& command, Payload& reply)
{
    if (command[2] >= imagePages)
        return false;
    std::ranges::copy(part(current().effects.image, pageSize * command[2], pageSize),
                      reply.begin() + dataFrom);
    return true;
}

bool KeyboardFirmware::beginPreview(const Payload& command, Payload&)
{
    preview = {};
    preview.frames = command[8];
    return true;
}

bool KeyboardFirmware::setPreviewPage(const Payload& command, Payload&)
{
    if (command[2] >= previewPages)
        return false;
    std::copy_n(command.begin() + dataFrom, pageSize,
                preview.image.begin() + std::ptrdiff_t(pageSize * command[2]));
    return true;
}

bool KeyboardFirmware::takeStatus(const Payload& command, Payload&)
{
    if (command[4] != 2 || command[5] > mostStatusLeds)
        return false;
    for (std::size_t i = 0; i < command[5]; ++i)
        if (const std::size_t led = command[6] + i; led < status.size())
            status[led] = lightAt(command, statusFrom + 3 * i);
    ++frameCount;
    return true;
}

bool KeyboardFirmware::beginFrames(const Payload& command, Payload&)
{
    hostDrives = command[4] == 1;
    return true;
}

bool KeyboardFirmware::takeFrame(const Payload& command, Payload&)
{
    if (!hostDrives)
        return false;
    host.fill(lightAt(command, dataFrom));
    ++frameCount;
    return true;
}

bool KeyboardFirmware::takeLeds(const Payload& command, Payload&)
{
    if (!hostDrives || command[2] > mostLeds)
        return false;
    for (std::size_t i = 0; i < command[2]; ++i) {
        const std::size_t at = dataFrom + 4 * i;
        if (command[at] < host.size())
            host[command[at]] = lightAt(command, at + 1);
    }
    ++frameCount;
    return true;
}

bool KeyboardFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    struct Event {
        const char* name;
        std::size_t values;
        bool (KeyboardFirmware::*take)(const int* values, std::optional<Payload>& report);
    };
    static constexpr Event table[]{
        {"profile", 1, &KeyboardFirmware::pressProfile},
        {"effect", 1, &KeyboardFirmware::pressEffect},
        {"key", 2, &KeyboardFirmware::pressKey},
    };
    const auto found = std::ranges::find_if(
        table, [&](const Event& one) { return event == one.name && values.size() == one.values; });
    if (found == std::end(table))
        return false;
    std::optional<Payload> report;
    {
        const std::lock_guard lock(mutex);
        if (!std::invoke(found->take, this, values.data(), report))
            return false;
    }
    if (report)
        emit(*report);
    return true;
}

std::vector<std::string> KeyboardFirmware::events() const
{
    return {"profile N", "effect MODE", "key NUMBER STATE"};
}

bool KeyboardFirmware::pressProfile(const int* values, std::optional<Payload>& report)
{
    if (!within(values[0], profileCount))
        return false;
    useProfile(values[0]);
    if (profileReports)
        report = Payload{0x42, 0x20, 0x00, currentProfile, 0x01};
    return true;
}

bool KeyboardFirmware::pressEffect(const int* values, std::optional<Payload>& report)
{
    if (!within(values[0], effectCount))
        return false;
    current().effects.mode = std::uint8_t(values[0]);
    previewShown = false;
    if (effectReports)
        report = Payload{0x42, 0x20, 0x00, currentProfile, 0, 0, 0, 0x01};
    return true;
}

bool KeyboardFirmware::pressKey(const int* values, std::optional<Payload>& report)
{
    if (!within(values[0], 256) || !within(values[1], 256))
        return false;
    const std::uint8_t state = values[1] == 0   ? keyIsUp
                               : values[1] == 1 ? keyIsDown
                                                : std::uint8_t(values[1]);
    if (keyReports)
        report = Payload{0x43, 0x01, 0x00, 0x00, std::uint8_t(values[0]), state};
    return true;
}

KeyboardFirmware::Lights KeyboardFirmware::shown() const
{
    if (hostDrives)
        return host;
    if (previewShown)
        return played(preview.image, {preview.frames, 0, 0, {}});
    const Effects& effects = current().effects;
    return played(effects.image, effects.descriptors[effects.mode]);
}

KeyboardFirmware::Lights KeyboardFirmware::played(std::span<const std::uint8_t> image,
                                                  const Descriptor& effect) const
{
    Lights lights{};
    const Record everywhere(ledCount / 8, 0xFF); // one frame has no mask
    std::size_t entry = 4 * (std::size_t(effect.header) + effect.extraWords);
    std::size_t masks = 0;
    if (effect.frames > 1) {
        masks = 4 * std::size_t(wordAt(image, entry));
        entry += 4;
    }
    for (std::size_t frame = 0; frame < effect.frames && entry + 4 <= image.size(); ++frame, entry += 4)
        paint(lights, part(image, 4 * std::size_t(wordAt(image, entry)), customSize),
              effect.frames > 1 ? part(image, masks + model.maskBytes * frame, model.maskBytes)
                                : std::span<const std::uint8_t>(everywhere));
    return lights;
}

void KeyboardFirmware::paint(Lights& lights, std::span<const std::uint8_t> record,
                             std::span<const std::uint8_t> mask) const
{
    constexpr int nothing = 0x0010, custom = 0x0180, statusFrame = 0xF004;
    const int opcode = wordAt(record, 0);
    if (record.size() < 4 || opcode == nothing)
        return;
    const int brightness = record.size() > recordBrightness ? record[recordBrightness] : 0;
    for (std::size_t led = 0; led < lights.size() && led / 8 < mask.size(); ++led) {
        if (!(mask[led / 8] >> led % 8 & 1))
            continue;
        lights[led] = opcode == statusFrame ? status[led]
                      : opcode == custom    ? dimmed(lightAt(record, customColors + 3 * led), brightness)
                                            : dimmed(lightAt(record, recordColor), brightness);
    }
}

Picture KeyboardFirmware::picture() const
{
    const Lights lights = this->lights();
    const std::size_t rows = std::size_t(model.rows);
    Picture picture(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        picture[row].name = "row " + std::to_string(row + 1);
        for (std::size_t led = row; led < lights.size(); led += rows)
            picture[row].leds.push_back(lights[led]);
    }
    return picture;
}

KeyboardFirmware::State KeyboardFirmware::state() const
{
    const std::lock_guard lock(mutex);
    return firmwareState;
}

int KeyboardFirmware::profile() const
{
    const std::lock_guard lock(mutex);
    return currentProfile;
}

KeyboardFirmware::Effects KeyboardFirmware::effects(int profile) const
{
    const std::lock_guard lock(mutex);
    return profiles.at(std::size_t(profile)).effects;
}

KeyboardFirmware::Effects KeyboardFirmware::savedEffects(int profile) const
{
    const std::lock_guard lock(mutex);
    return stored.at(std::size_t(profile));
}

KeyboardFirmware::Keys KeyboardFirmware::keys(int profile) const
{
    const std::lock_guard lock(mutex);
    return profiles.at(std::size_t(profile)).keys;
}

KeyboardFirmware::Macro KeyboardFirmware::macro(int profile, int number) const
{
    const std::lock_guard lock(mutex);
    return profiles.at(std::size_t(profile)).macros.at(std::size_t(number));
}

bool KeyboardFirmware::driven() const
{
    const std::lock_guard lock(mutex);
    return hostDrives;
}

bool KeyboardFirmware::previewing() const
{
    const std::lock_guard lock(mutex);
    return previewShown;
}

KeyboardFirmware::Lights KeyboardFirmware::lights() const
{
    const std::lock_guard lock(mutex);
    return shown();
}

int KeyboardFirmware::frames() const
{
    const std::lock_guard lock(mutex);
    return frameCount;
}

int KeyboardFirmware::acknowledgements() const
{
    const std::lock_guard lock(mutex);
    return ackCount;
}

int KeyboardFirmware::saves() const
{
    const std::lock_guard lock(mutex);
    return saveCount;
}

} // namespace pyrux::sim
