#include "simulator/models/glow_hub2.h"

#include <algorithm>

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

template <std::size_t size>
std::array<std::uint8_t, size> bytesAt(const auto& command, std::size_t at)
{
    std::array<std::uint8_t, size> bytes;
    std::copy_n(command.begin() + std::ptrdiff_t(at), size, bytes.begin());
    return bytes;
}

} // namespace

const Identity& GlowHub2Firmware::identity() const
{
    // Never destroyed: a write may hang in a model to the end of the process.
    static const Identity& self = *new Identity{
        .pid = 0x1007,
        .release = 0x0105,
        .serial = "GLOWHUB2-000001",
        .product = "GLOW HUB II",
        .collections = {{.interface = 0}, {.interface = 1, .usagePage = 0xFF01}},
        .controlInterface = 0,
    };
    return self;
}

void GlowHub2Firmware::powerOn()
{
    const std::lock_guard lock(mutex);
    drivenByHost = false;
    shown = {};
    forgetFrames();
}

void GlowHub2Firmware::take(const Payload& command, Replies& replies)
{
    if (command[0] != 0x80)
        return;
    const bool write = command[2] == 2;
    const bool read = command[2] == 1;
    // From the command into a setting, or from a setting into the reply.
    const auto carry = [&]<std::size_t size>(std::size_t at, std::array<std::uint8_t, size>& setting) {
        if (write)
            setting = bytesAt<size>(command, at);
        else if (read)
            replies.push_back(success(command, setting, at));
        if (read)
            std::copy_n(command.begin() + 3, at - 3, replies.back().begin() + 3);
    };
    // The same for what is looked at before it is taken.
    const auto carryGood = [&]<std::size_t size>(std::size_t at, std::array<std::uint8_t, size>& setting,
                                                 bool (*good)(const std::array<std::uint8_t, size>&)) {
        const bool refused = write && !good(bytesAt<size>(command, at));
        if (!refused)
            carry(at, setting);
        if (write)
            replies.push_back(refused ? refusal(command) : success(command));
    };
    switch (command[1]) {
    case 0x0A:
        carryGood(3, kept.strip, isStripEffect);
        break;
    case 0x0B:
        carryGood(4, kept.effect, isEffect);
        break;
    case 0x10:
        if (command[4] == ledCount)
            carry(5, kept.custom);
        break;
    case 0x11:
        carry(3, kept.stripColor);
        break;
    case 0x16:
        if (write)
            takeFrame(command);
        break;
    case 0x17:
        kept.layer = command[2]; // no operation in front of it
        break;
    case 0x18:
        carry(3, kept.follow);
        break;
    default:
        break;
    }
}

void GlowHub2Firmware::takeFrame(const Payload& command)
{
    constexpr std::uint8_t toStrip = 1, toPort = 2, giveBack = 4;
    if (command[3] == giveBack) {
        drivenByHost = false;
        shown = {};
        return;
    }
    if ((command[3] == toPort && command[4] >= portCount) || (command[3] != toPort && command[3] != toStrip))
        return;
    shown[command[3] == toPort ? command[4] : portCount] = {command[5], command[6], command[7]};
    drivenByHost = true;
    countFrame();
}

bool GlowHub2Firmware::happen(const std::string& event, const std::vector<int>& values)
{
    const bool onPorts = event == "effect";
    if ((!onPorts && event != "rgb") || values.size() != 1 || values[0] < 0 ||
        values[0] >= (onPorts ? effects : modes))
        return false;
    Payload report{};
    {
        const std::lock_guard lock(mutex);
        if (onPorts) {
            kept.effect[0] = std::uint8_t(values[0]);
            report = success({0x80, 0x0B}, kept.effect, 4);
            report[3] = mask;
        } else {
            kept.strip[0] = std::uint8_t(values[0]);
            report = success({0x80, 0x0A}, kept.strip);
        }
    }
    emit(report);
    return true;
}

std::vector<std::string> GlowHub2Firmware::events() const
{
    return {"effect MODE", "rgb MODE"};
}

Picture GlowHub2Firmware::picture() const
{
    const std::lock_guard lock(mutex);
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

GlowHub2Firmware::Settings GlowHub2Firmware::settings() const
{
    const std::lock_guard lock(mutex);
    return kept;
}

bool GlowHub2Firmware::driven() const
{
    const std::lock_guard lock(mutex);
    return drivenByHost;
}

} // namespace pyrux::sim
