#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// Records that the power supplies VOLTGRID and PSUCTRL share.

/// Argument of `getInput`: the mains side. A channel that the supply has told nothing of is 0.
struct PsuInput {
    float voltage;     ///< V, mean of the window.
    float current;     ///< A, likewise.
    float powerFactor; ///< As last reported.
    float inputPower;  ///< W; how it is computed differs between the models.
    float outputPower; ///< W, the sum of all rails.
    float efficiency;  ///< Output by input in percent; 0 while the input power is not above 0.
};

/// Argument of `getOutput`: means of voltage in V and current in A of each rail.
struct PsuOutput {
    float voltage5V, current5V;     ///< The 5 V rail, channel 2.
    float voltage3V3, current3V3;   ///< The 3.3 V rail, channel 3.
    float voltage12V2, current12V2; ///< The second 12 V rail, channel 4.
    float voltage12V1, current12V1; ///< The first 12 V rail, channel 5.
    float voltage12V3, current12V3; ///< The third 12 V rail, channel 6.
};

/// Fan modes in `PsuFanOf::mode`. The others, 1 to 4, are the firmware's own.
enum PsuFanMode : std::uint8_t {
    PSUCTRL_FAN_CUSTOM = 5, ///< The fan follows the curve.
};

/// One point of a fan curve.
template <class Value>
struct PsuFanPoint {
    Value temperature; ///< Degrees Celsius, two digits: of a larger number the last two go out.
    Value speed;       ///< Percent. Goes out in tens: below 90 rounded down, from 90 on as 100.
};

/// Argument of `getFan` and `setFan`.
/// @tparam Value  the width of a curve's numbers, stated with each model
template <class Value>
struct PsuFanOf {
    std::uint8_t mode;            ///< 1 to 5.
    std::uint16_t speed;          ///< What the supply has last reported, in revolutions; not set.
    PsuFanPoint<Value> points[4]; ///< Of mode `PSUCTRL_FAN_CUSTOM`.
};

using VoltgridFan = PsuFanOf<std::uint16_t>;
using PsuCtrlFan = PsuFanOf<std::uint8_t>;

static_assert(sizeof(PsuInput) == 24 && offsetof(PsuInput, current) == 4);
static_assert(offsetof(PsuInput, powerFactor) == 8 && offsetof(PsuInput, inputPower) == 12);
static_assert(offsetof(PsuInput, outputPower) == 16 && offsetof(PsuInput, efficiency) == 20);
static_assert(sizeof(PsuOutput) == 40 && offsetof(PsuOutput, current5V) == 4);
static_assert(offsetof(PsuOutput, voltage3V3) == 8 && offsetof(PsuOutput, current3V3) == 12);
static_assert(offsetof(PsuOutput, voltage12V2) == 16 && offsetof(PsuOutput, current12V2) == 20);
static_assert(offsetof(PsuOutput, voltage12V1) == 24 && offsetof(PsuOutput, current12V1) == 28);
static_assert(offsetof(PsuOutput, voltage12V3) == 32 && offsetof(PsuOutput, current12V3) == 36);
static_assert(sizeof(VoltgridFan) == 20 && sizeof(PsuCtrlFan) == 12);
static_assert(offsetof(VoltgridFan, speed) == 2 && offsetof(VoltgridFan, points) == 4);
static_assert(offsetof(PsuCtrlFan, speed) == 2 && offsetof(PsuCtrlFan, points) == 4);
static_assert(sizeof(PsuFanPoint<std::uint16_t>) == 4 && offsetof(PsuFanPoint<std::uint16_t>, speed) == 2);
static_assert(sizeof(PsuFanPoint<std::uint8_t>) == 2 && offsetof(PsuFanPoint<std::uint8_t>, speed) == 1);
