#include "models.h"

#include "pyrux/psuctrl.h"
#include "pyrux/voltgrid.h"

namespace pyrux::ctl {

template <>
struct Layout<PsuInput> {
    using R = PsuInput;
    static constexpr Field fields[]{FIELD(voltage),    FIELD(current),     FIELD(powerFactor),
                                    FIELD(inputPower), FIELD(outputPower), FIELD(efficiency)};
};

template <>
struct Layout<PsuOutput> {
    using R = PsuOutput;
    static constexpr Field fields[]{
        FIELD(voltage5V),   FIELD(current5V),   FIELD(voltage3V3),  FIELD(current3V3),  FIELD(voltage12V2),
        FIELD(current12V2), FIELD(voltage12V1), FIELD(current12V1), FIELD(voltage12V3), FIELD(current12V3),
    };
};

template <class Value>
struct Layout<PsuFanPoint<Value>> {
    using R = PsuFanPoint<Value>;
    static constexpr Field fields[]{FIELD(temperature), FIELD(speed)};
};

template <class Value>
struct Layout<PsuFanOf<Value>> {
    using R = PsuFanOf<Value>;
    static constexpr Field fields[]{FIELD(mode), FIELD(speed), FIELD(points)};
};

template <>
struct Layout<PsuLog> {
    using R = PsuLog;
    static constexpr Field fields[]{
        FIELD(V_AC),      FIELD(I_AC),      FIELD(P_IN),      FIELD(P_OUT),   FIELD(VOUT_V12),
        FIELD(IOUT_V12),  FIELD(POUT_V12),  FIELD(VOUT_V5),   FIELD(IOUT_V5), FIELD(POUT_V5),
        FIELD(VOUT_V3d3), FIELD(IOUT_V3d3), FIELD(POUT_V3d3), FIELD(speed),   FIELD(TEMP),
    };
};

namespace {

/// A call that is answered from memory.
template <class Interface>
_error readTemperature(Interface& host)
{
    float temperature;
    return host.getThermal(temperature);
}

template <class Interface>
std::vector<Operation> supplyOperations(const std::vector<Operation>& more = {})
{
    std::vector<Operation> operations{
        OP(getInput, out("input")),
        OP(getOutput, out("output")),
        OP(getFan, out("fan")).waiting({5, 7, 1000}, {1, 0}),
        OP(getThermal, out("temperature")),
        OP(getMultiRail, out("mode")).waiting(1),
        OP(setFan, in("fan")).waiting({0, 7, 1000}, {0, 7, 1000}),
        OP(setMultiRail, in("mode")).waiting(0, 1),
        OP(getVersion, out("family"), out("major"), out("minor")).waiting(2),
    };
    operations.insert(operations.end(), more.begin(), more.end());
    operations.push_back(OP(exit_device, in("unplugged")));
    return operations;
}

const std::vector<std::string_view> measurements{"getInput", "getOutput", "getThermal"};

Model voltgrid()
{
    using Interface = PYRUX_VOLTGRID_Base;
    return {
        .command = "voltgrid",
        .summary = "Power supply VOLTGRID",
        .identities = {{"VOLTGRID", 0x3A7E, 0x0030}},
        .events = {},
        .operations = supplyOperations<Interface>(),
        .calls = silentHostCalls<Interface, readTemperature<Interface>>(),
        .timing = {.replyMs = 1000, .readerMs = 2900, .stopsAtWrite = true},
        .monitored = measurements,
    };
}

Model psuCtrl()
{
    using Interface = PYRUX_PSUCTRL_Base;
    return {
        .command = "psuCtrl",
        .summary = "Power supplies AU_LINE, PT_LINE and SILENT_1300",
        .identities = {{"AU_LINE_550_MULTI", 0x3A7E, 0x018D},
                       {"AU_LINE_650_MULTI", 0x3A7E, 0x018F},
                       {"AU_LINE_750_MULTI", 0x3A7E, 0x0191},
                       {"AU_LINE_850_MULTI", 0x3A7E, 0x0193},
                       {"AU_LINE_550_SINGLE", 0x3A7E, 0x0195},
                       {"AU_LINE_650_SINGLE", 0x3A7E, 0x0197},
                       {"AU_LINE_750_SINGLE", 0x3A7E, 0x0199},
                       {"AU_LINE_850_SINGLE", 0x3A7E, 0x019B},
                       {"SILENT_1300", 0x3A7E, 0x01A5},
                       {"PT_LINE_650_MULTI", 0x3A7E, 0x019D},
                       {"PT_LINE_750_MULTI", 0x3A7E, 0x019F},
                       {"PT_LINE_850_MULTI", 0x3A7E, 0x01A1}},
        .events = {},
        .operations = supplyOperations<Interface>({OP(getLog, out("log"))}),
        .calls = silentHostCalls<Interface, readTemperature<Interface>>(),
        .timing = {.replyMs = 1000, .readerMs = 2900, .stopsAtWrite = true},
        .monitored = measurements,
    };
}

} // namespace

std::vector<Model> models_of::powerSupplies()
{
    return {voltgrid(), psuCtrl()};
}

} // namespace pyrux::ctl
