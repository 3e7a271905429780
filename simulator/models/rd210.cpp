#include "simulator/models/rd210.h"

#include <algorithm>
#include <functional>
#include <utility>

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

constexpr std::uint8_t resetCurrent = 0x00;
constexpr std::uint8_t resetEverything = 0xFF;
constexpr std::size_t eventSize = 4;
constexpr std::size_t mostChunkEvents = 15;
constexpr std::array<std::uint8_t, eventSize> endEvent{0x00, 0xFC, 0x00, 0x00};

constexpr std::uint8_t keyIsUp = 0x40;
constexpr std::uint8_t keyIsDown = 0xC0;

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

void wipe(RD210Firmware::MacroArea& area)
{
    for (std::size_t i = 0; i < area.size(); ++i)
        area[i] = endEvent[i % eventSize];
}

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
        wipe(area);
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

bool within(int value, int count)
{
    return value >= 0 && value < count;
}

} // namespace

struct RD210Firmware::Command {
    /// States in which a command is taken.
    enum : unsigned { inConfiguration = 1, inMaintenance = 2, inOff = 4, inLive = 8, inAny = 15 };

    std::uint8_t first;
    std::uint8_t second;
    unsigned states;
    bool (RD210Firmware::*take)(const Payload& command, Payload& reply);

    static unsigned bitOf(State state)
    {
        switch (state) {
        case State::configuration:
            return inConfiguration;
        case State::maintenance:
            return inMaintenance;
        case State::live:
            return inLive;
        case State::off:
            break;
        }
        return inOff;
    }
};

struct RD210Firmware::Block {
    std::uint8_t number;
    std::size_t from; ///< Payload byte at which it begins.
    std::span<std::uint8_t> (*of)(Settings& settings);
};

RD210Firmware::RD210Firmware() : working(factoryMemory()), saved(working) {}

RD210Firmware::Memory RD210Firmware::factoryMemory()
{
    Memory memory;
    memory.profiles.fill(factorySettings());
    return memory;
}

const Identity& RD210Firmware::identity() const
{
    // Never destroyed: a write may hang in the model to the end of the process.
    static const Identity& rd210 = *new Identity{
        .vid = 0x3A7E,
        .pid = 0x012F,
        .release = 0x0103,
        .serial = "RD210-000001",
        .product = "RD210",
        .manufacturer = "Tessel Works",
        .collections = {{.interface = 0, .usagePage = 0x0001, .usage = 0x0002},
                        {.interface = 1, .usagePage = 0xFF00, .usage = 0x0001}},
        .controlInterface = 1,
    };
    return rd210;
}

void RD210Firmware::powerOn()
{
    const std::lock_guard lock(mutex);
    working = saved;
    firmwareState = State::off;
    cursor.reset();
    recordingKeys = learningSurface = false;
    profileAcks = dpiAcks = saveCount = 0;
}

void RD210Firmware::output(Bytes payload)
{
    Payload command{};
    std::ranges::copy(payload.first(std::min(payload.size(), command.size())), command.begin());
    std::optional<Payload> reply;
    {
        const std::lock_guard lock(mutex);
        reply = answer(command);
    }
    if (reply)
        emit(*reply);
}

