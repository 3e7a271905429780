#include "simulator/models/strand_hub.h"

#include "simulator/models/identities.h"

#include <algorithm>
#include <bit>

namespace pyrux::sim {

namespace {

using Settings = StrandFirmware::Settings;
using Port = StrandFirmware::Port;
using Zone = StrandFirmware::Zone;

constexpr std::uint8_t everything = 0xFF;
constexpr std::uint8_t lastPart = 0x80; // in the number of a part
constexpr std::size_t partBytes = 59;   // of custom colors
constexpr std::size_t dataFrom = 5;     // in the reports that name a place
constexpr std::uint8_t customEffect = 9;
constexpr std::size_t firstEntries = 7;
constexpr std::size_t entrySize = 8;

const Identity& identityOf(const char* name, std::uint16_t pid)
{
    return standingIdentity(name, pid, 0x0105,
                            {{.interface = 0, .usagePage = 0x0001, .usage = 0x0000},
                             {.interface = 1, .usagePage = 0xFF00, .usage = 0x0001}},
                            1);
}

Settings factorySettings()
{
    Settings settings;
    for (Port& port : settings.ports)
        for (Zone& zone : port.zones)
            zone.effects.fill({2, 0, 0xFF, 0xFF, 0xFF, 0});
    settings.ports[0].type = StrandFirmware::fans;
    settings.ports[1].chainLength = 2;
    settings.ports[1].leds = 20;
    return settings;
}

/// The bits of a mask as numbers from 0 on.
std::vector<std::size_t> bitsOf(std::uint8_t mask, std::size_t count)
{
    if (mask != everything && mask >> count != 0)
        return {};
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < count; ++i)
        if (mask >> i & 1)
            numbers.push_back(i);
    return numbers;
}

/// The LEDs of a zone, as it shows its own effect.
std::vector<Light> still(const Zone& zone, std::size_t leds)
{
    if (zone.effect == 0)
        return spectrum(leds, 255);
    if (zone.effect == customEffect)
        return lightsOf(std::span(zone.custom).first(3 * leds));
    const StrandFirmware::Parameters& effect = zone.effects[zone.effect];
    return std::vector<Light>(leds, {effect[2], effect[3], effect[4]});
}

template <class Container>
void copyInto(Container& to, std::span<const std::uint8_t> from)
{
    std::ranges::copy(from.first(std::min(from.size(), to.size())), to.begin());
}

} // namespace

StrandFirmware::StrandFirmware(const char* name, std::uint16_t pid)
    : self(identityOf(name, pid)), working(factorySettings()), saved(working)
{
    attached[0] = {20, 16, 12};
    discovered = attached;
}

StrandHubFirmware::StrandHubFirmware() : StrandFirmware("STRANDHUB", 0x0173) {}
StrandHubV2Firmware::StrandHubV2Firmware() : StrandFirmware("STRANDHUBV2", 0x01C9) {}

void StrandFirmware::powerOn()
{
    const std::lock_guard lock(mutex);
    working = saved;
    discovered = attached;
    drivenByHost = false;
    custom.reset();
    frame.reset();
    shown = {};
    identifiedPlace = {};
    forgetFrames();
}

std::vector<std::size_t> StrandFirmware::portsOf(std::uint8_t mask)
{
    return bitsOf(mask, portCount);
}

/// Zones of a port, 0 being the port itself.
std::vector<std::size_t> StrandFirmware::subPortsOf(std::uint8_t mask)
{
    std::vector<std::size_t> numbers = bitsOf(mask, fanCount);
    for (std::size_t& number : numbers)
        ++number;
    if (mask == everything)
        numbers.insert(numbers.begin(), 0);
    if (mask == 0)
        numbers = {0, 1, 2, 3, 4, 5};
    return numbers;
}

std::vector<Zone*> StrandFirmware::zonesOf(std::uint8_t ports, std::uint8_t subPorts)
{
    std::vector<Zone*> zones;
    for (const std::size_t port : portsOf(ports))
        for (const std::size_t subPort : subPortsOf(subPorts))
            zones.push_back(&working.ports[port].zones[subPort]);
    return zones;
}

/// LEDs of the fans that a port knows, by their numbers.
std::vector<std::uint8_t> StrandFirmware::fanLeds(std::size_t number) const
{
    const Port& port = working.ports[number];
    const Chain& chain = discovered[number];
    if (port.type != fans)
        return {};
    std::vector<std::uint8_t> leds;
    for (const std::uint8_t place : port.order)
        if (place < chain.size())
            leds.push_back(chain[place]);
    return leds;
}

