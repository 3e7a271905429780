#include "devices/power/power_supply.h"

#include "core/log.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <span>

namespace pyrux {

/// What a supply sends by itself, each '#' being a digit.
struct PowerSupply::MeasurementText {
    std::string_view text;
    Quantity quantity;
};
const std::array<PowerSupply::MeasurementText, 5> PowerSupply::measurementTexts{{
    {"[V####.#]", Quantity::voltage}, // the first digit is the channel
    {"[I####.#]", Quantity::current}, // likewise
    {"[P1#.##]", Quantity::powerFactor},
    {"[T1###.#]", Quantity::temperature},
    {"[R1####]", Quantity::fanSpeed},
}};

namespace cmd { // each '#' is a digit
constexpr std::string_view askFanMode = "[MQ]";
constexpr std::string_view fanMode = "[M#]"; // sets it, and is the reply to the above
constexpr std::string_view askFanPoint = "[Q#]";
constexpr std::string_view fanPoint = "[m#####]"; // point, temperature, speed: sets it, and is the reply
constexpr std::string_view askRailMode = "[OQ]";
constexpr std::string_view railMode = "[O#]"; // sets it, and is the reply
constexpr std::string_view askVersion = "[SQ]";
} // namespace cmd

namespace {

constexpr std::size_t reportSize = 17; // of both directions
constexpr int survivedFailures = 29;
constexpr std::chrono::milliseconds replyWait{1000};

constexpr std::uint8_t fanModes = 5;
constexpr int otherFanMode = 2; // the mode between two entries of the custom one
constexpr std::chrono::milliseconds fanModePause{1000};
constexpr std::size_t fanPoints = std::extent_v<decltype(VoltgridFan::points)>;
constexpr int hottest = 70;
constexpr int fastest = 100;
constexpr int nearlyFastest = 90; // goes out as `fastest`
constexpr std::array<PsuFanPoint<std::uint16_t>, fanPoints> defaultCurve{
    {{30, 10}, {40, 30}, {60, 50}, {70, 70}}};

constexpr std::uint8_t railModes = 3;
constexpr std::uint8_t railModeOfNoReply = 1;

constexpr std::size_t firstRail = 1;
constexpr std::size_t mains = 0, rail5V = 1, rail3V3 = 2, second12V = 3, first12V = 4, third12V = 5;

/// The letters that a version begins with, by family.
constexpr std::array<std::string_view, 2> families{"C", "F"};

/// The two digits of a speed. Deliberate: below 90 the tens go out one higher than they are, as the reading
/// takes 10 away again.
struct SpeedDigits {
    int first, second;
};
constexpr SpeedDigits speedDigits(int speed)
{
    if (speed >= nearlyFastest)
        return {1, 0};
    return {speed / 100, (speed + 10) % 100 / 10};
}

/// Deliberate: 0, 0 gives -10, which is no speed and lets the curve fail.
constexpr int speedOf(int first, int second)
{
    return first == 1 ? 100 + 10 * second : 100 * first + 10 * second - 10;
}

bool isPossible(std::span<const PsuFanPoint<std::uint16_t>> curve)
{
    for (std::size_t i = 0; i < curve.size(); ++i) {
        if (curve[i].temperature > hottest || curve[i].speed > fastest)
            return false;
        for (std::size_t j = 0; j < i; ++j)
            if (curve[i].temperature == curve[j].temperature)
                return false;
    }
    return true;
}

/// One or two digits from `place` on, which goes after them; none where there are none, or more.
std::optional<std::uint8_t> shortNumber(const Reply& reply, std::size_t& place)
{
    Digits digits;
    const std::size_t first = place;
    for (; place < first + 3; ++place) {
        const auto digit = digitOf(reply[place]);
        if (!digit)
            break;
        digits.add(*digit);
    }
    const std::size_t length = place - first;
    return length == 1 || length == 2 ? std::optional(std::uint8_t(digits.number(0))) : std::nullopt;
}

} // namespace

void SampleWindow::add(float sample)
{
    if (count == capacity) {
        std::shift_left(samples.begin(), samples.end(), 1);
        --count;
    }
    samples[count++] = sample;
}

float SampleWindow::mean() const
{
    if (count == 0)
        return 0;
    return std::accumulate(samples.begin(), samples.begin() + std::ptrdiff_t(count), 0.0F) / float(count);
}

PowerSupply::PowerSupply(const std::string& path, const SupplyTraits& traits, Clock& clock)
    : LinkedDevice(path,
                   {.model = traits.model,
                    .failureLogged = false,
                    .reportSize = reportSize,
                    .wait = replyWait,
                    .timeoutText = "cannot receive",
                    .runningMatchCount = true,
                    .survivedFailures = survivedFailures},
                   clock),
      traits(traits), clock(clock)
{
    if (link.opened())
        link.start([this](const Reply& reply) { take(reply); });
}

PowerSupply::~PowerSupply()
{
    link.stop();
}

void PowerSupply::abort()
{
    LinkedDevice::abort();
    const std::lock_guard lock(pauseLock);
    pauseCut.notify_all();
}

_error PowerSupply::getInput(PsuInput& input)
{
    input = inputOf(measured());
    return E_OK;
}

_error PowerSupply::getOutput(PsuOutput& output)
{
    output = outputOf(measured());
    return E_OK;
}

_error PowerSupply::getThermal(float& temperature)
{
    temperature = measured().temperature;
    return E_OK;
}

_error PowerSupply::getMultiRail(std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = ask(textReport(cmd::askRailMode), "[O", reply))
        return result;
    const auto digits = digitsIn(reply, cmd::railMode);
    *mode = digits ? (*digits)[0] : railModeOfNoReply;
    return E_OK;
}

