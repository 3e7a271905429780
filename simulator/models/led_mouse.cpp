#include "simulator/models/led_mouse.h"

#include "simulator/models/identities.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

using Model = LedMouseFirmware::Model;

/// The models. Never destroyed: a write may hang in one to the end of the process.
struct Models {
    Model rd215{"RD215", 0x0101, {0, 1, 2, 4, 176, 254}};
    Model rd230{"RD230", 0x0141, {0, 1, 2, 4, 176, 254}};
    Model rd240{"RD240", 0x0165, {0, 1, 2, 4, 5, 176, 254}};
    Model rd110{"RD110", 0x015F, {0, 1, 2, 4, 5, 176, 254}};
};

const Models& models()
{
    static const Models& all = *new Models;
    return all;
}

const Identity& identityOf(const Model& model)
{
    return standingIdentity(model.name, model.pid, 0x0102,
                            {{.interface = 0, .usagePage = 0x0001, .usage = 0x0002},
                             {.interface = 1, .usagePage = 0xFF00, .usage = 0x0001}},
                            1);
}

constexpr std::uint8_t resetEverything = 0xFF;
constexpr std::size_t parametersFrom = 5; // bytes of the reports that carry them
constexpr std::size_t customFrom = 4;
constexpr std::size_t brightness = 4, red = 5, green = 6, blue = 7; // places in the parameters
constexpr std::uint8_t customMode = 176, darkMode = 254;
constexpr std::size_t mostLeds = 15; // of a frame

} // namespace

LedMouseFirmware::LedMouseFirmware(const Model& model) : model(model), self(identityOf(model))
{
    working.fill(factoryEffects());
    saved = working;
}

RD215Firmware::RD215Firmware() : LedMouseFirmware(models().rd215) {}
RD230Firmware::RD230Firmware() : LedMouseFirmware(models().rd230) {}
RD240Firmware::RD240Firmware() : LedMouseFirmware(models().rd240) {}
RD110Firmware::RD110Firmware() : LedMouseFirmware(models().rd110) {}

LedMouseFirmware::Effects LedMouseFirmware::factoryEffects() const
{
    Effects effects;
    for (const std::uint8_t mode : model.effectModes)
        effects.parameters[mode] = {0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return effects;
}

const Identity& LedMouseFirmware::identity() const
{
    return self;
}

void LedMouseFirmware::powerOn()
{
    RD210Firmware::powerOn();
    const std::lock_guard lock(mutex);
    working = saved;
    drivenByHost = false;
    shown = {};
    frameCount = 0;
}

bool LedMouseFirmware::hasMode(int mode) const
{
    return std::ranges::find(model.effectModes, mode) != model.effectModes.end();
}

std::optional<LedMouseFirmware::Payload> LedMouseFirmware::answer(const Payload& command)
{
    if (command[0] == 0xC0) {
        if (stateLocked() == State::live)
            takeFrame(command);
        return {};
    }
    std::optional<Payload> reply;
    if (command[0] == 0x41 && command[1] == 0x02) {
        setState(State::live);
        reply = Payload{0x41, 0x02};
    } else if ((command[0] == 0x51 || command[0] == 0x52) && stateLocked() == State::configuration) {
        reply = answerEffect(command);
    }
    if (!reply)
        reply = RD210Firmware::answer(command);
    if (!reply)
        return {};
    if (command[0] == 0x41)
        drivenByHost = drivenByHost && stateLocked() == State::live;
    if (command[0] == 0x50 && command[1] == 0x55)
        saved = working;
    if (command[0] == 0x50 && command[1] == 0x10) {
        if (command[4] == resetEverything) {
            working.fill(factoryEffects());
            saved = working;
        } else {
            current() = factoryEffects();
        }
    }
    return reply;
}

void LedMouseFirmware::takeFrame(const Payload& command)
{
    switch (command[1]) {
    case 0xF0:
        drivenByHost = command[4] == 1;
        return;
    case 0x00:
        shown.fill({command[4], command[5], command[6]});
        break;
    case 0x01: {
        if (command[2] > mostLeds)
            return;
        shown = {};
        for (std::size_t i = 0; i < command[2]; ++i) {
            const std::size_t at = 4 + 4 * i;
            if (command[at] < shown.size())
                shown[command[at]] = {command[at + 1], command[at + 2], command[at + 3]};
        }
        break;
    }
    default:
        return;
    }
    ++frameCount;
}

std::optional<LedMouseFirmware::Payload> LedMouseFirmware::answerEffect(const Payload& command)
{
    const bool set = command[0] == 0x51;
    Payload reply{};
    std::copy_n(command.begin(), 4, reply.begin());
    // One way or the other: from the command into the settings, or from the settings into the reply.
    const auto carry = [&](std::span<std::uint8_t> setting, std::size_t from) {
        if (set)
            std::copy_n(command.begin() + std::ptrdiff_t(from), setting.size(), setting.begin());
        else
            std::ranges::copy(setting, reply.begin() + std::ptrdiff_t(from));
    };
    switch (command[1]) {
    case 0x28:
        if (set && !hasMode(command[4]))
            return {};
        carry(std::span(&current().mode, 1), 4);
        return reply;
    case 0x2B:
        if (!hasMode(command[4]))
            return {};
        reply[4] = command[4];
        carry(current().parameters[command[4]], parametersFrom);
        return reply;
    case 0xA8:
        carry(current().custom, customFrom);
        return reply;
    default:
        return {};
    }
}

bool LedMouseFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    if (event != "effect" && event != "brightness" && event != "switch")
        return RD210Firmware::happen(event, values);
    if (values.size() != 1)
        return false;
    std::optional<Payload> report;
    {
        const std::lock_guard lock(mutex);
        report = byItself(event, values.front());
    }
    if (!report)
        return false;
    emit(*report);
    return true;
}