std::optional<RD210Firmware::Payload> RD210Firmware::answer(const Payload& command)
{
    using C = Command;
    using F = RD210Firmware;
    static constexpr Command commands[]{
        {0x41, 0x00, C::inAny, &F::enterState},
        {0x41, 0x01, C::inAny, &F::enterState},
        {0x41, 0x80, C::inAny, &F::enterState},
        {0x42, 0x00, C::inAny, &F::askForReports},
        {0x42, 0x10, C::inAny, &F::acknowledge},
        {0x43, 0x00, C::inAny, &F::askForReports},
        {0x50, 0x10, C::inMaintenance, &F::resetProfile},
        {0x50, 0x55, C::inMaintenance, &F::save},
        {0x51, 0x00, C::inConfiguration, &F::setProfile},
        {0x51, 0x10, C::inConfiguration, &F::setBlock},
        {0x51, 0x18, C::inConfiguration, &F::setAssignment},
        {0x51, 0x19, C::inConfiguration, &F::setName},
        {0x51, 0x20, C::inConfiguration, &F::setKey},
        {0x51, 0x22, C::inConfiguration | C::inMaintenance, &F::setWheel},
        {0x51, 0x40, C::inConfiguration, &F::setBlock},
        {0x51, 0x98, C::inConfiguration, &F::resetParts},
        {0x51, 0x9B, C::inConfiguration, &F::setBlock},
        {0x51, 0xF0, C::inConfiguration, &F::setBlock},
        {0x52, 0x00, C::inConfiguration, &F::getProfile},
        {0x52, 0x10, C::inConfiguration, &F::getBlock},
        {0x52, 0x18, C::inConfiguration, &F::getAssignment},
        {0x52, 0x19, C::inConfiguration, &F::getName},
        {0x52, 0x20, C::inConfiguration, &F::getKey},
        {0x52, 0x22, C::inConfiguration, &F::getBlock},
        {0x52, 0x40, C::inConfiguration, &F::getBlock},
        {0x52, 0x9B, C::inConfiguration, &F::getBlock},
        {0x52, 0xF0, C::inConfiguration, &F::getBlock},
        {0x53, 0x00, C::inConfiguration, &F::writeMacro},
        {0x53, 0x01, C::inConfiguration, &F::writeMacro},
        {0x53, 0x10, C::inConfiguration, &F::readMacro},
        {0x53, 0x11, C::inConfiguration, &F::readMacro},
        {0x80, 0x00, C::inConfiguration, &F::getLearning},
        {0x80, 0x01, C::inAny, &F::setLearning},
    };
    const auto found = std::ranges::find_if(
        commands, [&](const Command& one) { return one.first == command[0] && one.second == command[1]; });
    if (found == std::end(commands) || !(found->states & Command::bitOf(firmwareState)))
        return {};
    Payload reply{};
    std::copy_n(command.begin(), 4, reply.begin());
    if (!std::invoke(found->take, this, command, reply))
        return {};
    return reply;
}

void RD210Firmware::setState(State to)
{
    firmwareState = to;
    recordingKeys = false;
}

bool RD210Firmware::enterState(const Payload& command, Payload&)
{
    setState(State(command[1]));
    return true;
}

bool RD210Firmware::askForReports(const Payload&, Payload&)
{
    return true;
}

bool RD210Firmware::acknowledge(const Payload& command, Payload&)
{
    if (command[4] == 1 && command[2] == 0x00)
        ++profileAcks;
    if (command[4] == 1 && command[2] == 0x40)
        ++dpiAcks;
    return true;
}

bool RD210Firmware::resetProfile(const Payload& command, Payload&)
{
    if (command[4] == resetEverything)
        saved = working = factoryMemory();
    else if (command[4] == resetCurrent)
        current() = factorySettings();
    else
        return false;
    return true;
}

bool RD210Firmware::save(const Payload&, Payload&)
{
    saved = working;
    ++saveCount;
    return true;
}

bool RD210Firmware::setProfileLocked(int profile)
{
    if (!within(profile, profileCount))
        return false;
    working.profile = std::uint8_t(profile);
    return true;
}

bool RD210Firmware::setProfile(const Payload& command, Payload&)
{
    return setProfileLocked(command[4]);
}

bool RD210Firmware::getProfile(const Payload&, Payload& reply)
{
    reply[4] = working.profile;
    return true;
}

const RD210Firmware::Block& RD210Firmware::block(std::uint8_t number)
{
    static constexpr Block blocks[]{
        {0x10, 2, [](Settings& settings) { return std::span<std::uint8_t>(settings.bank); }},
        {0x22, 4, [](Settings& settings) { return std::span<std::uint8_t>(settings.wheel); }},
        {0x40, 4, [](Settings& settings) { return std::span<std::uint8_t>(settings.performance); }},
        {0x9B, 4, [](Settings& settings) { return std::span<std::uint8_t>(settings.order); }},
        {0xF0, 4, [](Settings& settings) { return std::span<std::uint8_t>(settings.settingF0); }},
    };
    return *std::ranges::find(blocks, number, &Block::number);
}

bool RD210Firmware::setBlock(const Payload& command, Payload&)
{
    const Block& which = block(command[1]);
    const std::span<std::uint8_t> bytes = which.of(current());
    std::copy_n(command.begin() + std::ptrdiff_t(which.from), bytes.size(), bytes.begin());
    return true;
}

bool RD210Firmware::getBlock(const Payload& command, Payload& reply)
{
    const Block& which = block(command[1]);
    std::ranges::copy(which.of(current()), reply.begin() + std::ptrdiff_t(which.from));
    return true;
}

