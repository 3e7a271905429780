#include "views.h"

#include "console.h"
#include "text.h"

#include <algorithm>
#include <chrono>

namespace pyrux::ctl {

namespace {

using Clock = std::chrono::steady_clock;

/// A zone with more LEDs goes on in the next line.
constexpr std::size_t ledsInALine = 64;
/// Up to so many LEDs, each is two columns wide, which makes it about a square.
constexpr std::size_t wideLeds = 32;

/// As often as a picture is looked at, and a device measured.
constexpr std::chrono::milliseconds pictureTime{40};
constexpr std::chrono::milliseconds measureTime{1000};

using Led = std::array<std::uint8_t, 3>;

std::string written(const LightZone& zone)
{
    std::string text;
    for (auto led = zone.leds.begin(); led != zone.leds.end();) {
        const auto end = std::find_if(led, zone.leds.end(), [&](const Led& other) { return other != *led; });
        text += text.empty() ? "" : " ";
        for (const std::uint8_t part : *led)
            text += hexadecimal(part, 2);
        if (end - led > 1)
            text += " x" + std::to_string(end - led);
        led = end;
    }
    return text;
}

std::string drawn(const LightZone& zone, const std::string& indent)
{
    const std::string block = zone.leds.size() > wideLeds ? " " : "  ";
    std::string text;
    for (std::size_t i = 0; i < zone.leds.size(); ++i) {
        if (i > 0 && i % ledsInALine == 0)
            text += "\x1b[0m\n" + indent;
        const auto& [red, green, blue] = zone.leds[i];
        text += "\x1b[48;2;" + std::to_string(red) + ";" + std::to_string(green) + ";" +
                std::to_string(blue) + "m" + block;
    }
    return text + "\x1b[0m";
}

/// Texts that follow each other: on a screen each takes the place of the one before.
class Drawing {
public:
    void show(const std::string& text)
    {
        console::print((onScreen && lines > 0 ? "\x1b[" + std::to_string(lines) + "A\x1b[J" : "") + text);
        lines = 1 + std::ranges::count(text, '\n');
    }

    const bool onScreen = console::isScreen();

private:
    std::ptrdiff_t lines = 0;
};

Clock::time_point endOf(const Command& command, Clock::time_point otherwise)
{
    return command.seconds ? Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                std::chrono::duration<double>(*command.seconds))
                           : otherwise;
}

struct ShownDevice {
    std::string title;
    Picture picture;
    bool operator==(const ShownDevice&) const = default;
};

std::vector<ShownDevice> shownDevices(Simulation& simulator, const std::string& which)
{
    std::vector<ShownDevice> shown;
    for (const auto& [model, path] : simulator.devices())
        if (which.empty() || equalIgnoringCase(path, which))
            shown.push_back({model + " " + path, simulator.picture(path)});
    if (shown.empty())
        throw Failure(Exit::noDevice,
                      which.empty() ? "no device is plugged in" : "no device " + which + " is attached");
    return shown;
}

std::string asText(const std::vector<ShownDevice>& devices, const Style& style, bool onScreen)
{
    Json all = Json::array();
    std::string text;
    for (const auto& [title, picture] : devices) {
        const auto blank = title.find(' ');
        all.push_back({{"model", title.substr(0, blank)},
                       {"path", title.substr(blank + 1)},
                       {"lights", asJson(picture)}});
        text += text.empty() ? "" : "\n";
        if (devices.size() > 1)
            text += title + "\n";
        text += picture.empty() ? "no lights" : asText(picture, onScreen);
    }
    return style.json ? toText(all) : text;
}

struct Measurement {
    std::string operation;
    Result result;
};

/// One round; empty when an operation fails, which is told.
std::vector<Measurement> measure(Session& session, const Command& command, const Model& model)
{
    std::vector<Measurement> round;
    Command one = command;
    for (const std::string_view operation : model.monitored) {
        one.words = {std::string(operation)};
        round.push_back({one.words.front(), callOperation(session, one, {})});
        if (const std::int32_t code = round.back().result.code; code < 0) {
            console::note(resultLine(one, code));
            return {};
        }
    }
    return round;
}

std::string asText(const std::vector<Measurement>& round, const Style& style)
{
    Json all = Json::object();
    std::string text;
    for (const auto& [operation, result] : round) {
        all[operation] = valueOf(result);
        for (const auto& [name, value] : result.outputs.items())
            text += (text.empty() ? "" : "\n") + outputText(name, value);
    }
    return style.json ? toText(all) : text;
}

} // namespace

std::string asText(const Picture& picture, bool onScreen)
{
    std::size_t width = 0;
    for (const LightZone& zone : picture)
        width = std::max(width, zone.name.size() + 2);
    std::string text;
    for (const LightZone& zone : picture)
        text += (text.empty() ? "" : "\n") + zone.name + std::string(width - zone.name.size(), ' ') +
                (onScreen ? drawn(zone, std::string(width, ' ')) : written(zone));
    return text;
}

Json asJson(const Picture& picture)
{
    Json zones = Json::object();
    for (const LightZone& zone : picture)
        zones[zone.name] = written(zone);
    return zones;
}

void showLights(Session& session, const Command& command)
{
    Simulation& simulator = session.simulator();
    console::catchInterrupt();
    Drawing drawing;
    const auto end = endOf(command, Clock::now());
    std::vector<ShownDevice> before;
    do {
        std::vector<ShownDevice> now = shownDevices(simulator, command.device);
        if (now != before)
            drawing.show(asText(now, command.style, drawing.onScreen));
        before = std::move(now);
    } while (Clock::now() < end && console::sleepUntil(std::min(end, Clock::now() + pictureTime)));
}

Exit monitor(Session& session, const Command& command)
{
    const Model& model = *findModel(command.name);
    if (command.words.size() > 1)
        throw UsageError(command.name + " monitor takes no arguments");
    session.open(model, command.device);
    console::catchInterrupt();
    Drawing drawing;
    const auto end = endOf(command, Clock::time_point::max());
    auto next = Clock::now() + measureTime; // a device that tells by itself has told by then
    for (unsigned shown = 0; !command.count || shown < *command.count; ++shown) {
        if (next > end || !console::sleepUntil(next))
            break;
        const std::vector<Measurement> round = measure(session, command, model);
        if (round.empty())
            return Exit::refused;
        drawing.show(asText(round, command.style));
        next += measureTime;
    }
    return Exit::fine;
}

} // namespace pyrux::ctl