void StrandFirmware::take(const Payload& command, Replies& replies)
{
    if (command[1] == 0x09) {
        takeFrame(command);
        return;
    }
    std::optional<Payload> reply;
    if (command[1] == 0x08 && command[2] == 2)
        reply = takeCustom(command);
    else if (command[1] == 0x08 && command[2] == 1)
        reply = tellCustom(command);
    else if (command[0] == 0x80 || (command[0] == 0x81 && command[1] == 0x0C))
        reply = command[2] == 2 ? answerWrite(command) : command[2] == 1 ? answerRead(command) : std::nullopt;
    if (reply)
        replies.push_back(*reply);
}

std::optional<StrandFirmware::Payload> StrandFirmware::answerWrite(const Payload& command)
{
    switch (command[1]) {
    case 0x01:
        if (command[3] > 1)
            return refusal(command, badType);
        drivenByHost = command[3] == 1;
        frame.reset();
        return success(command);
    case 0x03: {
        const std::vector<Zone*> zones = zonesOf(command[3], command[4]);
        if (zones.empty())
            return refusal(command, portsOf(command[3]).empty() ? badPort : badSubPort);
        if (command[5] >= effectCount)
            return refusal(command, badEffect);
        for (Zone* const zone : zones) {
            zone->effect = command[5];
            copyInto(zone->effects[command[5]], std::span(command).subspan(6));
        }
        return success(command);
    }
    case 0x06:
        return takeSize(command);
    case 0x0A:
        if (zonesOf(command[3], command[4]).empty())
            return refusal(command, portsOf(command[3]).empty() ? badPort : badSubPort);
        identifiedPlace = {command[3], command[4]};
        return success(command);
    case 0x0B:
        if (portsOf(command[3]).empty())
            return refusal(command, badPort);
        if (command[4] != strand && command[4] != fans)
            return refusal(command, badType);
        for (const std::size_t port : portsOf(command[3]))
            working.ports[port].type = command[4];
        return success(command);
    case 0x0D:
        return takeNumbers(command);
    case 0x10:
        if (portsOf(command[3]).empty())
            return refusal(command, badPort);
        for (const std::size_t port : portsOf(command[3]))
            copyInto(working.ports[port].overlay, std::span(command).subspan(4));
        return success(command);
    case 0x11:
        working.overlayMode = command[3];
        return success(command);
    case 0xB0:
        saved = working;
        return success(command);
    case 0xB1:
        if (command[3] > 2)
            return refusal(command, badType);
        restore(command[3]);
        return success(command);
    case 0xB2:
        if (portsOf(command[3]).empty())
            return refusal(command, badPort);
        for (const std::size_t port : portsOf(command[3]))
            if (discovered[port] != attached[port]) {
                discovered[port] = attached[port];
                working.ports[port].order = Port{}.order;
            }
        return success(command);
    case 0xB5:
        if (portsOf(command[3]).empty())
            return refusal(command, badPort);
        copyInto(working.owner, std::span(command).subspan(4));
        return success(command);
    case 0xB6:
        working = factorySettings();
        saved = working;
        return success(command);
    case 0xC0:
        working.multilayer = command[3];
        return success(command);
    default:
        return {};
    }
}

std::optional<StrandFirmware::Payload> StrandFirmware::answerRead(const Payload& command)
{
    switch (command[1]) {
    case 0x11:
        return success(command, std::span(&working.overlayMode, 1));
    case 0xB4:
        return success(command, std::array{std::uint8_t(version & 0xFF), std::uint8_t(version >> 8)});
    case 0xB5:
        return success(command, working.owner);
    case 0xC0:
        return success(command, std::span(&working.multilayer, 1));
    default:
        return answerPlace(command);
    }
}

/// Questions about a port or a fan.
std::optional<StrandFirmware::Payload> StrandFirmware::answerPlace(const Payload& command)
{
    std::vector<std::uint8_t> data{command[3]};
    const auto tell = [&](std::span<const std::uint8_t> values) {
        data.insert(data.end(), values.begin(), values.end());
        return success(command, data);
    };
    const std::vector<std::size_t> ports = portsOf(command[3]);
    const bool withSubPort = command[1] == 0x03 || command[1] == 0x04 || command[1] == 0x0C;
    if (withSubPort) {
        const std::vector<Zone*> zones = zonesOf(command[3], command[4]);
        if (zones.empty())
            return refusal(command, ports.empty() ? badPort : badSubPort);
        const Zone& zone = *zones.front();
        if (command[1] == 0x0C)
            return tellEffects(command, zone);
        const std::uint8_t effect = command[1] == 0x03 ? zone.effect : command[5];
        if (effect >= effectCount)
            return refusal(command, badEffect);
        data.push_back(command[4]);
        data.push_back(effect);
        return tell(zone.effects[effect]);
    }
    if (command[1] != 0x06 && command[1] != 0x07 && command[1] != 0x0B && command[1] != 0x10)
        return {};
    if (ports.empty())
        return refusal(command, badPort);
    const Port& port = working.ports[ports.front()];
    switch (command[1]) {
    case 0x06:
        return tell(std::array{port.chainLength, port.leds});
    case 0x07: {
        const std::vector<std::uint8_t> leds = fanLeds(ports.front());
        data.push_back(std::uint8_t(leds.size()));
        return tell(leds);
    }
    case 0x0B:
        return tell(std::span(&port.type, 1));
    default:
        return tell(port.overlay);
    }
}