bool RD210Firmware::setWheel(const Payload& command, Payload& reply)
{
    recordingKeys = firmwareState == State::maintenance;
    return setBlock(command, reply);
}

std::uint16_t* RD210Firmware::keyAt(std::uint8_t at, std::uint8_t page)
{
    if (at == shiftKeyAddress && page == 0)
        return &current().shiftKey;
    const std::size_t place = tablePlace(at, page);
    return place < current().keys.size() ? &current().keys[place] : nullptr;
}

bool RD210Firmware::setKey(const Payload& command, Payload&)
{
    std::uint16_t* const code = keyAt(command[2], command[3]);
    if (!code)
        return false;
    *code = std::uint16_t(command[4] | command[5] << 8);
    return true;
}

bool RD210Firmware::getKey(const Payload& command, Payload& reply)
{
    const std::uint16_t* const code = keyAt(command[2], command[3]);
    if (!code)
        return false;
    reply[4] = std::uint8_t(*code);
    reply[5] = std::uint8_t(*code >> 8);
    return true;
}

/// Points the cursor at an assignment's area; at nothing for "no macro", which is the number 3FF.
void RD210Firmware::pointAt(const std::array<std::uint8_t, 3>& assignment)
{
    cursor.reset();
    const std::size_t area = tablePlace(assignment[0], assignment[1] & 3);
    if (area < current().macros.size())
        cursor = Cursor{area, 0};
}

bool RD210Firmware::setAssignment(const Payload& command, Payload&)
{
    if (command[2] >= buttonCount)
        return false;
    auto& assignment = current().assignments[command[2]];
    std::copy_n(command.begin() + 4, assignment.size(), assignment.begin());
    pointAt(assignment);
    return true;
}

bool RD210Firmware::getAssignment(const Payload& command, Payload& reply)
{
    if (command[2] >= buttonCount)
        return false;
    const auto& assignment = current().assignments[command[2]];
    std::ranges::copy(assignment, reply.begin() + 4);
    pointAt(assignment);
    return true;
}

bool RD210Firmware::setName(const Payload& command, Payload&)
{
    if (command[2] >= buttonCount)
        return false;
    auto& name = current().names[command[2]];
    std::copy_n(command.begin() + 4, name.size(), name.begin());
    return true;
}

bool RD210Firmware::getName(const Payload& command, Payload& reply)
{
    if (command[2] >= buttonCount)
        return false;
    std::ranges::copy(current().names[command[2]], reply.begin() + 4);
    return true;
}

bool RD210Firmware::resetParts(const Payload& command, Payload&)
{
    // The bits stand in bytes 2 to 5, low byte first; the parts there are fit into the first.
    const Settings factory = factorySettings();
    for (const ResettablePart& part : resettableParts)
        if (command[2] >> part.bit & 1)
            part.apply(current(), factory);
    return true;
}

/// The first event that a 53 command is about; none: there is no area, or its events fill no report.
std::optional<std::size_t> RD210Firmware::chunkBegin(const Payload& command) const
{
    const bool goesOn = command[1] & 1;
    if (!cursor || command[2] == 0 || command[2] > mostChunkEvents)
        return {};
    return goesOn ? cursor->event : 0;
}

bool RD210Firmware::writeMacro(const Payload& command, Payload&)
{
    const auto begin = chunkBegin(command);
    const std::size_t end = begin.value_or(0) + command[2];
    if (!begin || end > macroEvents)
        return false;
    MacroArea& area = current().macros[cursor->area];
    if (*begin == 0)
        wipe(area);
    std::copy_n(command.begin() + 4, eventSize * command[2],
                area.begin() + std::ptrdiff_t(eventSize * *begin));
    cursor->event = end;
    return true;
}

bool RD210Firmware::readMacro(const Payload& command, Payload& reply)
{
    const auto begin = chunkBegin(command);
    if (!begin)
        return false;
    const MacroArea& area = current().macros[cursor->area];
    for (std::size_t i = 0; i < eventSize * command[2]; ++i) {
        const std::size_t at = eventSize * *begin + i;
        reply[4 + i] = at < area.size() ? area[at] : endEvent[at % eventSize];
    }
    cursor->event = *begin + command[2];
    return true;
}

bool RD210Firmware::getLearning(const Payload&, Payload& reply)
{
    reply[4] = learningSurface ? 1 : 0;
    return true;
}

bool RD210Firmware::setLearning(const Payload& command, Payload&)
{
    const bool begin = command[4] == 1;
    if (command[4] > 1 || (begin && firmwareState != State::configuration))
        return false;
    learningSurface = begin;
    return true;
}

