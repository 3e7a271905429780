#include "simulator/models/tint_hub.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

constexpr std::uint8_t colorsMode = 4;
constexpr std::uint8_t layersMode = 0xE0;
constexpr std::size_t brightness = 4, color = 5; // places in the parameters of a mode

template <std::size_t size>
void copyFrom(const auto& command, std::size_t at, std::array<std::uint8_t, size>& to)
{
    std::copy_n(command.begin() + std::ptrdiff_t(at), size, to.begin());
}

Light lightOf(const TintHubFirmware::Effect& effect)
{
    return dimmed({effect[color], effect[color + 1], effect[color + 2]}, effect[brightness]);
}

} // namespace

TintHubFirmware::Effect TintHubFirmware::Settings::effect(std::uint8_t of) const
{
    const auto found = effects.find(of);
    return found == effects.end() ? factoryEffect : found->second;
}

const Identity& TintHubFirmware::identity() const
{
    // Never destroyed: a write may hang in a model to the end of the process.
    static const Identity& self = *new Identity{
        .pid = 0x004F,
        .release = 0x0101,
        .serial = "TINTHUB-000001",
        .product = "TINT HUB",
        .collections = {{.interface = 0, .usagePage = 0xFF01}, {.interface = 1}},
        .controlInterface = 1,
    };
    return self;
}

void TintHubFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    working = saved;
    current = Session::none;
    framesShown = colorsFollow = false;
    storeCount = 0;
    shown = {};
    forgetFrames();
}

void TintHubFirmware::take(const Payload& command, Replies& replies)
{
    constexpr std::array sessions{Session::none, Session::effect, Session::host, Session::color};
    switch (command[0]) {
    case 'A':
        if (std::ranges::find(sessions, Session(command[1])) == sessions.end())
            return;
        current = Session(command[1]);
        framesShown = colorsFollow = false;
        break;
    case 'P':
        if (command[1] == 0x55) {
            saved = working;
            ++storeCount;
        }
        break;
    case 'Q':
        if (current == Session::effect || current == Session::color)
            takeWrite(command);
        break;
    case 'R':
        takeRead(command, replies);
        break;
    case 0xC0:
        if (current == Session::host)
            takeFrame(command);
        break;
    default:
        break;
    }
}

void TintHubFirmware::takeWrite(const Payload& command)
{
    constexpr std::size_t layerCount = 4;
    switch (command[1]) {
    case 0x28:
        working.mode = command[4];
        break;
    case 0x2B:
        if (command[2] == 1) {
            Layer layer{.mode = command[4]};
            copyFrom(command, 5, layer.effect);
            if (working.layers.size() == layerCount)
                working.layers.erase(working.layers.begin());
            working.layers.push_back(layer);
        } else {
            copyFrom(command, 5, working.effects[command[4]]);
        }
        break;
    case 0x2C:
        if (command[4] == colorsMode)
            copyFrom(command, 5, working.effects[colorsMode]);
        break;
    case 0x30:
        colorsFollow = current == Session::color;
        break;
    case 0xA0:
        if (command[2] == 1)
            copyFrom(command, 8, working.layersEnd);
        break;
    case 0xA8:
        if (colorsFollow)
            copyFrom(command, 4, working.colors);
        colorsFollow = false;
        break;
    default:
        break;
    }
}

void TintHubFirmware::takeRead(const Payload& command, Replies& replies) const
{
    Payload reply{command[0], command[1]};
    switch (command[1]) {
    case 0x28:
        reply[3] = working.mode;
        break;
    case 0x2C:
        reply[3] = command[4];
        std::ranges::copy(working.effect(command[4]), reply.begin() + 4);
        break;
    case 0xA8:
        std::ranges::copy(working.colors, reply.begin() + 3);
        break;
    default:
        return;
    }
    replies.push_back(reply);
}

void TintHubFirmware::takeFrame(const Payload& command)
{
    if (command[1] == 0xF0) {
        framesShown = true;
    } else if (command[1] == 0x02 && framesShown) {
        copyFrom(command, 4, shown);
        countFrame();
    }
}

Picture TintHubFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    const Effect effect = working.effect(working.mode);
    Picture picture;
    for (std::size_t port = 0; port < portCount; ++port) {
        Light light = lightOf(effect);
        const auto of = [&](const Colors& colors) {
            return Light{colors[3 * port], colors[3 * port + 1], colors[3 * port + 2]};
        };
        if (framesShown)
            light = of(shown);
        else if (working.mode == colorsMode)
            light = dimmed(of(working.colors), effect[brightness]);
        else if (working.mode == layersMode)
            light = port < working.layers.size() ? lightOf(working.layers[port].effect) : Light{};
        picture.push_back({"port " + std::to_string(port + 1), {light}});
    }
    return picture;
}

TintHubFirmware::Settings TintHubFirmware::settings() const
{
    const std::lock_guard lock(mutex);
    return working;
}

TintHubFirmware::Settings TintHubFirmware::savedSettings() const
{
    const std::lock_guard lock(mutex);
    return saved;
}

TintHubFirmware::Session TintHubFirmware::session() const
{
    const std::lock_guard lock(mutex);
    return current;
}

bool TintHubFirmware::driven() const
{
    const std::lock_guard lock(mutex);
    return framesShown;
}

int TintHubFirmware::stores() const
{
    const std::lock_guard lock(mutex);
    return storeCount;
}

} // namespace pyrux::sim
