#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// @file
/// Firmware models: what sits behind the HID reports of a device. A model takes output reports and emits
/// input reports, with the state that the real device keeps. It knows nothing of how it is served.

namespace pyrux::sim {

using Bytes = std::span<const std::uint8_t>;

/// The reports that a collection has under one id, one for each direction.
struct ReportPair {
    std::uint8_t id = 0;     ///< 0: without an id; such a pair is the only one of its interface.
    std::size_t output = 64; ///< Bytes of the output report, without the id; 0: there is none.
    std::size_t input = 64;  ///< The same of the input report.
    bool operator==(const ReportPair&) const = default;
};

/// One top-level collection of a device, as HID shows it: an interface with several collections has one entry
/// each.
struct Collection {
    int interface = 0; ///< USB interface number; -1 for a device that is not composite.
    std::uint16_t usagePage = 0xFF00;
    std::uint16_t usage = 0x0001;
    /// What it takes and emits. Empty stands for the usual thing: 64 bytes both ways without an id on the
    /// control interface, nothing on the others.
    std::vector<ReportPair> reports = {};
};

/// The way that a report takes: an interface, and the report's id there.
struct Channel {
    int interface = 0;
    std::uint8_t id = 0;
    bool operator==(const Channel&) const = default;
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
    int controlInterface = 0;            ///< Interface that takes the commands.
};

/// What a collection of a device takes and emits.
inline std::span<const ReportPair> reportsOf(const Identity& device, const Collection& collection)
{
    static constexpr ReportPair usual[1];
    if (collection.reports.empty() && collection.interface == device.controlInterface)
        return usual;
    return collection.reports;
}

/// Bytes of an input report of a device, without the id; 0: there is no such report.
inline std::size_t inputLength(const Identity& device, const Channel& channel)
{
    for (const Collection& one : device.collections)
        if (one.interface == channel.interface)
            for (const ReportPair& pair : reportsOf(device, one))
                if (pair.id == channel.id && pair.input > 0)
                    return pair.input;
    return 0;
}

/// The way of the commands: the control interface, under the id of its first report.
inline Channel controlChannel(const Identity& device)
{
    for (const Collection& one : device.collections)
        if (one.interface == device.controlInterface && !one.reports.empty())
            return {one.interface, one.reports.front().id};
    return {device.controlInterface, 0};
}

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
    /// Takes an input report, without its id.
    using Sink = std::function<void(const Channel& from, Bytes payload)>;

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

    /// Takes one output report of the control channel: its payload, without the report id, at most as long as
    /// the report.
    virtual void output(Bytes payload) = 0;

    /// Takes one output report of any channel.
    virtual void outputOn(const Channel&, Bytes payload) { output(payload); }

    /// What the device answers to a host that asks for an input report over the control pipe, without the id.
    /// None: what it sent last on that channel.
    virtual std::optional<std::vector<std::uint8_t>> inputReport(const Channel&) { return {}; }

    /// Lets the device do something by itself, such as a press of its DPI button.
    /// @return false: this model has no such event, or it cannot happen now
    virtual bool happen(const std::string& event, const std::vector<int>& values) = 0;

    /// The names of `happen`, each with its values, such as "dpi LEVEL".
    virtual std::vector<std::string> events() const = 0;

    /// What the device's LEDs show now. Empty: the device has none. An effect that the device plays by itself
    /// is shown standing still.
    virtual Picture picture() const { return {}; }

    /// The side that serves the model sets where input reports go.
    template <class Listener>
    requires std::invocable<Listener, Bytes>
    void connect(Listener to) ///< One that hears of all channels alike.
    {
        connect(Sink([to = std::move(to)](const Channel&, Bytes payload) mutable { to(payload); }));
    }
    void connect(Sink to)
    {
        auto next = std::make_shared<const Sink>(std::move(to));
        const std::lock_guard lock(sinkMutex);
        sink.swap(next);
    }

protected:
    /// Sends an input report, filled with zeros to its length. One that the device does not have goes
    /// nowhere.
    void emit(const Channel& from, Bytes payload)
    {
        std::vector<std::uint8_t> report(inputLength(identity(), from));
        std::copy_n(payload.begin(), std::min(payload.size(), report.size()), report.begin());
        if (const auto to = currentSink(); to && *to && !report.empty())
            (*to)(from, report);
    }
    void emit(Bytes payload) { emit(controlChannel(identity()), payload); }
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
