#include "simulator/models/tint_hub.h"

#include "simulator/models/lights.h"

namespace pyrux::sim {

namespace {

constexpr std::uint8_t colorsMode = 4;
constexpr std::uint8_t layersMode = 0xE0;
constexpr std::size_t layerCount = 4;
constexpr std::size_t brightness = 4, red = 5, green = 6, blue = 7; // places in the parameters of a mode

Light lightOf(const TintHubFirmware::Effect& effect)
{
    return dimmed({effect[red], effect[green], effect[blue]}, effect[brightness]);
}

} // namespace

TintHubFirmware::Effect TintHubFirmware::Settings::effect(std::uint8_t of) const
{
    const auto found = effects.find(of);
    return found == effects.end() ? factoryEffect : found->second;
}

TintHubFirmware::TintHubFirmware()
    : TableFirmware(identityOf("TINT HUB", 0x004F, 0x0101,
                               {{.interface = 0, .usagePage = 0xFF01}, {.interface = 1}}, 1),
                    {.echoed = 2, .dataFrom = 3})
{
    constexpr States settings = effect | color;
    takes({
        {"41 00", [this] { enter(none); }},
        {"41 01", [this] { enter(effect); }},
        {"41 03", [this] { enter(host); }},
        {"41 80", [this] { enter(color); }},
        {"50 55",
         [this] {
             saved = working;
             ++storeCount;
         }},
        {"51 28", settings, [this](auto& c) { working.mode = c[4]; }},
        {"51 2B 01", settings, [this](auto& c) { addLayer(c); }},
        {"51 2B", settings, [this](auto& c) { c.copy(5, working.effects[c[4]]); }},
        {"51 2C .. .. 04", settings, [this](auto& c) { c.copy(5, working.effects[colorsMode]); }},
        {"51 30", settings, [this] { colorsFollow = state() == color; }},
        {"51 A0 01", settings, [this](auto& c) { c.copy(8, working.layersEnd); }},
        {"51 A8", settings,
         [this](auto& c) {
             if (std::exchange(colorsFollow, false))
                 c.copy(4, working.colors);
         }},
        {"52 28", [this] { return told(working.mode); }},
        {"52 2C", [this](auto& c) { return told(c[4], working.effect(c[4])); }},
        {"52 A8", [this] { return told(working.colors); }},
        {"C0 F0", host, [this] { framesShown = true; }},
        {"C0 02", host,
         [this](auto& c) {
             if (!framesShown)
                 return;
             c.copy(4, shown);
             countFrame();
         }},
    });
}

void TintHubFirmware::restart()
{
    working = saved;
    enter(none);
    storeCount = 0;
    shown = {};
}

void TintHubFirmware::enter(Session next)
{
    setState(next);
    framesShown = colorsFollow = false;
}

void TintHubFirmware::addLayer(const Command& command)
{
    if (working.layers.size() == layerCount)
        working.layers.erase(working.layers.begin());
    working.layers.push_back({command[4], command.array<8>(5)});
}

Picture TintHubFirmware::drawn() const
{
    const Effect current = working.effect(working.mode);
    Picture picture;
    for (std::size_t port = 0; port < portCount; ++port) {
        Light light = lightOf(current);
        const auto of = [&](const Colors& colors) {
            return Light{colors[3 * port], colors[3 * port + 1], colors[3 * port + 2]};
        };
        if (framesShown)
            light = of(shown);
        else if (working.mode == colorsMode)
            light = dimmed(of(working.colors), current[brightness]);
        else if (working.mode == layersMode)
            light = port < working.layers.size() ? lightOf(working.layers[port].effect) : Light{};
        picture.push_back({"port " + std::to_string(port + 1), {light}});
    }
    return picture;
}

} // namespace pyrux::sim
