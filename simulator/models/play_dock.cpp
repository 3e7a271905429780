#include "simulator/models/play_dock.h"

#include "simulator/models/lights.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

constexpr std::uint8_t allZones = 0xFF;
constexpr std::size_t speed = 0, color = 1; // places in an effect's settings

int highestSpeed(std::uint8_t effect)
{
    return effect == 0 ? 7 : 3;
}

} // namespace

PlayDockFirmware::Settings::Settings()
{
    effects.fill({1, 0xFF, 0xFF, 0xFF, 1});
}

PlayDockFirmware::PlayDockFirmware()
    : TableFirmware(identityOf("PLAY DOCK", 0x0153, 0x0107, besideVendorPage(), 0), hubForm)
{
    takes({
        {"80 01 02 00/01",
         [this](auto& c) {
             drivenByHost = c[3] == 1;
             shown = {};
             return accepted();
         }},
        {"80 01 02", [] { return refused(); }},
        {"80 03 02",
         [this](auto& c) {
             if (c[4] >= effectCount || c[5] > highestSpeed(c[4]))
                 return refused();
             working.effect = c[4];
             c.copy(5, working.effects[c[4]]);
             return accepted();
         }},
        {"80 03 01", [this] { return told(working.effect, working.effects[working.effect]); }},
        {"80 04 01",
         [this](auto& c) { return c[4] < effectCount ? told(c[4], working.effects[c[4]]) : refused(); }},
        {"80 06 02",
         [this](auto& c) {
             const bool good = c[4] < effectCount;
             if (good)
                 working.effect = c[4];
             return accepted(good);
         }},
        {"80 11 02", [this](auto& c) { return carried(true, c, 4, working.bottom); }},
        {"80 11 01", [this] { return told(working.bottom); }},
        {"80 B0 02", done([this] { saved = working; })},
        {"80 B1 02", done([this] { working = saved; })},
        {"80 B6 02", done([this] { working = saved = Settings(); })},
        {"80 B4 01", [] { return told(version & 0xFF, version >> 8); }},
        {"80 09", [this](auto& c) { takeFrame(c); }},
    });
    does(buttonEvents());
}

std::vector<Event> PlayDockFirmware::buttonEvents()
{
    return {
        {"effect",
         {{"MODE", 0, effectCount - 1}},
         [this](auto& values) {
             working.effect = std::uint8_t(values[0]);
             return current();
         }},
        {"speed",
         {{"VALUE", 0, 7}},
         [this](auto& values) {
             if (values[0] > highestSpeed(working.effect))
                 return refused();
             working.effects[working.effect][speed] = std::uint8_t(values[0]);
             return current();
         }},
        {"bottom",
         {{"RED", 0, 255}, {"GREEN", 0, 255}, {"BLUE", 0, 255}},
         [this](auto& values) {
             std::ranges::copy(values, working.bottom.begin());
             return report(joined(0x80, 0x12, 0x03, allZones, working.bottom));
         }},
    };
}

void PlayDockFirmware::restart()
{
    working = saved;
    drivenByHost = false;
    lastFlag = 0;
    shown = {};
}

/// The report that the current effect is another one.
Answer PlayDockFirmware::current() const
{
    return report(joined(0x80, 0x10, 0x03, allZones, working.effect, working.effects[working.effect]));
}

void PlayDockFirmware::takeFrame(const Command& command)
{
    const std::size_t zone = command[2];
    if (!drivenByHost || zone < 1 || zone > zoneCount)
        return;
    lastFlag = command[3];
    shown[zone - 1] = {command[4], command[5], command[6]};
    countFrame();
}

Picture PlayDockFirmware::drawn() const
{
    const Effect& effect = working.effects[working.effect];
    const Light own{effect[color], effect[color + 1], effect[color + 2]};
    Picture picture;
    for (std::size_t zone = 0; zone < zoneCount; ++zone)
        picture.push_back({"zone " + std::to_string(zone + 1), {drivenByHost ? shown[zone] : own}});
    picture.push_back({"bottom", lightsOf(working.bottom)});
    return picture;
}

} // namespace pyrux::sim