bool RD210Firmware::happen(const std::string& event, const std::vector<int>& values)
{
    struct Event {
        const char* name;
        std::size_t values;
        bool (RD210Firmware::*take)(const int* values, std::optional<Payload>& report);
    };
    static constexpr Event table[]{
        {"dpi", 1, &RD210Firmware::pressDpi},
        {"profile", 1, &RD210Firmware::pressProfile},
        {"key", 2, &RD210Firmware::pressKey},
        {"surface", 2, &RD210Firmware::learnSurface},
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

std::vector<std::string> RD210Firmware::events() const
{
    return {"dpi LEVEL", "profile N", "key NUMBER STATE", "surface A B"};
}

bool RD210Firmware::pressDpi(const int* values, std::optional<Payload>& report)
{
    const int wantedLevel = values[0];
    if (!within(wantedLevel, levelCount))
        return false;
    auto& performance = current().performance;
    const std::size_t enabled = std::min<std::size_t>(performance[enabledCount], levelCount);
    for (std::size_t place = 0; place < enabled; ++place) {
        if (levelAtPlace(place) != wantedLevel)
            continue;
        performance[currentPlace] = std::uint8_t(place);
        report = Payload{0x42, 0x20, 0x40, std::uint8_t(wantedLevel), 0x01};
        return true;
    }
    return false;
}

bool RD210Firmware::pressProfile(const int* values, std::optional<Payload>& report)
{
    if (!setProfileLocked(values[0]))
        return false;
    report = Payload{0x42, 0x20, 0x00, working.profile, 0x01};
    return true;
}

bool RD210Firmware::pressKey(const int* values, std::optional<Payload>& report)
{
    if (!within(values[0], 256) || !within(values[1], 256))
        return false;
    const std::uint8_t state = values[1] == 0   ? keyIsUp
                               : values[1] == 1 ? keyIsDown
                                                : std::uint8_t(values[1]);
    report = Payload{0x43, 0x01, 0x00, 0x00, std::uint8_t(values[0]), state};
    return true;
}

bool RD210Firmware::learnSurface(const int* values, std::optional<Payload>&)
{
    if (!learningSurface || !within(values[0], 256) || !within(values[1], 256))
        return false;
    current().performance[surfaceA] = std::uint8_t(values[0]);
    current().performance[surfaceB] = std::uint8_t(values[1]);
    learningSurface = false;
    return true;
}

int RD210Firmware::levelAtPlace(std::size_t place) const
{
    const auto& order = current().order;
    return order[0] == noOrder || place >= order.size() ? int(place) : order[place];
}

RD210Firmware::State RD210Firmware::state() const
{
    const std::lock_guard lock(mutex);
    return firmwareState;
}

int RD210Firmware::profile() const
{
    const std::lock_guard lock(mutex);
    return working.profile;
}

int RD210Firmware::savedProfile() const
{
    const std::lock_guard lock(mutex);
    return saved.profile;
}

RD210Firmware::Settings RD210Firmware::settings(int profile) const
{
    const std::lock_guard lock(mutex);
    return working.profiles.at(std::size_t(profile));
}

RD210Firmware::Settings RD210Firmware::savedSettings(int profile) const
{
    const std::lock_guard lock(mutex);
    return saved.profiles.at(std::size_t(profile));
}

int RD210Firmware::level() const
{
    const std::lock_guard lock(mutex);
    return levelAtPlace(current().performance[currentPlace]);
}

std::uint16_t RD210Firmware::key(int button) const
{
    const std::lock_guard lock(mutex);
    return current().keys.at(tablePlace(button));
}

RD210Firmware::MacroArea RD210Firmware::macro(int button) const
{
    const std::lock_guard lock(mutex);
    return current().macros.at(tablePlace(button));
}

bool RD210Firmware::recording() const
{
    const std::lock_guard lock(mutex);
    return recordingKeys;
}

bool RD210Firmware::learning() const
{
    const std::lock_guard lock(mutex);
    return learningSurface;
}

int RD210Firmware::profileAcknowledgements() const
{
    const std::lock_guard lock(mutex);
    return profileAcks;
}

int RD210Firmware::dpiAcknowledgements() const
{
    const std::lock_guard lock(mutex);
    return dpiAcks;
}

int RD210Firmware::saves() const
{
    const std::lock_guard lock(mutex);
    return saveCount;
}

} // namespace pyrux::sim
