#include "simulator/models/strand_hub.h"

#include "simulator/models/lights.h"

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

} // namespace

StrandFirmware::StrandFirmware(const char* name, std::uint16_t pid)
    : TableFirmware(identityOf(name, pid, 0x0105,
                               {{.interface = 0, .usagePage = 0x0001, .usage = 0x0000}, {.interface = 1}}, 1),
                    hubForm),
      working(factorySettings()), saved(working)
{
    attached[0] = {20, 16, 12};
    discovered = attached;
    takes(effectRows());
    takes(portRows());
    takes(deviceRows());
    does({
        {"attach",
         {{"PORT", 1, portCount}, {"LEDS", 4, ledCount}},
         [this](auto& values) {
             Chain& chain = attached[std::size_t(values[0] - 1)];
             if (chain.size() == fanCount)
                 return refused();
             chain.push_back(std::uint8_t(values[1]));
             return silence();
         }},
        {"detach",
         {{"PORT", 1, portCount}},
         [this](auto& values) {
             Chain& chain = attached[std::size_t(values[0] - 1)];
             if (chain.empty())
                 return refused();
             chain.pop_back();
             return silence();
         }},
    });
}

template <class Act>
auto StrandFirmware::onPorts(Act act)
{
    return [act](const Command& command) {
        const Ports ports = portsOf(command[3]);
        return ports.empty() ? refused(badPort) : act(command, ports);
    };
}

template <class Act>
auto StrandFirmware::onZones(Act act)
{
    return [this, act](const Command& command) {
        const Zones zones = zonesOf(command[3], command[4]);
        if (zones.empty())
            return refused(portsOf(command[3]).empty() ? badPort : badSubPort);
        return act(command, zones);
    };
}

std::vector<Row> StrandFirmware::effectRows()
{
    return {
        {"80 01 02",
         [this](auto& c) {
             if (c[3] > 1)
                 return refused(badType);
             now.drivenByHost = c[3] == 1;
             now.frame.end();
             return accepted();
         }},
        {"80 03 02", onZones([](auto& c, const Zones& zones) {
             if (c[5] >= effectCount)
                 return refused(badEffect);
             for (Zone* const zone : zones) {
                 zone->effect = c[5];
                 c.copy(6, zone->effects[c[5]]);
             }
             return accepted();
         })},
        {"80 03 01", onZones([](auto& c, const Zones& zones) {
             const Zone& zone = *zones.front();
             return told(c[3], c[4], zone.effect, zone.effects[zone.effect]);
         })},
        {"80 04 01", onZones([](auto& c, const Zones& zones) {
             if (c[5] >= effectCount)
                 return refused(badEffect);
             return told(c[3], c[4], c[5], zones.front()->effects[c[5]]);
         })},
        {"80/81 0C 01",
         onZones([this](auto& c, const Zones& zones) { return tellEffects(c, *zones.front()); })},
        {".. 08 02", onZones([this](auto& c, const Zones& zones) { return takeCustom(c, zones); })},
        {".. 08 01", onZones([this](auto& c, const Zones& zones) { return tellCustom(c, zones); })},
        {".. 09", [this](auto& c) { takeFrame(c); }},
    };
}