StrandFirmware::Payload StrandFirmware::tellEffects(const Payload& command, const Zone& zone) const
{
    const bool first = command[0] == 0x80;
    std::vector<std::uint8_t> data{command[3], command[4]};
    if (first)
        data.push_back(std::uint8_t(effectCount));
    const std::size_t end = first ? firstEntries : effectCount;
    for (std::size_t effect = first ? 0 : firstEntries; effect < end; ++effect) {
        std::array<std::uint8_t, entrySize> entry{std::uint8_t(effect)};
        std::ranges::copy(zone.effects[effect], entry.begin() + 1);
        data.insert(data.end(), entry.begin(), entry.end());
    }
    return success(command, data);
}

StrandFirmware::Payload StrandFirmware::takeSize(const Payload& command)
{
    const std::uint8_t number = command[3], chain = command[4], leds = command[5];
    if (number >= portCount && number != everything)
        return refusal(command, badPort);
    if (chain < 1 || chain > 10 || leds < 4 || leds > 60 || chain * leds > int(ledCount))
        return refusal(command, badSize);
    for (std::size_t port = 0; port < portCount; ++port)
        if (number == everything || number == port) {
            working.ports[port].chainLength = chain;
            working.ports[port].leds = leds;
        }
    return success(command);
}

StrandFirmware::Payload StrandFirmware::takeNumbers(const Payload& command)
{
    const std::vector<std::size_t> ports = portsOf(command[3]);
    if (ports.empty())
        return refusal(command, badPort);
    auto order = working.ports[ports.front()].order;
    const auto before = order;
    std::uint8_t taken = 0, given = 0;
    for (std::size_t i = 4; i < 4 + 2 * fanCount; i += 2) {
        const std::uint8_t old = command[i], next = command[i + 1];
        if (old == 0 && next == 0)
            continue;
        if (!std::has_single_bit(old) || !std::has_single_bit(next) || old >> fanCount || next >> fanCount)
            return refusal(command, badSubPort);
        order[std::size_t(std::countr_zero(next))] = before[std::size_t(std::countr_zero(old))];
        taken |= old;
        given |= next;
    }
    // A number that is given to one fan has been another's, which needs one too.
    if (taken != given)
        return refusal(command, badSubPort);
    for (const std::size_t port : ports)
        working.ports[port].order = order;
    return success(command);
}

StrandFirmware::Payload StrandFirmware::takeCustom(const Payload& command)
{
    const std::uint8_t part = command[0] & ~lastPart;
    const std::vector<Zone*> zones = zonesOf(command[3], command[4]);
    if (zones.empty())
        return refusal(command, portsOf(command[3]).empty() ? badPort : badSubPort);
    if (part == 0)
        custom = Transfer{command[3], command[4]};
    if (!custom || custom->next != part || custom->ports != command[3] || custom->subPorts != command[4] ||
        part * partBytes >= custom->colors.size()) {
        custom.reset();
        return refusal(command, badPart);
    }
    ++custom->next;
    const std::span<std::uint8_t> place = std::span(custom->colors).subspan(part * partBytes);
    std::copy_n(command.begin() + dataFrom, std::min(partBytes, place.size()), place.begin());
    if (command[0] & lastPart) {
        for (Zone* const zone : zones)
            zone->custom = custom->colors;
        custom.reset();
    }
    return success(command, std::span(command).subspan(3, 2));
}

StrandFirmware::Payload StrandFirmware::tellCustom(const Payload& command)
{
    const std::size_t from = (command[0] & ~lastPart) * partBytes;
    const std::vector<Zone*> zones = zonesOf(command[3], command[4]);
    if (zones.empty())
        return refusal(command, portsOf(command[3]).empty() ? badPort : badSubPort);
    if (from >= Colors{}.size())
        return refusal(command, badPart);
    std::vector<std::uint8_t> data{command[3], command[4]};
    const auto colors = std::span(zones.front()->custom).subspan(from);
    const auto part = colors.first(std::min(partBytes, colors.size()));
    data.insert(data.end(), part.begin(), part.end());
    return success(command, data);
}

