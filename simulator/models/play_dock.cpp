#include "simulator/models/play_dock.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

constexpr std::uint8_t allZones = 0xFF;
constexpr std::size_t speed = 0, color = 1; // places in an effect's settings

int highestSpeed(std::uint8_t effect)
{
    return effect == 0 ? 7 : 3;
}

bool isByte(int value)
{
    return value >= 0 && value <= 255;
}

} // namespace

PlayDockFirmware::Settings::Settings()
{
    effects.fill({1, 0xFF, 0xFF, 0xFF, 1});
}

const Identity& PlayDockFirmware::identity() const
{
    // Never destroyed: a write may hang in a model to the end of the process.
    static const Identity& self = *new Identity{
        .pid = 0x0153,
        .release = 0x0107,
        .serial = "PLAYDOCK-000001",
        .product = "PLAY DOCK",
        .collections = {{.interface = 0}, {.interface = 1, .usagePage = 0xFF01}},
        .controlInterface = 0,
    };
    return self;
}

void PlayDockFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    working = saved;
    drivenByHost = false;
    lastFlag = 0;
    shown = {};
    forgetFrames();
}

void PlayDockFirmware::take(const Payload& command, Replies& replies)
{
    if (command[0] != 0x80)
        return;
    if (command[1] == 0x09)
        takeFrame(command);
    else if (const auto reply = answer(command))
        replies.push_back(*reply);
}

std::optional<PlayDockFirmware::Payload> PlayDockFirmware::answer(const Payload& command)
{
    const std::uint8_t effect = command[4];
    switch (command[1] << 8 | command[2]) {
    case 0x0102:
        if (command[3] > 1)
            return refusal(command);
        drivenByHost = command[3] == 1;
        shown = {};
        return success(command);
    case 0x0302:
        if (effect >= effectCount || command[5] > highestSpeed(effect))
            return refusal(command);
        working.effect = effect;
        std::copy_n(command.begin() + 5, working.effects[effect].size(), working.effects[effect].begin());
        return success(command);
    case 0x0301:
        return tell(command, working.effect);
    case 0x0401:
        return effect < effectCount ? tell(command, effect) : refusal(command);
    case 0x0602:
        if (effect >= effectCount)
            return refusal(command);
        working.effect = effect;
        return success(command);
    case 0x1102:
        std::copy_n(command.begin() + 4, working.bottom.size(), working.bottom.begin());
        return success(command);
    case 0x1101:
        return success(command, working.bottom);
    case 0xB002:
        saved = working;
        return success(command);
    case 0xB102:
        working = saved;
        return success(command);
    case 0xB602:
        working = saved = Settings();
        return success(command);
    case 0xB401:
        return success(command, std::array{std::uint8_t(version & 0xFF), std::uint8_t(version >> 8)});
    default:
        return {};
    }
}

PlayDockFirmware::Payload PlayDockFirmware::tell(const Payload& command, std::uint8_t effect) const
{
    Payload reply = success(command, working.effects[effect], 4);
    reply[3] = effect;
    return reply;
}

void PlayDockFirmware::takeFrame(const Payload& command)
{
    const std::size_t zone = command[2];
    if (!drivenByHost || zone < 1 || zone > zoneCount)
        return;
    lastFlag = command[3];
    shown[zone - 1] = {command[4], command[5], command[6]};
    countFrame();
}

bool PlayDockFirmware::change(const std::string& event, const std::vector<int>& values)
{
    if (!std::ranges::all_of(values, isByte))
        return false;
    if (event == "bottom" && values.size() == 3) {
        std::ranges::copy(values, working.bottom.begin());
        return true;
    }
    if (event == "effect" && values.size() == 1 && values[0] < int(effectCount)) {
        working.effect = std::uint8_t(values[0]);
        return true;
    }
    if (event == "speed" && values.size() == 1 && values[0] <= highestSpeed(working.effect)) {
        working.effects[working.effect][speed] = std::uint8_t(values[0]);
        return true;
    }
    return false;
}

bool PlayDockFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    Payload report{};
    {
        const std::lock_guard lock(mutex);
        if (!change(event, values))
            return false;
        if (event == "bottom") {
            report = success({0x80, 0x12}, working.bottom, 4);
        } else {
            report = success({0x80, 0x10}, working.effects[working.effect], 5);
            report[4] = working.effect;
        }
        report[3] = allZones;
    }
    emit(report);
    return true;
}

std::vector<std::string> PlayDockFirmware::events() const
{
    return {"effect MODE", "speed VALUE", "bottom RED GREEN BLUE"};
}

Picture PlayDockFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    const Effect& effect = working.effects[working.effect];
    const Light own{effect[color], effect[color + 1], effect[color + 2]};
    Picture picture;
    for (std::size_t zone = 0; zone < zoneCount; ++zone)
        picture.push_back({"zone " + std::to_string(zone + 1), {drivenByHost ? shown[zone] : own}});
    picture.push_back({"bottom", lightsOf(working.bottom)});
    return picture;
}

PlayDockFirmware::Settings PlayDockFirmware::settings() const
{
    const std::lock_guard lock(mutex);
    return working;
}

PlayDockFirmware::Settings PlayDockFirmware::savedSettings() const
{
    const std::lock_guard lock(mutex);
    return saved;
}

bool PlayDockFirmware::driven() const
{
    const std::lock_guard lock(mutex);
    return drivenByHost;
}

std::uint8_t PlayDockFirmware::flag() const
{
    const std::lock_guard lock(mutex);
    return lastFlag;
}

} // namespace pyrux::sim