std::vector<Row> StrandFirmware::portRows()
{
    return {
        {"80 06 02", [this](auto& c) { return takeSize(c); }},
        {"80 06 01", onPorts([this](auto& c, const Ports& ports) {
             const Port& port = working.ports[ports.front()];
             return told(c[3], port.chainLength, port.leds);
         })},
        {"80 07 01", onPorts([this](auto& c, const Ports& ports) {
             const std::vector<std::uint8_t> leds = fanLeds(ports.front());
             return told(c[3], leds.size(), leds);
         })},
        {"80 0A 02", onZones([this](auto& c, const Zones&) {
             now.identified = {c[3], c[4]};
             return accepted();
         })},
        {"80 0B 02", onPorts([this](auto& c, const Ports& ports) {
             if (c[4] != strand && c[4] != fans)
                 return refused(badType);
             for (const std::size_t port : ports)
                 working.ports[port].type = c[4];
             return accepted();
         })},
        {"80 0B 01", onPorts([this](auto& c, const Ports& ports) {
             return told(c[3], working.ports[ports.front()].type);
         })},
        {"80 0D 02", onPorts([this](auto& c, const Ports& ports) { return takeNumbers(c, ports); })},
        {"80 10 02", onPorts([this](auto& c, const Ports& ports) {
             for (const std::size_t port : ports)
                 c.copy(4, working.ports[port].overlay);
             return accepted();
         })},
        {"80 10 01", onPorts([this](auto& c, const Ports& ports) {
             return told(c[3], working.ports[ports.front()].overlay);
         })},
        {"80 B2 02", onPorts([this](auto&, const Ports& ports) {
             discover(ports);
             return accepted();
         })},
        {"80 B5 02", onPorts([this](auto& c, const Ports&) { return carried(true, c, 4, working.owner); })},
        {"80 B5 01", [this] { return told(working.owner); }},
    };
}

std::vector<Row> StrandFirmware::deviceRows()
{
    return {
        {"80 11 02", [this](auto& c) { return carried(true, c, 3, std::span(&working.overlayMode, 1)); }},
        {"80 11 01", [this] { return told(working.overlayMode); }},
        {"80 B0 02", done([this] { saved = working; })},
        {"80 B1 02",
         [this](auto& c) {
             if (c[3] > 2)
                 return refused(badType);
             restore(c[3]);
             return accepted();
         }},
        {"80 B4 01", [] { return told(version & 0xFF, version >> 8); }},
        {"80 B6 02", done([this] { saved = working = factorySettings(); })},
        {"80 C0 02", [this](auto& c) { return carried(true, c, 3, std::span(&working.multilayer, 1)); }},
        {"80 C0 01", [this] { return told(working.multilayer); }},
    };
}

void StrandFirmware::restart()
{
    working = saved;
    discovered = attached;
    now = {};
}

/// Fans that were plugged in or pulled off since the last look lose their numbers.
void StrandFirmware::discover(const Ports& ports)
{
    for (const std::size_t port : ports)
        if (discovered[port] != attached[port]) {
            discovered[port] = attached[port];
            working.ports[port].order = Port{}.order;
        }
}

StrandFirmware::Ports StrandFirmware::portsOf(std::uint8_t mask)
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

