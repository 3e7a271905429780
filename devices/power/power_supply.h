#pragma once

#include "core/models.h"
#include "devices/host_object.h"
#include "devices/linked_device.h"
#include "devices/power/supply_text.h"
#include "pyrux/error.h"
#include "pyrux/psu_records.h"
#include "transport/clock.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>

namespace pyrux {

/// What tells one digital power supply from another.
struct SupplyTraits {
    const ModelRow& model;
    bool powerFactorCounts; ///< In the input power.
    bool fanLock;           ///< Calls that set or read the fan do not cross.
    bool fanLog;            ///< Fan speeds and the results of fan calls are logged.
};

/// The last samples of one channel.
class SampleWindow {
public:
    static constexpr std::size_t capacity = 17;

    void add(float sample);
    float mean() const; ///< 0 without samples.

private:
    std::array<float, capacity> samples{}; ///< Oldest first.
    std::size_t count = 0;
};

/// The protocol of the digital power supplies: short texts in both directions. Operations are those of the
/// host interfaces, whose headers tell arguments, results and texts.
class PowerSupply : public LinkedDevice {
public:
    PowerSupply(const std::string& path, const SupplyTraits& traits, Clock& clock);
    ~PowerSupply() override;

    void abort() override;

    _error getInput(PsuInput& input);
    _error getOutput(PsuOutput& output);
    _error getThermal(float& temperature);
    _error getMultiRail(std::uint8_t* mode);
    _error setMultiRail(std::uint8_t mode);
    _error getVersion(std::uint8_t* family, std::uint8_t* major, std::uint8_t* minor);

protected:
    static constexpr std::size_t channels = 6;
    using Windows = std::array<SampleWindow, channels>; ///< By channel number less one.

    /// What the supply has told.
    struct Measurements {
        Windows voltage;
        Windows current;
        float powerFactor = 0;
        float temperature = 0;
        std::uint16_t fanSpeed = 0;
    };

    Measurements measured() const;
    PsuInput inputOf(const Measurements& values) const;
    PsuOutput outputOf(const Measurements& values) const;

    _error readFan(VoltgridFan& fan);
    _error writeFan(const VoltgridFan& fan);

    const SupplyTraits& traits;

private:
    enum class Quantity { voltage, current, powerFactor, temperature, fanSpeed };
    struct MeasurementText;
    static const std::array<MeasurementText, 5> measurementTexts;

    void take(const Reply& reply);
    void takeMeasurement(const Reply& reply);
    void keep(Quantity quantity, const Digits& digits);
    void keepSample(Windows Measurements::*windows, const Digits& digits);
    template <class Value>
    void keepValue(Value Measurements::*place, Value value);

    _error ask(const Report& command, std::string_view pattern, Reply& reply);
    _error write(std::string_view text, std::initializer_list<int> digits);
    _error askFan(VoltgridFan& fan);
    _error askCurve(VoltgridFan& fan);
    _error writeCurve(const VoltgridFan& fan);
    void pause(std::chrono::milliseconds time);

    Clock& clock;

    mutable std::mutex measurementLock; ///< Guards `measurements`.
    Measurements measurements;

    std::atomic<bool> lock_flag{false}; ///< A fan is being set.
    std::mutex pauseLock;
    std::condition_variable pauseCut;
};

/// A supply whose fan curve has numbers of this width.
template <class Value>
class PowerSupplyOf : public PowerSupply {
public:
    using PowerSupply::PowerSupply;
    using Fan = PsuFanOf<Value>;

    _error getFan(Fan& fan)
    {
        auto wide = converted<VoltgridFan>(fan);
        const _error result = readFan(wide);
        fan = converted<Fan>(wide);
        return result;
    }
    _error setFan(const Fan& fan) { return writeFan(converted<VoltgridFan>(fan)); }

private:
    template <class To, class From>
    static To converted(const From& from)
    {
        To to{.mode = from.mode, .speed = from.speed, .points = {}};
        for (std::size_t i = 0; i < std::size(to.points); ++i) {
            using Number = decltype(to.points[i].speed);
            to.points[i] = {Number(from.points[i].temperature), Number(from.points[i].speed)};
        }
        return to;
    }
};

/// The host operations of all supplies. The slot order is that of the interface.
template <class Device, class Interface>
class SupplyHost : public HostObject<Device, Interface> {
public:
    using HostObject<Device, Interface>::HostObject;
    using Fan = typename Device::Fan;

    _error getInput(PsuInput& input) override { return FORWARD(getInput(input)); }
    _error getOutput(PsuOutput& output) override { return FORWARD(getOutput(output)); }
    _error getFan(Fan& fan) override { return FORWARD(getFan(fan)); }
    _error getThermal(float& temperature) override { return FORWARD(getThermal(temperature)); }
    _error getMultiRail(std::uint8_t* mode) override { return FORWARD(getMultiRail(mode)); }
    _error setFan(const Fan& fan) override { return FORWARD(setFan(fan)); }
    _error setMultiRail(std::uint8_t mode) override { return FORWARD(setMultiRail(mode)); }
    _error getVersion(std::uint8_t* family, std::uint8_t* major, std::uint8_t* minor) override
    {
        return FORWARD(getVersion(family, major, minor));
    }

protected:
    ~SupplyHost() = default;
};

} // namespace pyrux
