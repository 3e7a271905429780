#include "simulator/models/glow_hub2.h"

#include "simulator/models/lights.h"

namespace pyrux::sim {

namespace {

constexpr std::uint8_t mask = 0x0F;
constexpr std::uint8_t customEffect = 8;
constexpr std::uint8_t customMode = 4; // of the strip
constexpr int speeds = 5;
constexpr int levels = 4;
constexpr int effects = 9;
constexpr int modes = 7;

/// The colors of `param`; the first one is a rainbow.
constexpr std::array<Light, 8> palette{{
    {},
    {255, 0, 0},
    {255, 255, 0},
    {0, 255, 0},
    {0, 255, 255},
    {0, 0, 255},
    {255, 0, 255},
    {255, 255, 255},
}};

std::vector<Light> still(std::size_t color, std::size_t leds, int brightness)
{
    if (color == 0 || color >= palette.size())
        return spectrum(leds, brightness);
    return std::vector(leds, dimmed(palette[color], brightness));
}

bool isEffect(const std::array<std::uint8_t, 5>& effect)
{
    const auto [number, param, speed, flag, level] = effect;
    // The parameter of effect 3 is counted from another number than the others', and may wrap around.
    return number < effects && (number == 3 || param < palette.size()) && speed < speeds && flag <= 1 &&
           level < levels;
}

bool isStripEffect(const std::array<std::uint8_t, 3>& effect)
{
    const auto [mode, param, speed] = effect;
    return mode < modes && param < (mode == 0 ? 5 : 8) && speed < speeds;
}

} // namespace

GlowHub2Firmware::GlowHub2Firmware()
    : TableFirmware(identityOf("GLOW HUB II", 0x1007, 0x0105, besideVendorPage(), 0, "GLOWHUB2"), hubForm)
{
    takes({
        {"80 0B 02",
         [this](auto& c) {
             const bool good = isEffect(c.template array<5>(4));
             if (good)
                 c.copy(4, kept.effect);
             return accepted(good);
         }},
        {"80 0B 01", [this](auto& c) { return told(c[3], kept.effect); }},
        {"80 10 02 .. 0C", [this](auto& c) { c.copy(5, kept.custom); }},
        {"80 10 01 .. 0C", [this](auto& c) { return told(c[3], c[4], kept.custom); }},
        {"80 17", [this](auto& c) { kept.layer = c[2]; }}, // no operation in front of it
        {"80 0A 02",
         [this](auto& c) {
             const bool good = isStripEffect(c.template array<3>(3));
             if (good)
                 c.copy(3, kept.strip);
             return accepted(good);
         }},
        {"80 0A 01", [this] { return told(kept.strip); }},
        {"80 11 02", [this](auto& c) { c.copy(3, kept.stripColor); }},
        {"80 11 01", [this] { return told(kept.stripColor); }},
        {"80 18 02", [this](auto& c) { c.copy(3, kept.follow); }},
        {"80 18 01", [this] { return told(kept.follow); }},
        {"80 16 02 01", [this](auto& c) { show(portCount, c); }},
        {"80 16 02 02",
         [this](auto& c) {
             if (c[4] < portCount)
                 show(c[4], c);
         }},
        {"80 16 02 04",
         [this] {
             drivenByHost = false;
             shown = {};
         }},
    });
    does({
        {"effect",
         {{"MODE", 0, effects - 1}},
         [this](auto& values) {
             kept.effect[0] = std::uint8_t(values[0]);
             return report(joined(0x80, 0x0B, 0x03, mask, kept.effect));
         }},
        {"rgb",
         {{"MODE", 0, modes - 1}},
         [this](auto& values) {
             kept.strip[0] = std::uint8_t(values[0]);
             return report(joined(0x80, 0x0A, 0x03, kept.strip));
         }},
    });
}

void GlowHub2Firmware::restart()
{
    drivenByHost = false;
    shown = {};
}

void GlowHub2Firmware::show(std::size_t place, const Command& command)
{
    shown[place] = {command[5], command[6], command[7]};
    drivenByHost = true;
    countFrame();
}

Picture GlowHub2Firmware::drawn() const
{
    Picture picture;
    const int brightness = 255 * (kept.effect[4] + 1) / levels;
    for (std::size_t port = 0; port < portCount; ++port) {
        LightZone zone{"port " + std::to_string(port + 1), std::vector(ledCount, shown[port])};
        if (!drivenByHost)
            zone.leds = kept.effect[0] == customEffect ? lightsOf(kept.custom)
                                                       : still(kept.effect[1], ledCount, brightness);
        picture.push_back(std::move(zone));
    }
    LightZone zone{"strip", {shown[portCount]}};
    if (!drivenByHost)
        zone.leds = kept.strip[0] == customMode ? lightsOf(kept.stripColor) : still(kept.strip[1], 1, 255);
    picture.push_back(std::move(zone));
    return picture;
}

} // namespace pyrux::sim
