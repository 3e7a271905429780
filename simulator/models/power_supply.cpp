#include "simulator/models/power_supply.h"

#include "simulator/models/identities.h"

#include <algorithm>
#include <cctype>
#include <condition_variable>
#include <cstdio>

namespace pyrux::sim {

namespace {

using Model = PowerSupplyFirmware::Model;
using Curve = PowerSupplyFirmware::Curve;
using Measurements = PowerSupplyFirmware::Measurements;

constexpr Model voltgrid{"VOLTGRID", 0x0030, 850, true, "F1.3"};

constexpr std::array<Model, PsuCtrlFirmware::variants> lines{{
    {"AU_LINE_550_MULTI", 0x018D, 550, true, "C1.2"},
    {"AU_LINE_650_MULTI", 0x018F, 650, true, "C1.2"},
    {"AU_LINE_750_MULTI", 0x0191, 750, true, "C1.2"},
    {"AU_LINE_850_MULTI", 0x0193, 850, true, "C1.2"},
    {"AU_LINE_550_SINGLE", 0x0195, 550, false, "C1.2"},
    {"AU_LINE_650_SINGLE", 0x0197, 650, false, "C1.2"},
    {"AU_LINE_750_SINGLE", 0x0199, 750, false, "C1.2"},
    {"AU_LINE_850_SINGLE", 0x019B, 850, false, "C1.2"},
    {"SILENT_1300", 0x01A5, 1300, true, "C2.0"},
    {"PT_LINE_650_MULTI", 0x019D, 650, true, "C1.2"},
    {"PT_LINE_750_MULTI", 0x019F, 750, true, "C1.2"},
    {"PT_LINE_850_MULTI", 0x01A1, 850, true, "C1.2"},
}};

const Identity& identityOf(const Model& model)
{
    return standingIdentity(model.name, model.pid, 0x0100,
                            {{.interface = -1, .usagePage = 0xFF00, .usage = 0x0001}}, -1);
}

constexpr Curve factoryCurve{{{30, 10}, {40, 30}, {60, 50}, {70, 70}}};
constexpr int customMode = 5;
constexpr std::array<int, 4> builtInFloors{10, 25, 40, 100}; // percent at 30 degrees and below, by mode
constexpr int fullSpeed = 2000;                              // rpm

/// The load goes from 20 to 80 percent and back.
constexpr int leastLoad = 20, mostLoad = 80, roundsPerPercent = 2;

/// A value that goes up and down between 0 and `top`, each step `slowness` rounds long.
constexpr int swing(int round, int top, int slowness)
{
    const int place = round / slowness % (2 * top);
    return place <= top ? place : 2 * top - place;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int valueOf(char c)
{
    return c - '0';
}

std::string formatted(const char* format, int a, int b = 0, int c = 0)
{
    char text[24];
    std::snprintf(text, sizeof text, format, a, b, c);
    return text;
}

/// The reports of a round. The input stands before the output, so that a host that knows a part of a round
/// never sees more going out than in.
std::vector<std::string> reportsOf(const Measurements& values)
{
    std::vector<std::string> reports{
        formatted("[P1%d.%02d]", values.powerFactorPercent / 100, values.powerFactorPercent % 100)};
    for (std::size_t i = 0; i < PowerSupplyFirmware::channels; ++i) {
        const int volts = values.decivolts[i], amperes = values.deciamperes[i];
        reports.push_back(formatted("[V%d%03d.%d]", int(i) + 1, volts / 10, volts % 10));
        reports.push_back(formatted("[I%d%03d.%d]", int(i) + 1, amperes / 10, amperes % 10));
    }
    reports.push_back(formatted("[T1%03d.%d]", values.decidegrees / 10, values.decidegrees % 10));
    reports.push_back(formatted("[R1%04d]", values.rpm));
    return reports;
}

} // namespace

/// What the model and its thread share. It outlives the model where the thread is the last to let the model
/// go.
struct PowerSupplyFirmware::Stream {
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;