_error PowerSupply::setMultiRail(std::uint8_t mode)
{
    if (mode < 1 || mode > railModes)
        return E_INVALID_MODE;
    return write(cmd::railMode, {mode});
}

_error PowerSupply::getVersion(std::uint8_t* family, std::uint8_t* major, std::uint8_t* minor)
{
    if (!family || !major || !minor)
        return E_INVALID_GET;
    _error result = E_INVALID_GET;
    for (std::size_t i = 0; i < families.size(); ++i) {
        Reply reply;
        result = ask(textReport(cmd::askVersion), families[i], reply);
        if (result)
            continue;
        std::size_t place = families[i].size();
        const auto before = shortNumber(reply, place);
        const bool point = reply[place++] == '.';
        const auto behind = shortNumber(reply, place);
        if (!before || !point || !behind)
            return E_INVALID_GET;
        *family = std::uint8_t(i);
        *major = *before;
        *minor = *behind;
        return E_OK;
    }
    return result;
}

PowerSupply::Measurements PowerSupply::measured() const
{
    const std::lock_guard lock(measurementLock);
    return measurements;
}

PsuInput PowerSupply::inputOf(const Measurements& values) const
{
    PsuInput input{.voltage = values.voltage[mains].mean(),
                   .current = values.current[mains].mean(),
                   .powerFactor = values.powerFactor,
                   .inputPower = 0,
                   .outputPower = 0,
                   .efficiency = 0};
    input.inputPower = input.voltage * input.current * (traits.powerFactorCounts ? input.powerFactor : 1.0F);
    for (std::size_t rail = firstRail; rail < channels; ++rail)
        input.outputPower += values.voltage[rail].mean() * values.current[rail].mean();
    if (input.inputPower > 0)
        input.efficiency = input.outputPower / input.inputPower * 100;
    return input;
}

PsuOutput PowerSupply::outputOf(const Measurements& values) const
{
    const auto volts = [&](std::size_t rail) { return values.voltage[rail].mean(); };
    const auto amperes = [&](std::size_t rail) { return values.current[rail].mean(); };
    return {.voltage5V = volts(rail5V),
            .current5V = amperes(rail5V),
            .voltage3V3 = volts(rail3V3),
            .current3V3 = amperes(rail3V3),
            .voltage12V2 = volts(second12V),
            .current12V2 = amperes(second12V),
            .voltage12V1 = volts(first12V),
            .current12V1 = amperes(first12V),
            .voltage12V3 = volts(third12V),
            .current12V3 = amperes(third12V)};
}

_error PowerSupply::readFan(VoltgridFan& fan)
{
    if (lock_flag) {
        log(traits.model.logCategory, "this->lock_flag == 1");
        return E_INVALID_GET;
    }
    fan.speed = measured().fanSpeed;
    if (const _error result = askFan(fan)) {
        if (traits.fanLog) // deliberate: whatever the result
            log(traits.model.logCategory, "getPsuCtrlDeviceFan,ret=E_INVALID_GET");
        return result;
    }
    _error result = E_OK;
    if (fan.mode == PSUCTRL_FAN_CUSTOM && !isPossible(fan.points)) {
        std::ranges::copy(defaultCurve, fan.points);
        result = writeFan(fan);
    }
    if (traits.fanLog)
        log(traits.model.logCategory, [&] { return "getPsuCtrlDeviceFan,ret=" + std::to_string(result); });
    return result;
}

_error PowerSupply::writeFan(const VoltgridFan& fan)
{
    if (fan.mode < 1 || fan.mode > fanModes)
        return E_INVALID_MODE;
    if (traits.fanLock && lock_flag.exchange(true)) {
        log(traits.model.logCategory, "this->lock_flag == 1");
        return E_INVALID_GET;
    }
    const _error result = fan.mode == PSUCTRL_FAN_CUSTOM ? writeCurve(fan) : write(cmd::fanMode, {fan.mode});
    lock_flag = false;
    if (traits.fanLog)
        log(traits.model.logCategory, [&] { // deliberate: the text of a failure, whatever the result
            return result ? "setPsuCtrlDeviceFan,ret=E_INVALID_GET"
                          : "setPsuCtrlDeviceFan end.ret=" + std::to_string(result);
        });
    return result;
}

