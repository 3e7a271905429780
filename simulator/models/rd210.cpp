#include "simulator/models/rd210.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

// Places in the blocks of settings, counted from the blocks' beginnings.
constexpr std::size_t currentPlace = 4 - 4; // performance
constexpr std::size_t enabledCount = 5 - 4;
constexpr std::size_t surfaceA = 29 - 4;
constexpr std::size_t surfaceB = 30 - 4;
constexpr std::size_t shiftButton = 12 - 2; // bank
constexpr std::size_t bankSetting = 16 - 2;

constexpr std::uint8_t noOrder = 0xFF;
constexpr std::uint8_t noButton = 0xFF;
constexpr std::uint16_t ownFunction = 0x00FF;
constexpr std::uint16_t shiftFunction = 0x01EA;
constexpr std::uint8_t shiftKeyAddress = 0xD8;
constexpr std::array<std::uint8_t, 3> noMacro{0xFF, 0x3F, 0x00};

constexpr MacroEvent endEvent{0x00, 0xFC, 0x00, 0x00};

using Settings = RD210Firmware::Settings;

/// Payload bytes 4 to 30 of 0x40; a DPI value v is stored as (v - 100) / 100.
constexpr std::array<std::uint8_t, 27> factoryPerformance{
    1,  7,                        // place of the current level, enabled levels
    3,  7,  15, 31, 63, 119, 159, // y: 400, 800, 1600, 3200, 6400, 12000, 16000
    3,  7,  15, 31, 63, 119, 159, // x
    0,  0,  0,  0,  0,  0,   0,   // multipliers
    1,  2,                        // polling, options
    10, 16,                       // surface
};

Settings factorySettings()
{
    Settings settings;
    settings.order.fill(noOrder);
    std::ranges::copy(factoryPerformance, settings.performance.begin());
    settings.settingF0 = {1};
    settings.bank[shiftButton] = noButton;
    settings.bank[bankSetting] = 3;
    settings.wheel = {0xC0, 0xC0};
    settings.keys.fill(ownFunction);
    settings.shiftKey = shiftFunction;
    settings.assignments.fill(noMacro);
    for (auto& area : settings.macros)
        fillWith(endEvent, area);
    return settings;
}

/// A bit of 51 98 and what it brings back.
struct ResettablePart {
    int bit;
    void (*apply)(Settings& settings, const Settings& factory);
};

constexpr ResettablePart resettableParts[]{
    // Macros with their names; buttons that had one get their own function.
    {1,
     [](Settings& settings, const Settings& factory) {
         settings.assignments = factory.assignments;
         settings.names = factory.names;
         settings.macros = factory.macros;
     }},
    // What the buttons do.
    {2,
     [](Settings& settings, const Settings& factory) {
         settings.keys = factory.keys;
         settings.shiftKey = factory.shiftKey;
         settings.assignments = factory.assignments;
         settings.bank[shiftButton] = factory.bank[shiftButton];
         settings.wheel = factory.wheel;
     }},
    // Performance, and with it the settings beside it and the wheel, which a host puts back.
    {4,
     [](Settings& settings, const Settings& factory) {
         settings.order = factory.order;
         settings.performance = factory.performance;
         settings.settingF0 = factory.settingF0;
         settings.bank[bankSetting] = factory.bank[bankSetting];
         settings.wheel = factory.wheel;
     }},
};

std::uint8_t address(int button)
{
    return button == 6 ? 0xBE : button == 7 ? 0xBF : std::uint8_t(0xB0 + (button & 7));
}

/// The place of an address and page in the tables of 32; none: 32.
std::size_t tablePlace(std::uint8_t at, std::uint8_t page)
{
    constexpr std::size_t none = 32;
    return (at & 0xF0) == 0xB0 && page < 2 ? page * 16u + (at & 0x0F) : none;
}

std::size_t tablePlace(int button)
{
    return tablePlace(address(button), std::uint8_t(button >> 3));
}

} // namespace

RD210Firmware::RD210Firmware(Identity identity)
    : EchoFirmware(std::move(identity), {.end = endEvent, .beyond = endEvent, .leastWritten = 1}),
      working(factoryMemory()), saved(working)
{
    takes(stateRows());
    takes(settingRows());
    takes(macroRows(configuration));
    does(buttonEvents());
}

RD210Firmware::Memory RD210Firmware::factoryMemory()
{
    Memory memory;
    memory.profiles.fill(factorySettings());
    return memory;
}

std::vector<Row> RD210Firmware::stateRows()
{
    const auto taken = [] { return accepted(); };
    const auto to = [this](State next) { return done([this, next] { enter(next); }); };
    return {
        {"41 00", to(off)},
        {"41 01", to(maintenance)},
        {"41 80", to(configuration)},
        {"42 00", taken},
        {"42 10 00 .. 01", done([this] { ++now.profileAcks; })},
        {"42 10 40 .. 01", done([this] { ++now.dpiAcks; })},
        {"42 10", taken},
        {"43 00", taken},
        {"50 10 .. .. 00", maintenance, done([this] { resetProfile(); })},
        {"50 10 .. .. FF", maintenance, done([this] { resetEverything(); })},
        {"50 55", maintenance, done([this] { save(); })},
        {"80 00", configuration, [this] { return told(int(now.learning)); }},
        {"80 01 .. .. 00", done([this] { now.learning = false; })},
        {"80 01 .. .. 01", configuration, done([this] { now.learning = true; })},
    };
}