    /// False: the stream has ended.
    bool sleep(std::chrono::milliseconds time)
    {
        std::unique_lock lock(mutex);
        return !changed.wait_for(lock, time, [this] { return ended; });
    }
};

PowerSupplyFirmware::PowerSupplyFirmware(const Model& of)
    : model(of), self(identityOf(of)), inForce(factoryCurve), stored(factoryCurve), version(of.version)
{
}

PowerSupplyFirmware::~PowerSupplyFirmware()
{
    PowerSupplyFirmware::powerOff();
}

VoltgridFirmware::VoltgridFirmware() : PowerSupplyFirmware(voltgrid) {}
PsuCtrlFirmware::PsuCtrlFirmware(std::size_t variant) : PowerSupplyFirmware(lines.at(variant)) {}

void PowerSupplyFirmware::powerOn()
{
    powerOff();
    const Lock streamLock(streamMutex);
    const Lock lock(mutex);
    round = 0;
    stored = inForce;
    if (pause.count() <= 0)
        return;
    streaming = std::make_shared<Stream>();
    thread = std::thread([this, stream = streaming, every = pause] { run(stream, every); });
}

void PowerSupplyFirmware::powerOff()
{
    const Lock lock(streamMutex);
    if (!streaming)
        return;
    {
        const Lock streamLock(streaming->mutex);
        streaming->ended = true;
    }
    streaming->changed.notify_all();
    streaming.reset();
    // The thread itself may be the last to let go of the device; it looks at nothing but the stream then.
    if (thread.get_id() == std::this_thread::get_id())
        thread.detach();
    else
        thread.join();
}

void PowerSupplyFirmware::run(const std::shared_ptr<Stream>& stream, std::chrono::milliseconds every)
{
    while (true)
        for (const std::string& report : reportsOf(nextRound())) {
            send(report);
            if (!stream->sleep(every))
                return;
        }
}

void PowerSupplyFirmware::sendRound()
{
    for (const std::string& report : reportsOf(nextRound()))
        send(report);
}

void PowerSupplyFirmware::send(const std::string& text)
{
    emit(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

Measurements PowerSupplyFirmware::nextRound()
{
    const Lock lock(mutex);
    const int now = round++;
    if (fixed)
        return *fixed;
    const int load = fixedLoad.value_or(leastLoad + swing(now, mostLoad - leastLoad, roundsPerPercent));
    Measurements values = simulated(load);
    values.decivolts[0] += swing(now, 16, 3) - 8; // the mains are never still
    return values;
}

/// All that follows from the load.
Measurements PowerSupplyFirmware::simulated(int load) const
{
    Measurements values;
    // Tenths of W: of the 12 V rails nine parts in ten of the load, in A at 12 V.
    const int twelve = model.watts * load * 9 / (10 * 12 * 10);
    const int second = model.severalRails ? twelve / 4 : 0;
    const int third = model.severalRails ? twelve / 8 : 0;
    values.decivolts = {2300, 51 - load / 60, 33, 122 - load / 50, 122 - load / 40, 121};
    values.deciamperes = {0, 10 + load / 2, 8 + load / 4, second, twelve - second - third, third};
    values.powerFactorPercent = 95 + load / 25;
    int out = 0; // hundredths of W
    for (std::size_t i = 1; i < channels; ++i)
        out += values.decivolts[i] * values.deciamperes[i];
    // At most 90 of 100 parts come out; the current is told in tenths, rounded up.
    const int perTenth = 90 * (values.decivolts[0] - 8) * values.powerFactorPercent;
    values.deciamperes[0] = (out * 100 * 100 + perTenth - 1) / perTenth;
    values.decidegrees = 280 + 35 * load / 10;
    values.rpm = fanPercent(values.decidegrees) * fullSpeed / 100;
    return values;
}

int PowerSupplyFirmware::fanPercent(int decidegrees) const
{
    if (mode != customMode)
        return std::min(100, builtInFloors[std::size_t(mode - 1)] + std::max(0, decidegrees - 300) / 10);
    Curve points = inForce;
    std::ranges::sort(points, {}, &Point::degrees);
    if (decidegrees <= 10 * points.front().degrees)
        return points.front().percent;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point &low = points[i - 1], &high = points[i];
        if (decidegrees < 10 * high.degrees)
            return low.percent + (high.percent - low.percent) * (decidegrees - 10 * low.degrees) /
                                     (10 * (high.degrees - low.degrees));
    }
    return points.back().percent;
}

void PowerSupplyFirmware::output(Bytes payload)
{
    const auto end = std::ranges::find(payload, 0);
    const std::string command(payload.begin(), end);
    if (command.size() < 4 || command.front() != '[' || command.back() != ']')
        return;
    std::string reply;
    {
        const Lock lock(mutex);
        reply = answer(command);
    }
    if (!reply.empty())
        send(reply);
}

/// What a command in brackets does, and the answer; empty: none.
std::string PowerSupplyFirmware::answer(const std::string& command)
{
    if (command == "[MQ]")
        return formatted("[M%d]", mode);
    if (command == "[OQ]")
        return formatted("[O%d]", rails);
    if (command == "[SQ]")
        return version;
    if (command.size() == 8 && command[1] == 'm') {
        setPoint(command);
        return {};
    }
    if (command.size() != 4 || !isDigit(command[2]))
        return {};
    const int value = valueOf(command[2]);
    switch (command[1]) {
    case 'M':
        setFanMode(value);
        break;
    case 'O':
        if (value >= 1 && value <= 3)
            rails = value;
        break;
    case 'Q':
        if (value >= 1 && value <= int(inForce.size())) {
            const Point& point = inForce[std::size_t(value - 1)];
            const std::string place = formatted("[m%d%02d", value, point.degrees);
            return place + (point.percent >= 100 ? "10]" : formatted("%02d]", point.percent / 10 + 1));
        }
        break;
    default:
        break;
    }
    return {};
}

void PowerSupplyFirmware::setFanMode(int next)
{
    if (next < 1 || next > customMode)
        return;
    if (next == customMode && mode != customMode)
        inForce = stored;
    mode = next;
}

void PowerSupplyFirmware::setPoint(const std::string& command)
{
    const std::string digits = command.substr(2, 5);
    if (!std::ranges::all_of(digits, isDigit))
        return;
    const int number = valueOf(digits[0]);
    if (number < 1 || number > int(stored.size()))
        return;
    const int hundreds = valueOf(digits[3]), tens = valueOf(digits[4]);
    const int percent = hundreds == 1 ? 100 + 10 * tens : 100 * hundreds + 10 * tens - 10;
    if (percent < 0 || percent > 100)
        return;
    stored[std::size_t(number - 1)] = {10 * valueOf(digits[1]) + valueOf(digits[2]), percent};
}

bool PowerSupplyFirmware::happen(const std::string& event, const std::vector<int>& values)
{
    const Lock lock(mutex);
    if (event == "load" && values.size() == 1 && values[0] >= 0 && values[0] <= 100)
        fixedLoad = values[0];
    else if (event == "vary" && values.empty())
        fixedLoad.reset();
    else
        return false;
    return true;
}

std::vector<std::string> PowerSupplyFirmware::events() const
{
    return {"load PERCENT", "vary"};
}

void PowerSupplyFirmware::setPause(std::chrono::milliseconds next)
{
    const Lock lock(mutex);
    pause = next;
}

void PowerSupplyFirmware::setMeasurements(std::optional<Measurements> next)
{
    const Lock lock(mutex);
    fixed = next;
}

void PowerSupplyFirmware::setVersion(const std::string& text)
{
    const Lock lock(mutex);
    version = text;
}

int PowerSupplyFirmware::fanMode() const
{
    const Lock lock(mutex);
    return mode;
}

int PowerSupplyFirmware::railMode() const
{
    const Lock lock(mutex);
    return rails;
}

Curve PowerSupplyFirmware::curve() const
{
    const Lock lock(mutex);
    return inForce;
}

Curve PowerSupplyFirmware::storedCurve() const
{
    const Lock lock(mutex);
    return stored;
}

} // namespace pyrux::sim
