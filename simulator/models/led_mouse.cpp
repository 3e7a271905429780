#include "simulator/models/led_mouse.h"

#include "simulator/models/lights.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

constexpr std::size_t customFrom = 4;                               // byte of the report that carries them
constexpr std::size_t brightness = 4, red = 5, green = 6, blue = 7; // places in the parameters
constexpr std::uint8_t customMode = 176, darkMode = 254;
constexpr std::size_t mostLeds = 15; // of a frame

} // namespace

LedMouseFirmware::LedMouseFirmware(const char* name, std::uint16_t pid, std::vector<std::uint8_t> effectModes)
    : RD210Firmware(identityOf(name, pid, 0x0102, besideMouse(), 1)), modes(std::move(effectModes))
{
    working.fill(factoryEffects());
    saved = working;
    takes({
        {"41 02", done([this] { enter(live); })},
        {"51 28", configuration,
         [this](auto& c) { return hasMode(c[4]) ? carry(c, 4, current().mode) : refused(); }},
        {"52 28", configuration, [this](auto& c) { return carry(c, 4, current().mode); }},
        {"51 2B", configuration,
         [this](auto& c) {
             if (!hasMode(c[4]))
                 return refused();
             c.copy(5, current().parameters[c[4]]);
             return told(c[4]);
         }},
        {"52 2B", configuration,
         [this](auto& c) { return hasMode(c[4]) ? told(c[4], current().parameters[c[4]]) : refused(); }},
        {"51/52 A8", configuration, [this](auto& c) { return carry(c, customFrom, current().custom); }},
        {"C0 F0", live, [this](auto& c) { drivenByHost = c[4] == 1; }},
        {"C0 00", live,
         [this](auto& c) {
             shown.fill({c[4], c[5], c[6]});
             countFrame();
         }},
        {"C0 01", live, [this](auto& c) { takeLeds(c); }},
    });
    does(effectEvents());
}

/// What the effect button does, each with the one report in which it tells what is another.
std::vector<Event> LedMouseFirmware::effectEvents()
{
    const auto changed = [this](bool profile, bool effect, bool data) {
        return report(joined(0x42, 0x20, 0x00, currentProfile(), int(profile), 0, 0, int(effect), int(data)));
    };
    return {
        {"effect",
         {{"MODE", 0, 255}},
         [this, changed](auto& values) {
             if (!hasMode(values[0]))
                 return refused();
             current().mode = std::uint8_t(values[0]);
             return changed(false, true, false);
         }},
        {"brightness",
         {{"VALUE", 0, 255}},
         [this, changed](auto& values) {
             current().parameters[current().mode][brightness] = std::uint8_t(values[0]);
             return changed(false, false, true);
         }},
        {"switch",
         {{"N", 0, profileCount - 1}},
         [this, changed](auto& values) {
             setProfile(values[0]);
             return changed(true, true, true);
         }},
    };
}

LedMouseFirmware::Effects LedMouseFirmware::factoryEffects() const
{
    Effects effects;
    for (const std::uint8_t mode : modes)
        effects.parameters[mode] = {0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return effects;
}

void LedMouseFirmware::restart()
{
    RD210Firmware::restart();
    working = saved;
    drivenByHost = false;
    shown = {};
}

void LedMouseFirmware::enter(State next)
{
    RD210Firmware::enter(next);
    drivenByHost = drivenByHost && next == live;
}

void LedMouseFirmware::resetProfile()
{
    RD210Firmware::resetProfile();
    current() = factoryEffects();
}

void LedMouseFirmware::resetEverything()
{
    RD210Firmware::resetEverything();
    working.fill(factoryEffects());
    saved = working;
}

void LedMouseFirmware::save()
{
    RD210Firmware::save();
    saved = working;
}

bool LedMouseFirmware::hasMode(int mode) const
{
    return std::ranges::find(modes, mode) != modes.end();
}

void LedMouseFirmware::takeLeds(const Command& command)
{
    if (command[2] > mostLeds)
        return;
    shown = {};
    for (std::size_t at = 4; at < 4 + 4 * std::size_t(command[2]); at += 4)
        if (command[at] < shown.size())
            shown[command[at]] = {command[at + 1], command[at + 2], command[at + 3]};
    countFrame();
}

Picture LedMouseFirmware::drawn() const
{
    LightZone zone{"mouse", {shown.begin(), shown.end()}};
    if (drivenByHost)
        return {zone};
    const Effects& effects = working[currentProfile()];
    const auto& own = effects.parameters.at(effects.mode);
    if (effects.mode == customMode)
        zone.leds = lightsOf(effects.custom);
    else
        zone.leds.assign(ledCount, effects.mode == darkMode
                                       ? Light{}
                                       : dimmed({own[red], own[green], own[blue]}, own[brightness]));
    return {zone};
}

} // namespace pyrux::sim
