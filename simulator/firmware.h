#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// @file
/// Firmware models: what sits behind the HID reports of a device. A model takes output reports and emits
/// input reports, with the state that the real device keeps. It knows nothing of how it is served.

namespace pyrux::sim {

using Bytes = std::span<const std::uint8_t>;

/// One top-level collection of a device, as HID shows it: an interface with several collections has one entry
/// each.
struct Collection {
    int interface = 0; ///< USB interface number; -1 for a device that is not composite.
    std::uint16_t usagePage = 0xFF00;
    std::uint16_t usage = 0x0001;
};

/// What a device tells of itself on the bus.
struct Identity {
    std::uint16_t vid = 0x3A7E;
    std::uint16_t pid = 0;
    std::uint16_t release = 0x0100;
    std::string serial;
    std::string product;
    std::string manufacturer = "Tessel Works";
    std::vector<Collection> collections; ///< At least one.
    int controlInterface = 0;            ///< Interface that takes the commands and emits the reports.
};

/// One LED of a picture.
struct Light {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const Light&) const = default;
};

/// The LEDs of one part of a device, in the order in which they stand.
struct LightZone {
    std::string name; ///< Such as "port 1".
    std::vector<Light> leds;
    bool operator==(const LightZone&) const = default;
};

/// What the LEDs of a device show at one moment, zone by zone. The zones and their LEDs stay the same until
/// something is plugged into the device, or it is told what is.
using Picture = std::vector<LightZone>;

/// Base of the firmware models. The calls to `output` come one at a time; `emit` may be used inside them and,
/// by events that a device makes itself, outside. `output`, `happen` and what a model offers beside them may
/// come from different threads at once.
class Firmware {
public:
    using Sink = std::function<void(Bytes payload)>;

    Firmware() = default;
    Firmware(const Firmware&) = delete;
    Firmware& operator=(const Firmware&) = delete;
    virtual ~Firmware() = default;

    virtual const Identity& identity() const = 0;

    /// The device gets power, as when it is plugged in: what it had not saved is lost.
    virtual void powerOn() {}

    /// The device loses power, as when it is pulled out. When this returns, nothing comes from it by itself
    /// any more. Not called inside `output`.
    virtual void powerOff() {}

    /// Takes one output report: its payload, up to 64 bytes, without the report id.
    virtual void output(Bytes payload) = 0;

    /// Lets the device do something by itself, such as a press of its DPI button.
    /// @return false: this model has no such event, or it cannot happen now
    virtual bool happen(const std::string& event, const std::vector<int>& values) = 0;

    /// The names of `happen`, each with its values, such as "dpi LEVEL".
    virtual std::vector<std::string> events() const = 0;

    /// What the device's LEDs show now. Empty: the device has none. An effect that the device plays by itself
    /// is shown standing still.
    virtual Picture picture() const { return {}; }

    /// The side that serves the model sets where input reports go.
    void connect(Sink to)
    {
        auto next = std::make_shared<const Sink>(std::move(to));
        const std::lock_guard lock(sinkMutex);
        sink.swap(next);
    }

protected:
    /// Sends an input report, filled with zeros to 64 bytes.
    void emit(Bytes payload)
    {
        std::array<std::uint8_t, 64> report{};
        for (std::size_t i = 0; i < payload.size() && i < report.size(); ++i)
            report[i] = payload[i];
        if (const auto to = currentSink(); to && *to)
            (*to)(report);
    }
    void emit(std::initializer_list<std::uint8_t> payload) { emit(Bytes(payload.begin(), payload.size())); }

private:
    std::shared_ptr<const Sink> currentSink() const
    {
        const std::lock_guard lock(sinkMutex);
        return sink;
    }

    mutable std::mutex sinkMutex;
    std::shared_ptr<const Sink> sink;
};

} // namespace pyrux::sim