std::vector<Row> RD210Firmware::settingRows()
{
    return {
        {"51 00", configuration, [this](auto& c) { return accepted(setProfile(c[4])); }},
        {"52 00", configuration, [this] { return told(working.profile); }},
        {"51/52 10", configuration, [this](auto& c) { return carry(c, 2, current().bank); }},
        {"51/52 18", configuration, [this](auto& c) { return carryAssignment(c); }},
        {"51/52 19", configuration,
         [this](auto& c) { return c[2] < buttonCount ? carry(c, 4, current().names[c[2]]) : refused(); }},
        {"51/52 20", configuration, [this](auto& c) { return carryKey(c); }},
        {"51 22", configuration | maintenance,
         [this](auto& c) {
             now.recording = EchoFirmware::state() == maintenance;
             return carry(c, 4, current().wheel);
         }},
        {"52 22", configuration, [this](auto& c) { return carry(c, 4, current().wheel); }},
        {"51/52 40", configuration, [this](auto& c) { return carry(c, 4, current().performance); }},
        {"51 98", configuration, done([this](auto& c) { resetParts(c[2]); })},
        {"51/52 9B", configuration, [this](auto& c) { return carry(c, 4, current().order); }},
        {"51/52 F0", configuration, [this](auto& c) { return carry(c, 4, current().settingF0); }},
    };
}

std::vector<Event> RD210Firmware::buttonEvents()
{
    return {
        {"dpi", {{"LEVEL", 0, levelCount - 1}}, [this](auto& values) { return pressDpi(values[0]); }},
        {"profile",
         {{"N", 0, profileCount - 1}},
         [this](auto& values) {
             setProfile(values[0]);
             return report(joined(0x42, 0x20, 0x00, working.profile, 0x01));
         }},
        {"key", {{"NUMBER", 0, 255}, {"STATE", 0, 255}}, [](auto& values) { return keyReport(values); }},
        {"surface",
         {{"A", 0, 255}, {"B", 0, 255}},
         [this](auto& values) {
             if (!now.learning)
                 return refused();
             current().performance[surfaceA] = std::uint8_t(values[0]);
             current().performance[surfaceB] = std::uint8_t(values[1]);
             now.learning = false;
             return silence();
         }},
    };
}

void RD210Firmware::restart()
{
    working = saved;
    setState(off);
    cursor.reset();
    now = {};
}

void RD210Firmware::enter(State next)
{
    setState(next);
    now.recording = false;
}

void RD210Firmware::resetProfile()
{
    current() = factorySettings();
}

void RD210Firmware::resetEverything()
{
    saved = working = factoryMemory();
}

void RD210Firmware::save()
{
    saved = working;
    ++now.saves;
}

bool RD210Firmware::setProfile(int profile)
{
    if (profile < 0 || profile >= profileCount)
        return false;
    working.profile = std::uint8_t(profile);
    return true;
}

std::uint16_t* RD210Firmware::keyAt(std::uint8_t at, std::uint8_t page)
{
    if (at == shiftKeyAddress && page == 0)
        return &current().shiftKey;
    const std::size_t place = tablePlace(at, page);
    return place < current().keys.size() ? &current().keys[place] : nullptr;
}

Answer RD210Firmware::carryKey(const Command& command)
{
    std::uint16_t* const code = keyAt(command[2], command[3]);
    if (!code)
        return refused();
    std::array bytes{std::uint8_t(*code), std::uint8_t(*code >> 8)};
    Answer answer = carry(command, 4, bytes);
    *code = std::uint16_t(bytes[0] | bytes[1] << 8);
    return answer;
}

/// Points the cursor at the assignment's area too; at nothing for "no macro", which is the number 3FF.
Answer RD210Firmware::carryAssignment(const Command& command)
{
    if (command[2] >= buttonCount)
        return refused();
    auto& assignment = current().assignments[command[2]];
    Answer answer = carry(command, 4, assignment);
    cursor.reset();
    const std::size_t area = tablePlace(assignment[0], assignment[1] & 3);
    if (area < current().macros.size())
        cursor = Cursor{area, 0};
    return answer;
}

/// The bits stand in bytes 2 to 5, low byte first; the parts there are fit into the first.
void RD210Firmware::resetParts(std::uint8_t bits)
{
    const Settings factory = factorySettings();
    for (const ResettablePart& part : resettableParts)
        if (bits >> part.bit & 1)
            part.apply(current(), factory);
}

Answer RD210Firmware::pressDpi(int wanted)
{
    auto& performance = current().performance;
    const std::size_t enabled = std::min<std::size_t>(performance[enabledCount], levelCount);
    for (std::size_t place = 0; place < enabled; ++place) {
        if (levelAtPlace(place) != wanted)
            continue;
        performance[currentPlace] = std::uint8_t(place);
        return report(joined(0x42, 0x20, 0x40, wanted, 0x01));
    }
    return refused();
}

int RD210Firmware::levelAtPlace(std::size_t place) const
{
    const auto& order = current().order;
    return order[0] == noOrder || place >= order.size() ? int(place) : order[place];
}

int RD210Firmware::level() const
{
    return found([this] { return levelAtPlace(current().performance[currentPlace]); });
}

std::uint16_t RD210Firmware::key(int button) const
{
    return found([&] { return current().keys.at(tablePlace(button)); });
}

RD210Firmware::MacroArea RD210Firmware::macro(int button) const
{
    return found([&] { return current().macros.at(tablePlace(button)); });
}

} // namespace pyrux::sim