_error PowerSupply::askFan(VoltgridFan& fan)
{
    Reply reply;
    if (const _error result = ask(textReport(cmd::askFanMode), "[M", reply))
        return result;
    const auto digits = digitsIn(reply, cmd::fanMode);
    if (!digits)
        return E_INVALID_GET;
    fan.mode = (*digits)[0];
    std::ranges::fill(fan.points, PsuFanPoint<std::uint16_t>{});
    return fan.mode == PSUCTRL_FAN_CUSTOM ? askCurve(fan) : E_OK;
}

_error PowerSupply::askCurve(VoltgridFan& fan)
{
    for (std::size_t i = 0; i < fanPoints; ++i) {
        const char number = char('1' + i);
        const std::array pattern{'[', 'm', number};
        Reply reply;
        if (const _error result = ask(textReport(cmd::askFanPoint, {number - '0'}),
                                      std::string_view(pattern.data(), pattern.size()), reply))
            return result;
        const auto digits = digitsIn(reply, cmd::fanPoint);
        if (!digits || (*digits)[0] != i + 1)
            return E_INVALID_GET;
        fan.points[i] = {.temperature = std::uint16_t(10 * (*digits)[1] + (*digits)[2]),
                         .speed = std::uint16_t(speedOf((*digits)[3], (*digits)[4]))};
    }
    return E_OK;
}

/// The supply takes a curve only on entering the mode again.
_error PowerSupply::writeCurve(const VoltgridFan& fan)
{
    if (const _error result = write(cmd::fanMode, {PSUCTRL_FAN_CUSTOM}))
        return result;
    for (int i = 0; i < int(fanPoints); ++i) {
        const int temperature = fan.points[i].temperature;
        const SpeedDigits speed = speedDigits(fan.points[i].speed);
        if (const _error result = write(
                cmd::fanPoint, {i + 1, temperature / 10 % 10, temperature % 10, speed.first, speed.second}))
            return result;
    }
    if (const _error result = write(cmd::fanMode, {otherFanMode}))
        return result;
    pause(fanModePause);
    return write(cmd::fanMode, {PSUCTRL_FAN_CUSTOM});
}

_error PowerSupply::ask(const Report& command, std::string_view pattern, Reply& reply)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(pattern.data());
    return link.get(command, std::span(bytes, pattern.size()), reply);
}

_error PowerSupply::write(std::string_view text, std::initializer_list<int> digits)
{
    if (link.aborted())
        return E_NOT_OPEN;
    return link.send(textReport(text, digits));
}

void PowerSupply::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(pauseLock);
    clock.sleep(lock, pauseCut, time, [&] { return link.aborted(); });
}

void PowerSupply::take(const Reply& reply)
{
    if (!link.deliver(reply))
        takeMeasurement(reply);
}

/// A report with a wrong digit or without its closing bracket is no measurement.
void PowerSupply::takeMeasurement(const Reply& reply)
{
    for (const MeasurementText& measurement : measurementTexts)
        if (const auto digits = digitsIn(reply, measurement.text))
            keep(measurement.quantity, *digits);
}

void PowerSupply::keep(Quantity quantity, const Digits& digits)
{
    switch (quantity) {
    case Quantity::voltage:
        return keepSample(&Measurements::voltage, digits);
    case Quantity::current:
        return keepSample(&Measurements::current, digits);
    case Quantity::powerFactor:
        return keepValue(&Measurements::powerFactor, float(digits.number(0)) / 100);
    case Quantity::temperature:
        return keepValue(&Measurements::temperature, float(digits.number(0)) / 10);
    case Quantity::fanSpeed:
        keepValue(&Measurements::fanSpeed, std::uint16_t(digits.number(0)));
        if (traits.fanLog)
            log(traits.model.logCategory, [&] { return "R1:fan_speed=" + std::to_string(digits.number(0)); });
    }
}

/// The first digit is the channel; a channel that does not exist keeps nothing.
void PowerSupply::keepSample(Windows Measurements::*windows, const Digits& digits)
{
    const std::lock_guard lock(measurementLock);
    if (digits[0] >= 1 && digits[0] <= channels)
        (measurements.*windows)[digits[0] - 1U].add(float(digits.number(1)) / 10);
}

template <class Value>
void PowerSupply::keepValue(Value Measurements::*place, Value value)
{
    const std::lock_guard lock(measurementLock);
    measurements.*place = value;
}

} // namespace pyrux
