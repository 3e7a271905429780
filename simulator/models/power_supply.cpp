#include "simulator/models/power_supply.h"

#include <algorithm>
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

/// The value of a digit; of other characters one that no command has.
int valueOf(std::uint8_t character)
{
    return character >= '0' && character <= '9' ? character - '0' : -1;
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
    : TableFirmware(identityOf(of.name, of.pid, 0x0100,
                               {{.interface = -1, .reports = {{.output = 16, .input = 16}}}}, -1),
                    {}),
      model(of), inForce(factoryCurve), stored(factoryCurve), version(of.version)
{
    takes({
        {Head::text("[MQ]"), [this] { return report(joined(formatted("[M%d]", mode))); }},
        {Head::text("[M.]"), [this](auto& c) { setFanMode(valueOf(c[2])); }},
        {Head::text("[Q.]"), [this](auto& c) { return tellPoint(valueOf(c[2])); }},
        {Head::text("[m.....]"), [this](auto& c) { setPoint(c); }},
        {Head::text("[OQ]"), [this] { return report(joined(formatted("[O%d]", rails))); }},
        {Head::text("[O.]"),
         [this](auto& c) {
             if (const int next = valueOf(c[2]); next >= 1 && next <= 3)
                 rails = next;
         }},
        {Head::text("[SQ]"), [this] { return version.empty() ? silence() : report(joined(version)); }},
    });
    does({
        {"load", {{"PERCENT", 0, 100}}, [this](auto& values) { fixedLoad = values[0]; }},
        {"vary", {}, [this] { fixedLoad.reset(); }},
    });
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
    TableFirmware::powerOn();
    const std::chrono::milliseconds every = copyOf(pause);
    if (every.count() <= 0)
        return;
    streaming = std::make_shared<Stream>();
    thread = std::thread([this, stream = streaming, every] { run(stream, every); });
}

void PowerSupplyFirmware::restart()
{
    round = 0;
    stored = inForce;
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

void PowerSupplyFirmware::setFanMode(int next)
{
    if (next < 1 || next > customMode)
        return;
    if (next == customMode && mode != customMode)
        inForce = stored;
    mode = next;
}

/// [mnTTSS]
void PowerSupplyFirmware::setPoint(const Command& command)
{
    std::array<int, 5> digits;
    for (std::size_t i = 0; i < digits.size(); ++i)
        digits[i] = valueOf(command[2 + i]);
    const auto [number, tenDegrees, degrees, hundreds, tens] = digits;
    const int percent = hundreds == 1 ? 100 + 10 * tens : 100 * hundreds + 10 * tens - 10;
    if (std::ranges::min(digits) < 0 || number < 1 || number > int(stored.size()) || percent < 0 ||
        percent > 100)
        return;
    stored[std::size_t(number - 1)] = {10 * tenDegrees + degrees, percent};
}

Answer PowerSupplyFirmware::tellPoint(int number) const
{
    if (number < 1 || number > int(inForce.size()))
        return refused();
    const Point& point = inForce[std::size_t(number - 1)];
    return report(
        joined(formatted("[m%d%02d", number, point.degrees),
               point.percent >= 100 ? std::string("10]") : formatted("%02d]", point.percent / 10 + 1)));
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

} // namespace pyrux::sim
