#include "simulator/models/glow_hub.h"

#include "simulator/models/lights.h"

#include <algorithm>
#include <bit>

namespace pyrux::sim {

namespace {

constexpr std::uint8_t allPorts = 0x0F;
constexpr std::uint8_t highestMode = 11;
constexpr std::uint8_t highestStripMode = 6;
constexpr std::uint8_t customMode = 7;
constexpr std::uint8_t ownColor = 16; // color source
constexpr std::uint8_t lastPart = 0x80;
constexpr std::uint8_t ledsOfAPart = 0x30;
constexpr std::size_t reportEnd = 64;

std::vector<Light> still(const GlowHubFirmware::Effect& effect, std::size_t leds)
{
    const auto [mode, source, speed, brightness, red, green, blue] = effect;
    if (source == ownColor)
        return std::vector(leds, dimmed({red, green, blue}, brightness));
    return spectrum(leds, brightness);
}

GlowHubFirmware::Driver driverOf(const Command& command)
{
    return command[3] == 2 ? GlowHubFirmware::Driver::host : GlowHubFirmware::Driver::device;
}

} // namespace

GlowHubFirmware::GlowHubFirmware()
    : TableFirmware(identityOf("GLOW HUB", 0x1011, 0x0203, besideVendorPage(), 0), hubForm)
{
    takes({
        {"80", [] {}},
        {"..", [this](auto& c) { takePart(c); }},
    });
    takes(effectRows());
    takes(deviceRows());
    does({
        {"effect",
         {{"MODE", 0, highestMode}},
         [this](auto& values) {
             forPorts(allPorts, [&](Port& port) { port.effect[0] = std::uint8_t(values[0]); });
             return report(joined(0x80, 0x0B, 0x03, 0x03, working.ports[0].effect));
         }},
        // 2 as of a write: the device tells what it has set.
        {"rgb",
         {{"MODE", 0, highestStripMode}},
         [this](auto& values) {
             working.strip[0] = std::uint8_t(values[0]);
             return report(joined(0x80, 0x0A, 0x02, working.strip));
         }},
    });
}

std::vector<Row> GlowHubFirmware::effectRows()
{
    return {
        {"80 04",
         [this](auto& c) {
             if (c[2] <= highestStripMode)
                 c.copy(2, working.strip);
         }},
        {"80 05",
         [this](auto& c) {
             if (now.strip != Driver::host)
                 return;
             now.shownStrip = {c[2], c[3], c[4]};
             countFrame();
         }},
        {"80 0A 01", [this] { return told(working.strip); }},
        {"80 0B 02",
         [this](auto& c) {
             if (c[4] <= highestMode)
                 forPorts(c[3], [&](Port& port) { c.copy(4, port.effect); });
         }},
        {"80 0B 01",
         [this](auto& c) {
             const Port* const port = onePort(c[3]);
             return port ? told(c[3], port->effect) : refused();
         }},
        {"80 10 01", [this](auto& c) { return tellCustom(c); }},
        {"80 20",
         [this](auto& c) {
             if (c[3] <= highestMode)
                 forPorts(c[2], [&](Port& port) { port.effect[0] = c[3]; });
         }},
        {"80 21",
         [this](auto& c) {
             if (c[3] <= highestStripMode)
                 working.strip[0] = c[3];
         }},
    };
}

std::vector<Row> GlowHubFirmware::deviceRows()
{
    return {
        {"80 01 01", [this](auto& c) { now.ports = driverOf(c); }},
        {"80 01 02", [this] { now.ports = Driver::board; }},
        {"80 01 03", [this](auto& c) { now.strip = driverOf(c); }},
        {"80 01 04", [this](auto& c) { now.strip = c[3] == 1 ? Driver::board : Driver::device; }},
        {"80 01 05",
         [this] { return report(joined(0x80, 0x01, 0x05, 0x03, int(now.strip), int(now.ports))); }},
        {"80 0C 02", [this](auto& c) { c.copy(3, working.owner); }},
        {"80 0C 01", [this] { return told(working.owner); }},
        {"80 0D 02", [this](auto& c) { forPorts(c[3], [&](Port& port) { c.copy(4, port.size); }); }},
        {"80 0D 01",
         [this](auto& c) {
             const Port* const port = onePort(c[3]);
             return port ? told(c[3], port->size) : refused();
         }},
        {"80 12 5A A5", [this] { saved = working; }},
        {"80 13 55 AA", [this] { working = {}; }},
        {"80 14 01", [] { return told(version & 0xFF, version >> 8); }},
        {"80 15 5E", [this](auto& c) { now.identified = c[3]; }},
        {"80 16 56 78", [this] { working = saved = {}; }},
        {"80 17 02", [this](auto& c) { working.multilayer = c[3]; }},
        {"80 17 01", [this] { return told(working.multilayer); }},
    };
}

void GlowHubFirmware::restart()
{
    working = saved;
    now = {};
}

void GlowHubFirmware::forPorts(std::uint8_t mask, const auto& change)
{
    for (std::size_t port = 0; port < portCount; ++port)
        if (mask >> port & 1)
            change(working.ports[port]);
}

GlowHubFirmware::Port* GlowHubFirmware::onePort(std::uint8_t mask)
{
    return mask <= allPorts && std::has_single_bit(mask) ? &working.ports[std::size_t(std::countr_zero(mask))]
                                                         : nullptr;
}

Answer GlowHubFirmware::tellCustom(const Command& command) const
{
    if (command[3] >= portCount || command[4] != ledsOfAPart)
        return refused();
    const std::span<const std::uint8_t> colors = working.ports[command[3]].custom;
    return {.kind = Answer::Kind::reports,
            .reports = {joined(0x00, 0x10, 0x03, command[3], ledsOfAPart, colors.first(59)),
                        joined(0x01, colors.subspan(59, 63)), joined(0x02 | lastPart, colors.subspan(122))}};
}

/// The first byte counts the reports of a transfer, with bit 7 on the last one. One that is out of order ends
/// the transfer without effect.
void GlowHubFirmware::takePart(const Command& command)
{
    std::size_t from = 1;
    if (command[0] == 0) {
        now.transferIsCustom = command[1] == 0x10 && command[2] == 2;
        const std::size_t head = now.transferIsCustom ? 3 : 2; // place of the port
        now.transferPort = command[head];
        now.transfer.end();
        if ((!now.transferIsCustom && command[1] != 0x07) || now.transferPort >= portCount ||
            command[head + 1] != ledsOfAPart)
            return;
        now.transfer.begin(Colors{}.size());
        from = head + 2;
    }
    if (!now.transfer.add(command[0] & ~lastPart, command.bytes(from, reportEnd - from)) ||
        !(command[0] & lastPart))
        return;
    if (now.transfer.whole())
        takeTransfer();
    now.transfer.end();
}

void GlowHubFirmware::takeTransfer()
{
    if (now.transferIsCustom) {
        std::ranges::copy(now.transfer.data, working.ports[now.transferPort].custom.begin());
    } else if (now.ports == Driver::host) {
        std::ranges::copy(now.transfer.data, now.shown[now.transferPort].begin());
        countFrame();
    }
}

Picture GlowHubFirmware::drawn() const
{
    Picture picture;
    for (std::size_t port = 0; port < portCount; ++port) {
        const Port& own = working.ports[port];
        LightZone zone{"port " + std::to_string(port + 1), std::vector<Light>(ledCount)};
        if (now.ports == Driver::host)
            zone.leds = lightsOf(now.shown[port]);
        else if (now.ports == Driver::device)
            zone.leds = own.effect[0] == customMode ? lightsOf(own.custom) : still(own.effect, ledCount);
        picture.push_back(std::move(zone));
    }
    LightZone zone{"strip", {now.shownStrip}};
    if (now.strip == Driver::device)
        zone.leds = still(working.strip, 1);
    else if (now.strip == Driver::board)
        zone.leds = {Light{}};
    picture.push_back(std::move(zone));
    return picture;
}

} // namespace pyrux::sim