StrandFirmware::Zones StrandFirmware::zonesOf(std::uint8_t ports, std::uint8_t subPorts)
{
    Zones zones;
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

Answer StrandFirmware::tellEffects(const Command& command, const Zone& zone) const
{
    const bool first = command[0] == 0x80;
    std::vector<std::uint8_t> data = joined(command[3], command[4]);
    if (first)
        data.push_back(std::uint8_t(effectCount));
    const std::size_t end = first ? firstEntries : effectCount;
    for (std::size_t effect = first ? 0 : firstEntries; effect < end; ++effect) {
        std::array<std::uint8_t, entrySize> entry{std::uint8_t(effect)};
        std::ranges::copy(zone.effects[effect], entry.begin() + 1);
        data.insert(data.end(), entry.begin(), entry.end());
    }
    return told(data);
}

Answer StrandFirmware::takeSize(const Command& command)
{
    const std::uint8_t number = command[3], chain = command[4], leds = command[5];
    if (number >= portCount && number != everything)
        return refused(badPort);
    if (chain < 1 || chain > 10 || leds < 4 || leds > 60 || chain * leds > int(ledCount))
        return refused(badSize);
    for (std::size_t port = 0; port < portCount; ++port)
        if (number == everything || number == port) {
            working.ports[port].chainLength = chain;
            working.ports[port].leds = leds;
        }
    return accepted();
}

Answer StrandFirmware::takeNumbers(const Command& command, const Ports& ports)
{
    auto order = working.ports[ports.front()].order;
    const auto before = order;
    std::uint8_t taken = 0, given = 0;
    for (std::size_t i = 4; i < 4 + 2 * fanCount; i += 2) {
        const std::uint8_t old = command[i], next = command[i + 1];
        if (old == 0 && next == 0)
            continue;
        if (!std::has_single_bit(old) || !std::has_single_bit(next) || old >> fanCount || next >> fanCount)
            return refused(badSubPort);
        order[std::size_t(std::countr_zero(next))] = before[std::size_t(std::countr_zero(old))];
        taken |= old;
        given |= next;
    }
    // A number that is given to one fan has been another's, which needs one too.
    if (taken != given)
        return refused(badSubPort);
    for (const std::size_t port : ports)
        working.ports[port].order = order;
    return accepted();
}

Answer StrandFirmware::takeCustom(const Command& command, const Zones& zones)
{
    PlaceTransfer& custom = now.custom;
    const std::uint8_t part = command[0] & ~lastPart;
    if (part == 0) {
        custom.begin(Colors{}.size());
        custom.ports = command[3];
        custom.subPorts = command[4];
    }
    if (custom.whole() || custom.ports != command[3] || custom.subPorts != command[4] ||
        !custom.add(part, command.bytes(dataFrom, partBytes))) {
        custom.end();
        return refused(badPart);
    }
    if (command[0] & lastPart) {
        for (Zone* const zone : zones)
            std::ranges::copy(custom.data, zone->custom.begin());
        custom.end();
    }
    return told(command[3], command[4]);
}

Answer StrandFirmware::tellCustom(const Command& command, const Zones& zones)
{
    const std::size_t from = (command[0] & ~lastPart) * partBytes;
    const std::span<const std::uint8_t> colors = zones.front()->custom;
    if (from >= colors.size())
        return refused(badPart);
    return told(command[3], command[4], colors.subspan(from, std::min(partBytes, colors.size() - from)));
}

void StrandFirmware::takeFrame(const Command& command)
{
    struct Part {
        std::uint8_t number;
        std::size_t from, bytes; ///< Place in the report.
    };
    static constexpr std::array<Part, 3> parts{{{0x00, 5, 59}, {0x01, 2, 62}, {0x82, 2, 59}}};
    PlaceTransfer& frame = now.frame;
    const auto part = std::ranges::find(parts, command[0], &Part::number);
    if (part == parts.begin()) {
        frame.begin(Colors{}.size());
        frame.ports = command[2];
        frame.subPorts = command[3];
    }
    if (part == parts.end() || (part == parts.begin() && command[4] != ledCount)) {
        frame.end();
        return;
    }
    if (!frame.add(std::uint8_t(part - parts.begin()), command.bytes(part->from, part->bytes)) ||
        !frame.whole())
        return;
    if (now.drivenByHost)
        show(frame);
    frame.end();
}

void StrandFirmware::show(const PlaceTransfer& frame)
{
    const Ports ports = portsOf(frame.ports);
    const std::vector<std::size_t> subPorts = subPortsOf(frame.subPorts);
    Colors whole;
    std::ranges::copy(frame.data, whole.begin());
    for (const std::size_t port : ports) {
        auto& shown = now.shown[port];
        if (frame.subPorts != 0) {
            for (const std::size_t subPort : subPorts)
                shown[subPort] = whole;
            continue;
        }
        shown = {};
        shown[0] = whole;
        std::span<const std::uint8_t> rest = whole;
        std::size_t fan = 0;
        for (const std::uint8_t leds : fanLeds(port)) {
            const auto part = rest.first(std::min(rest.size(), std::size_t(3 * leds)));
            std::ranges::copy(part, shown[++fan].begin());
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

Picture StrandFirmware::drawn() const
{
    Picture zones;
    const auto add = [&](std::string name, std::size_t port, std::size_t subPort, std::size_t leds) {
        const std::span<const std::uint8_t> colors = now.shown[port][subPort];
        zones.push_back({std::move(name), now.drivenByHost
                                              ? lightsOf(colors.first(3 * leds))
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

} // namespace pyrux::sim