/// The report with which the device tells of what it has done; none: it cannot.
std::optional<LedMouseFirmware::Payload> LedMouseFirmware::byItself(const std::string& event, int value)
{
    Payload report{0x42, 0x20, 0x00, profileLocked()};
    if (event == "effect") {
        if (!hasMode(value))
            return {};
        current().mode = std::uint8_t(value);
        report[7] = 1;
    } else if (event == "brightness") {
        if (value < 0 || value > 255)
            return {};
        current().parameters[current().mode][brightness] = std::uint8_t(value);
        report[8] = 1;
    } else {
        if (!setProfileLocked(value))
            return {};
        report[3] = profileLocked();
        report[4] = report[7] = report[8] = 1;
    }
    return report;
}

std::vector<std::string> LedMouseFirmware::events() const
{
    std::vector<std::string> names = RD210Firmware::events();
    for (const char* name : {"effect MODE", "brightness VALUE", "switch N"})
        names.emplace_back(name);
    return names;
}

LedMouseFirmware::Effects LedMouseFirmware::effects(int profile) const
{
    const std::lock_guard lock(mutex);
    return working.at(std::size_t(profile));
}

LedMouseFirmware::Effects LedMouseFirmware::savedEffects(int profile) const
{
    const std::lock_guard lock(mutex);
    return saved.at(std::size_t(profile));
}

bool LedMouseFirmware::driven() const
{
    const std::lock_guard lock(mutex);
    return drivenByHost;
}

Picture LedMouseFirmware::picture() const
{
    const std::lock_guard lock(mutex);
    LightZone zone{"mouse", {shown.begin(), shown.end()}};
    if (drivenByHost)
        return {zone};
    const Effects& effects = working[profileLocked()];
    const auto& own = effects.parameters.at(effects.mode);
    const auto dimmed = [&](std::size_t color) { return std::uint8_t(own[color] * own[brightness] / 255); };
    for (std::size_t led = 0; led < ledCount; ++led) {
        const std::uint8_t* const custom = &effects.custom[3 * led];
        zone.leds[led] = effects.mode == darkMode     ? Light{}
                         : effects.mode == customMode ? Light{custom[0], custom[1], custom[2]}
                                                      : Light{dimmed(red), dimmed(green), dimmed(blue)};
    }
    return {zone};
}

int LedMouseFirmware::frames() const
{
    const std::lock_guard lock(mutex);
    return frameCount;
}

} // namespace pyrux::sim
