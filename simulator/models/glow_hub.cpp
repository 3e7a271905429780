#include "simulator/models/glow_hub.h"

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

std::vector<Light> still(const GlowHubFirmware::Effect& effect, std::size_t leds)
{
    const auto [mode, source, speed, brightness, red, green, blue] = effect;
    if (source == ownColor)
        return std::vector(leds, dimmed({red, green, blue}, brightness));
    return spectrum(leds, brightness);
}

template <std::size_t size>
void copyFrom(const auto& command, std::size_t at, std::array<std::uint8_t, size>& to)
{
    std::copy_n(command.begin() + std::ptrdiff_t(at), size, to.begin());
}

} // namespace

const Identity& GlowHubFirmware::identity() const
{
    // Never destroyed: a write may hang in a model to the end of the process.
    static const Identity& self = *new Identity{
        .pid = 0x1011,
        .release = 0x0203,
        .serial = "GLOWHUB-000001",
        .product = "GLOW HUB",
        .collections = {{.interface = 0}, {.interface = 1, .usagePage = 0xFF01}},
        .controlInterface = 0,
    };
    return self;
}

void GlowHubFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    working = saved;
    ports = strip = Driver::device;
    transfer.reset();
    shown = {};
    shownStrip = {};
    identifiedPlace = 0;
    forgetFrames();
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

void GlowHubFirmware::take(const Payload& command, Replies& replies)
{
    if (command[0] != 0x80) {
        takePart(command);
        return;
    }
    const std::uint8_t operation = command[2];
    const bool write = operation == 2;
    const bool read = operation == 1;
    switch (command[1]) {
    case 0x01:
        takeState(command, replies);
        break;
    case 0x04:
        if (command[2] <= highestStripMode)
            copyFrom(command, 2, working.strip);
        break;
    case 0x05:
        if (strip == Driver::host) {
            shownStrip = {command[2], command[3], command[4]};
            countFrame();
        }
        break;
    case 0x0A:
        if (read)
            replies.push_back(success(command, working.strip));
        break;
    case 0x0B:
        if (write && command[4] <= highestMode) {
            forPorts(command[3], [&](Port& port) { copyFrom(command, 4, port.effect); });
        } else if (read) {
            const Port* const port = onePort(command[3]);
            replies.push_back(port ? success(command, port->effect, 4) : refusal(command));
            if (port)
                replies.back()[3] = command[3];
        }
        break;
    case 0x0C:
        if (write)
            copyFrom(command, 3, working.owner);
        else if (read)
            replies.push_back(success(command, working.owner));
        break;
    case 0x0D:
        if (write) {
            forPorts(command[3], [&](Port& port) { copyFrom(command, 4, port.size); });
        } else if (read) {
            const Port* const port = onePort(command[3]);
            replies.push_back(port ? success(command, port->size, 4) : refusal(command));
            if (port)
                replies.back()[3] = command[3];
        }
        break;
    case 0x10:
        if (read && command[3] < portCount && command[4] == ledsOfAPart) {
            const Colors& colors = working.ports[command[3]].custom;
            Payload first{0x00, 0x10, 0x03, command[3], ledsOfAPart};
            Payload second{0x01};
            Payload third{0x02 | lastPart};
            std::copy_n(colors.begin(), 59, first.begin() + 5);
            std::copy_n(colors.begin() + 59, 63, second.begin() + 1);
            std::copy_n(colors.begin() + 122, 22, third.begin() + 1);
            replies = {first, second, third};
        } else if (read) {
            replies.push_back(refusal(command));
        }
        break;
    case 0x12:
        if (command[2] == 0x5A && command[3] == 0xA5)
            saved = working;
        break;
    case 0x13:
        if (command[2] == 0x55 && command[3] == 0xAA)
            working = {};
        break;
    case 0x14:
        if (read)
            replies.push_back(
                success(command, std::array{std::uint8_t(version & 0xFF), std::uint8_t(version >> 8)}));
        break;
    case 0x15:
        if (command[2] == 0x5E)
            identifiedPlace = command[3];
        break;
    case 0x16:
        if (command[2] == 0x56 && command[3] == 0x78)
            working = saved = {};
        break;
    case 0x17:
        if (write)
            working.multilayer = command[3];
        else if (read)
            replies.push_back(success(command, std::array{working.multilayer}));
        break;
    case 0x20:
        if (command[3] <= highestMode)
            forPorts(command[2], [&](Port& port) { port.effect[0] = command[3]; });
        break;
    case 0x21:
        if (command[3] <= highestStripMode)
            working.strip[0] = command[3];
        break;
    default:
        break;
    }
}

