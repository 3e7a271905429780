#pragma once

#include "simulator/models/table_firmware.h"

#include <chrono>
#include <memory>
#include <optional>
#include <thread>

/// @file
/// Firmware models of the digital power supplies: VOLTGRID, and the lines that share PSUCTRL.
///
/// They speak short ASCII texts in brackets, with zeros after, in reports of 16 bytes. By themselves they
/// send, one report after the other, round by round:
///
///     [P1a.bc]        power factor
///     [Vnabc.d]       voltage of channel n, 1 to 6, in V
///     [Inabc.d]       current, in A
///     [T1abc.d]       temperature in degrees
///     [R1abcd]        fan speed in rpm
///
/// Channel 1 is the AC input, 2 the 5 V rail, 3 the 3.3 V rail, 4 to 6 the second, the first and the third
/// 12 V rail. They take these commands, and answer the questions among them:
///
///     [MQ]            fan mode: [Mn]
///     [Mn]            fan mode n becomes current: 1 to 4 are built in, 5 is the custom curve
///     [Qn]            point n of the custom curve, 1 to 4: [mnTTSS], as below
///     [mnTTSS]        point n: the temperature, and the speed as hundreds and tens. Below 100 percent the
///                     tens are one more than the speed's, so that 50 is "06".
///     [OQ]            rail mode: [On]
///     [On]            rail mode n, 1 to 3, becomes current
///     [SQ]            version, without brackets: "C1.2" or "F1.2"
///
/// New points are taken over when mode 5 is entered from another one; until then the old curve is in force
/// and is what [Qn] tells. Everything else is met with silence. Fan mode, curve and rail mode survive the
/// loss of power.
///
/// Factory settings: fan mode 1, curve 30: 10 %, 40: 30 %, 60: 50 %, 70: 70 %; rail mode 1.

namespace pyrux::sim {

class PowerSupplyFirmware : public TableFirmware {
public:
    static constexpr std::size_t channels = 6;

    /// What one round of reports tells.
    struct Measurements {
        std::array<int, channels> decivolts{};
        std::array<int, channels> deciamperes{};
        int powerFactorPercent = 0;
        int decidegrees = 0;
        int rpm = 0;
        bool operator==(const Measurements&) const = default;
    };

    struct Point {
        int degrees = 0, percent = 0;
        bool operator==(const Point&) const = default;
    };
    using Curve = std::array<Point, 4>;

    /// What tells one model from another.
    struct Model {
        const char* name;
        std::uint16_t pid;
        int watts;
        bool severalRails; ///< The load is spread over three 12 V rails; else the first one bears it.
        const char* version;
    };

    ~PowerSupplyFirmware() override;

    void powerOn() override;
    void powerOff() override;

    /// The pause between two reports of the stream, from the next power-on; 0: it sends nothing by itself.
    void setPause(std::chrono::milliseconds pause);
    /// Measurements to send from the next round on; none: those of the supply's own load.
    void setMeasurements(std::optional<Measurements> fixed);
    /// Sends one round now.
    void sendRound();
    void setVersion(const std::string& text);

    int fanMode() const { return copyOf(mode); }
    int railMode() const { return copyOf(rails); }
    Curve curve() const { return copyOf(inForce); } ///< The one that is in force.
    Curve storedCurve() const
    {
        return copyOf(stored);
    } ///< With the points that wait for mode 5 to be entered.

protected:
    /// Events "load PERCENT": the load stays at so much of the rated one; "vary": it goes up and down again.
    explicit PowerSupplyFirmware(const Model& model);

private:
    struct Stream;
    using Lock = std::lock_guard<std::mutex>;

    Measurements nextRound();
    Measurements simulated(int loadPercent) const;
    int fanPercent(int decidegrees) const;
    void restart() override;
    void setFanMode(int mode);
    void setPoint(const Command& command);
    Answer tellPoint(int number) const;
    void send(const std::string& text);
    void run(const std::shared_ptr<Stream>& stream, std::chrono::milliseconds pause);

    const Model& model;

    std::chrono::milliseconds pause{20};
    std::optional<Measurements> fixed;
    std::optional<int> fixedLoad;
    int round = 0;
    int mode = 1;
    int rails = 1;
    Curve inForce;
    Curve stored;
    std::string version;

    std::mutex streamMutex; ///< Guards the two below; before `mutex`.
    std::shared_ptr<Stream> streaming;
    std::thread thread;
};

class VoltgridFirmware final : public PowerSupplyFirmware {
public:
    VoltgridFirmware();
};

/// The lines that share one factory.
class PsuCtrlFirmware final : public PowerSupplyFirmware {
public:
    /// @param variant  its place among the rows of the device catalogue, from AU_LINE_550_MULTI on
    explicit PsuCtrlFirmware(std::size_t variant = 0);

    static constexpr std::size_t variants = 12;
};

} // namespace pyrux::sim