void StrandFirmware::takeFrame(const Payload& command)
{
    struct Part {
        std::uint8_t number;
        std::size_t from, to, bytes; ///< Place in the report, place in the frame.
    };
    static constexpr std::array<Part, 3> parts{{{0x00, 5, 0, 59}, {0x01, 2, 59, 62}, {0x82, 2, 121, 59}}};
    const auto part = std::ranges::find(parts, command[0], &Part::number);
    if (part == parts.begin())
        frame = Transfer{command[2], command[3]};
    if (part == parts.end() || !frame || frame->next != part - parts.begin() ||
        (part == parts.begin() && command[4] != ledCount)) {
        frame.reset();
        return;
    }
    ++frame->next;
    std::copy_n(command.begin() + std::ptrdiff_t(part->from), part->bytes,
                frame->colors.begin() + std::ptrdiff_t(part->to));
    if (frame->next < parts.size())
        return;
    if (drivenByHost)
        show(*frame);
    frame.reset();
}

void StrandFirmware::show(const Transfer& whole)
{
    const std::vector<std::size_t> ports = portsOf(whole.ports);
    const std::vector<std::size_t> subPorts = subPortsOf(whole.subPorts);
    for (const std::size_t port : ports) {
        if (whole.subPorts != 0) {
            for (const std::size_t subPort : subPorts)
                shown[port][subPort] = whole.colors;
            continue;
        }
        shown[port] = {};
        shown[port][0] = whole.colors;
        std::span<const std::uint8_t> rest = whole.colors;
        std::size_t fan = 0;
        for (const std::uint8_t leds : fanLeds(port)) {
            const auto part = rest.first(std::min(rest.size(), std::size_t(3 * leds)));
            copyInto(shown[port][++fan], part);
            rest = rest.subspan(part.size());
        }
    }
    if (!ports.empty() && !subPorts.empty())
        countFrame();
}

void StrandFirmware::restore(std::uint8_t what)
{
    const Settings factory = factorySettings();
    if (what == 0) {
        working = factory;
        return;
    }
    for (std::size_t i = 0; i < portCount; ++i) {
        Port& port = working.ports[i];
        const Port& fresh = factory.ports[i];
        if (what == 1) {
            port.zones = fresh.zones;
            port.overlay = fresh.overlay;
        } else {
            port.type = fresh.type;
            port.chainLength = fresh.chainLength;
            port.leds = fresh.leds;
            port.order = fresh.order;
        }
    }
}

bool StrandFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    const std::lock_guard lock(mutex);
    if (values.empty() || values[0] < 1 || values[0] > int(portCount))
        return false;
    Chain& chain = attached[std::size_t(values[0] - 1)];
    if (event == "attach" && values.size() == 2 && values[1] >= 4 && values[1] <= int(ledCount) &&
        chain.size() < fanCount)
        chain.push_back(std::uint8_t(values[1]));
    else if (event == "detach" && values.size() == 1 && !chain.empty())
        chain.pop_back();
    else
        return false;
    return true;
}

std::vector<std::string> StrandFirmware::events() const
{
    return {"attach PORT LEDS", "detach PORT"};
}

Picture StrandFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    Picture zones;
    const auto add = [&](std::string name, std::size_t port, std::size_t subPort, std::size_t leds) {
        const std::span<const std::uint8_t> colors = shown[port][subPort];
        zones.push_back({std::move(name), drivenByHost ? lightsOf(colors.first(3 * leds))
                                                       : still(working.ports[port].zones[subPort], leds)});
    };
    for (std::size_t i = 0; i < portCount; ++i) {
        const Port& port = working.ports[i];
        const std::string name = "port " + std::to_string(i + 1);
        if (port.type == strand) {
            add(name, i, 0, std::size_t(port.chainLength * port.leds));
            continue;
        }
        std::size_t fan = 0;
        for (const std::uint8_t leds : fanLeds(i)) {
            ++fan;
            add(name + " fan " + std::to_string(fan), i, fan, leds);
        }
    }
    return zones;
}

StrandFirmware::Settings StrandFirmware::settings() const
{
    const std::lock_guard lock(mutex);
    return working;
}

StrandFirmware::Settings StrandFirmware::savedSettings() const
{
    const std::lock_guard lock(mutex);
    return saved;
}

bool StrandFirmware::driven() const
{
    const std::lock_guard lock(mutex);
    return drivenByHost;
}

std::array<std::uint8_t, 2> StrandFirmware::identified() const
{
    const std::lock_guard lock(mutex);
    return identifiedPlace;
}

} // namespace pyrux::sim