void GlowHubFirmware::takeState(const Payload& command, Replies& replies)
{
    const Driver given = command[3] == 2 ? Driver::host : Driver::device;
    switch (command[2]) {
    case 0x01:
        ports = given;
        break;
    case 0x02:
        ports = Driver::board;
        break;
    case 0x03:
        strip = given;
        break;
    case 0x04:
        strip = command[3] == 1 ? Driver::board : Driver::device;
        break;
    case 0x05:
        replies.push_back({0x80, 0x01, 0x05, 0x03, std::uint8_t(strip), std::uint8_t(ports)});
        break;
    default:
        break;
    }
}

/// The first byte counts the reports of a transfer, with bit 7 on the last one. One that is out of order ends
/// the transfer without effect.
void GlowHubFirmware::takePart(const Payload& command)
{
    std::size_t from = 1;
    if (command[0] == 0) {
        const bool custom = command[1] == 0x10 && command[2] == 2;
        const std::size_t head = custom ? 3 : 2; // place of the port
        transfer.reset();
        if ((!custom && command[1] != 0x07) || command[head] >= portCount || command[head + 1] != ledsOfAPart)
            return;
        transfer = Transfer{.custom = custom, .port = command[head]};
        from = head + 2;
    }
    if (!transfer)
        return;
    if ((command[0] & ~lastPart) != transfer->next++) {
        transfer.reset();
        return;
    }
    const std::size_t count = std::min(command.size() - from, transfer->colors.size() - transfer->got);
    std::copy_n(command.begin() + std::ptrdiff_t(from), count,
                transfer->colors.begin() + std::ptrdiff_t(transfer->got));
    transfer->got += count;
    if (!(command[0] & lastPart))
        return;
    if (transfer->got == transfer->colors.size()) {
        if (transfer->custom) {
            working.ports[transfer->port].custom = transfer->colors;
        } else if (ports == Driver::host) {
            shown[transfer->port] = transfer->colors;
            countFrame();
        }
    }
    transfer.reset();
}

bool GlowHubFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    const bool onPorts = event == "effect";
    const int highest = onPorts ? highestMode : highestStripMode;
    if ((!onPorts && event != "rgb") || values.size() != 1 || values[0] < 0 || values[0] > highest)
        return false;
    const auto mode = std::uint8_t(values[0]);
    Payload report{};
    {
        const std::lock_guard lock(mutex);
        if (onPorts) {
            forPorts(allPorts, [&](Port& port) { port.effect[0] = mode; });
            report = {0x80, 0x0B, 0x03, 0x03};
            std::ranges::copy(working.ports[0].effect, report.begin() + 4);
        } else {
            working.strip[0] = mode;
            report = {0x80, 0x0A, 0x02}; // 2 as of a write: the device tells what it has set
            std::ranges::copy(working.strip, report.begin() + 3);
        }
    }
    emit(report);
    return true;
}

std::vector<std::string> GlowHubFirmware::events() const
{
    return {"effect MODE", "rgb MODE"};
}

Picture GlowHubFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    Picture picture;
    for (std::size_t port = 0; port < portCount; ++port) {
        const Port& own = working.ports[port];
        LightZone zone{"port " + std::to_string(port + 1), std::vector<Light>(ledCount)};
        if (ports == Driver::host)
            zone.leds = lightsOf(shown[port]);
        else if (ports == Driver::device)
            zone.leds = own.effect[0] == customMode ? lightsOf(own.custom) : still(own.effect, ledCount);
        picture.push_back(std::move(zone));
    }
    LightZone zone{"strip", {shownStrip}};
    if (strip == Driver::device)
        zone.leds = still(working.strip, 1);
    else if (strip == Driver::board)
        zone.leds = {Light{}};
    picture.push_back(std::move(zone));
    return picture;
}

GlowHubFirmware::Settings GlowHubFirmware::settings() const
{
    const std::lock_guard lock(mutex);
    return working;
}

GlowHubFirmware::Settings GlowHubFirmware::savedSettings() const
{
    const std::lock_guard lock(mutex);
    return saved;
}

GlowHubFirmware::Driver GlowHubFirmware::portDriver() const
{
    const std::lock_guard lock(mutex);
    return ports;
}

GlowHubFirmware::Driver GlowHubFirmware::stripDriver() const
{
    const std::lock_guard lock(mutex);
    return strip;
}

int GlowHubFirmware::identified() const
{
    const std::lock_guard lock(mutex);
    return identifiedPlace;
}

} // namespace pyrux::sim
