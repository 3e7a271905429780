#include "simulator/models/keyboard.h"

#include "simulator/models/lights.h"

#include <algorithm>
#include <optional>

namespace pyrux::sim {

namespace {

constexpr MacroEvent endEvent{0x00, 0xFC, 0xFE, 0xFF};
constexpr std::uint16_t ownFunction = 0x00FF;
constexpr std::size_t keysOfPage = 16;
constexpr std::size_t mostLeds = 15;
constexpr std::size_t mostStatusLeds = 18;
constexpr std::size_t statusFrom = 8;

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

/// Puts the effect memory together, one piece after the other.
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
    fillWith(endEvent, macro.events);
    return macro;
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

KeyboardFirmware::KeyboardFirmware(const char* name, std::uint16_t pid, std::size_t rowCount,
                                   std::size_t bytes)
    : EchoFirmware(identityOf(name, pid, 0x0104, besideKeyboard(), 1),
                   {.end = endEvent, .beyond = {}, .leastWritten = 0}),
      rows(rowCount), maskBytes(bytes)
{
    reset();
    constexpr States settings = configuration | collecting | host;
    takes(stateRows());
    takes(settingRows(settings));
    takes(macroRows(settings));
    takes(effectRows());
    takes(lightRows());
    does(keyEvents());
}

std::vector<Row> KeyboardFirmware::stateRows()
{
    const auto to = [this](State next) { return done([this, next] { enter(next); }); };
    return {
        {"41 00", to(off)},
        {"41 01", to(maintenance)},
        {"41 02", to(collecting)},
        {"41 03", to(host)},
        {"41 80", to(configuration)},
        {"42 00",
         [this](auto& c) {
             now.profileReports = c[4] == 1;
             now.effectReports = c[7] == 1;
         }},
        {"42 10 .. .. 01 .. .. 01", [this] { ++now.acks; }},
        {"43 00", done([this](auto& c) { now.keyReports = c[4] == 1; })},
        {"50 10 .. .. 00", maintenance, done([this] { current() = factory(); })},
        {"50 10 .. .. FF", maintenance, done([this] { reset(); })},
        {"50 55", maintenance,
         [this] {
             for (std::size_t i = 0; i < profiles.size(); ++i)
                 stored[i] = profiles[i].effects;
             ++now.saves;
             return accepted();
         }},
    };
}

std::vector<Row> KeyboardFirmware::settingRows(States taken)
{
    return {
        {"51 00", taken,
         [this](auto& c) {
             if (c[4] >= profileCount)
                 return refused();
             useProfile(c[4]);
             return accepted();
         }},
        {"52 00", taken, [this] { return told(currentProfile); }},
        {"51 20", taken,
         [this](auto& c) {
             current().keys.actions[c[2]] = {c[3], c[4], c[5]};
             if (c[3] == 0)
                 current().keys.map[c[2]] = c.word(4);
             return accepted();
         }},
        {"51 21", taken, [this](auto& c) { return setKeyPage(c); }},
        {"52 21", taken, [this](auto& c) { return getKeyPage(c); }},
        {"51 18", taken,
         [this](auto& c) {
             if (c[2] >= macroCount)
                 return refused();
             cursor = Cursor{c[2], 0};
             return carry(c, dataFrom, current().macros[c[2]].header);
         }},
        {"52 18", taken,
         [this](auto& c) {
             return c[2] < macroCount ? carry(c, dataFrom, current().macros[c[2]].header) : refused();
         }},
        {"51/52 19", taken,
         [this](auto& c) {
             return c[2] < macroCount ? carry(c, dataFrom, current().macros[c[2]].name) : refused();
         }},
        {"51 28", taken, [this](auto& c) { return setMode(c[4]); }},
        {"52 28", taken, [this] { return told(now.previewShown ? previewMode : current().effects.mode); }},
        {"51 98", taken, done([this](auto& c) { resetParts(c[2]); })},
    };
}

std::vector<Row> KeyboardFirmware::effectRows()
{
    return {
        {"56 14",
         [this](auto& c) {
             if (c[2] >= effectCount)
                 return refused();
             const Descriptor& one = current().effects.descriptors[c[2]];
             return told(one.frames, one.extraWords, one.header & 0xFF, one.header >> 8);
         }},
        {"56 15",
         [this](auto& c) {
             if (c[2] >= effectCount)
                 return refused();
             current().effects.descriptors[c[2]] = {c[4], c[5], c.word(6), c.template array<4>(8)};
             return accepted();
         }},
        {"56 20/21", [this](auto& c) { return carryPage(c, current().effects.image); }},
        {"56 81",
         [this](auto& c) {
             now.preview = {};
             now.preview.frames = c[8];
             return accepted();
         }},
        {"56 83", [this](auto& c) { return carryPage(c, now.preview.image); }},
    };
}

std::vector<Row> KeyboardFirmware::lightRows()
{
    return {
        {"56 42 .. .. 02", [this](auto& c) { takeStatus(c); }},
        {"C0 F0", host, [this](auto& c) { now.hostDrives = c[4] == 1; }},
        {"C0 00",
         [this](auto& c) {
             if (!now.hostDrives)
                 return;
             now.fromHost.fill({c[4], c[5], c[6]});
             countFrame();
         }},
        {"C0 01", [this](auto& c) { takeLeds(c); }},
    };
}

/// Reports go out only where the host has asked for them.
std::vector<Event> KeyboardFirmware::keyEvents()
{
    return {
        {"profile",
         {{"N", 0, profileCount - 1}},
         [this](auto& values) {
             useProfile(values[0]);
             return now.profileReports ? report(joined(0x42, 0x20, 0x00, currentProfile, 0x01)) : silence();
         }},
        {"effect",
         {{"MODE", 0, effectCount - 1}},
         [this](auto& values) {
             setMode(std::uint8_t(values[0]));
             return now.effectReports ? report(joined(0x42, 0x20, 0x00, currentProfile, 0, 0, 0, 0x01))
                                      : silence();
         }},
        {"key",
         {{"NUMBER", 0, 255}, {"STATE", 0, 255}},
         [this](auto& values) { return now.keyReports ? keyReport(values) : silence(); }},
    };
}

KeyboardFirmware::Settings KeyboardFirmware::factory() const
{
    Settings settings;
    settings.keys.map.fill(ownFunction);
    settings.keys.actions.fill({0, std::uint8_t(ownFunction), std::uint8_t(ownFunction >> 8)});
    settings.macros.fill(emptyMacro());
    settings.effects = assembled(maskBytes);
    return settings;
}

void KeyboardFirmware::restart()
{
    for (std::size_t i = 0; i < profiles.size(); ++i)
        profiles[i].effects = stored[i];
    setState(off);
    cursor.reset();
    now = {};
}

void KeyboardFirmware::enter(State next)
{
    setState(next);
    if (next == maintenance)
        now.previewShown = false;
    if (next == off)
        now.hostDrives = false;
}

void KeyboardFirmware::reset()
{
    profiles.fill(factory());
    stored.fill(profiles[0].effects);
    useProfile(0);
}

void KeyboardFirmware::useProfile(int number)
{
    currentProfile = std::uint8_t(number);
    now.previewShown = false;
    cursor.reset();
}

Answer KeyboardFirmware::setKeyPage(const Command& command)
{
    if (command[2] >= keyCount / keysOfPage)
        return refused();
    for (std::size_t i = 0; i < keysOfPage; ++i) {
        const std::size_t key = keysOfPage * command[2] + i;
        const std::uint16_t value = command.word(dataFrom + 2 * i);
        current().keys.map[key] = value;
        current().keys.actions[key] = {0, std::uint8_t(value), std::uint8_t(value >> 8)};
    }
    return accepted();
}

Answer KeyboardFirmware::getKeyPage(const Command& command) const
{
    if (command[2] >= keyCount / keysOfPage)
        return refused();
    std::vector<std::uint8_t> values;
    for (std::size_t i = 0; i < keysOfPage; ++i) {
        const std::uint16_t value = current().keys.map[keysOfPage * command[2] + i];
        values.push_back(std::uint8_t(value));
        values.push_back(std::uint8_t(value >> 8));
    }
    return told(values);
}

Answer KeyboardFirmware::setMode(std::uint8_t mode)
{
    if (mode != previewMode && mode >= effectCount)
        return refused();
    now.previewShown = mode == previewMode;
    if (!now.previewShown)
        current().effects.mode = mode;
    return accepted();
}

void KeyboardFirmware::resetParts(std::uint8_t bits)
{
    Settings fresh = factory();
    if (bits & 1)
        current().effects = fresh.effects;
    if (bits & 2)
        current().keys = fresh.keys;
    if (bits & 4)
        current().macros = fresh.macros;
}

/// A page of an image, which 20 reads and the others write.
Answer KeyboardFirmware::carryPage(const Command& command, std::span<std::uint8_t> image)
{
    if (command[2] >= image.size() / pageSize)
        return refused();
    return carried(command[1] != 0x20, command, dataFrom, image.subspan(pageSize * command[2], pageSize));
}

void KeyboardFirmware::takeStatus(const Command& command)
{
    if (command[5] > mostStatusLeds)
        return;
    for (std::size_t i = 0; i < command[5]; ++i)
        if (const std::size_t led = command[6] + i; led < now.status.size())
            now.status[led] = lightAt(command.all(), statusFrom + 3 * i);
    countFrame();
}

void KeyboardFirmware::takeLeds(const Command& command)
{
    if (!now.hostDrives || command[2] > mostLeds)
        return;
    for (std::size_t at = dataFrom; at < dataFrom + 4 * std::size_t(command[2]); at += 4)
        if (command[at] < now.fromHost.size())
            now.fromHost[command[at]] = {command[at + 1], command[at + 2], command[at + 3]};
    countFrame();
}

KeyboardFirmware::Lights KeyboardFirmware::shown() const
{
    if (now.hostDrives)
        return now.fromHost;
    if (now.previewShown)
        return played(now.preview.image, {now.preview.frames, 0, 0, {}});
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
              effect.frames > 1 ? part(image, masks + maskBytes * frame, maskBytes)
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
        lights[led] = opcode == statusFrame ? now.status[led]
                      : opcode == custom    ? dimmed(lightAt(record, customColors + 3 * led), brightness)
                                            : dimmed(lightAt(record, recordColor), brightness);
    }
}

Picture KeyboardFirmware::drawn() const
{
    const Lights lights = shown();
    Picture picture(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        picture[row].name = "row " + std::to_string(row + 1);
        for (std::size_t led = row; led < lights.size(); led += rows)
            picture[row].leds.push_back(lights[led]);
    }
    return picture;
}

KeyboardFirmware::Macro KeyboardFirmware::macro(int profile, int number) const
{
    return copyOf(profiles.at(std::size_t(profile)).macros.at(std::size_t(number)));
}

KeyboardFirmware::Lights KeyboardFirmware::lights() const
{
    return found([this] { return shown(); });
}

} // namespace pyrux::sim
