#include "devices/power/psuctrl.h"

#include <array>
#include <sstream>
#include <string_view>

namespace pyrux {

namespace {

const SupplyTraits psuCtrlTraits{
    .model = PSUCTRL::model, .powerFactorCounts = true, .fanLock = true, .fanLog = true};

/// The lines of `getLog`. The texts are as technicians know them, commas included.
struct LogLine {
    std::string_view text;
    float PsuLog::*value;
};
constexpr std::array<LogLine, 15> logLines{{
    {"TEMP=", &PsuLog::TEMP},
    {"VOUT_V12=", &PsuLog::VOUT_V12},
    {",IOUT_V12=", &PsuLog::IOUT_V12},
    {",POUT_V12=", &PsuLog::POUT_V12},
    {",VOUT_V5=", &PsuLog::VOUT_V5},
    {",IOUT_V5=", &PsuLog::IOUT_V5},
    {",POUT_V5=", &PsuLog::POUT_V5},
    {"VOUT_V3d3=", &PsuLog::VOUT_V3d3},
    {",IOUT_V3d3=", &PsuLog::IOUT_V3d3},
    {",POUT_V3d3=", &PsuLog::POUT_V3d3},
    {",speed=", &PsuLog::speed},
    {",P_IN=", &PsuLog::P_IN},
    {",P_OUT=", &PsuLog::P_OUT},
    {",V_AC=", &PsuLog::V_AC},
    {"I_AC=", &PsuLog::I_AC},
}};

} // namespace

PSUCTRL::PSUCTRL(const std::string& path, Clock& clock) : PowerSupplyOf(path, psuCtrlTraits, clock) {}

_error PSUCTRL::getLog(PsuLog& values)
{
    const Measurements measurements = measured();
    const PsuInput input = inputOf(measurements);
    const PsuOutput output = outputOf(measurements);
    values = {.V_AC = input.voltage,
              .I_AC = input.current,
              .P_IN = input.inputPower,
              .P_OUT = input.outputPower,
              .VOUT_V12 = output.voltage12V1,
              .IOUT_V12 = output.current12V1,
              .POUT_V12 = output.voltage12V1 * output.current12V1,
              .VOUT_V5 = output.voltage5V,
              .IOUT_V5 = output.current5V,
              .POUT_V5 = output.voltage5V * output.current5V,
              .VOUT_V3d3 = output.voltage3V3,
              .IOUT_V3d3 = output.current3V3,
              .POUT_V3d3 = output.voltage3V3 * output.current3V3,
              .speed = float(measurements.fanSpeed),
              .TEMP = measurements.temperature};
    for (const LogLine& line : logLines)
        log(model.logCategory, [&] {
            std::ostringstream text;
            text << "getPsuCtrlDeviceLog" << line.text << values.*line.value;
            return text.str();
        });
    return E_OK;
}

} // namespace pyrux

PYRUX_FACTORY(psuCtrl, pyrux::PYRUX_PSUCTRL)
