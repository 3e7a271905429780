#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/psu_records.h"

#include <cstddef>
#include <cstdint>

/// Argument of `getLog`: everything that the supply has told, in V, A, W and degrees Celsius.
struct PsuLog {
    float V_AC, I_AC;                      ///< Mains.
    float P_IN, P_OUT;                     ///< As in `PsuInput`.
    float VOUT_V12, IOUT_V12, POUT_V12;    ///< The first 12 V rail.
    float VOUT_V5, IOUT_V5, POUT_V5;       ///< The 5 V rail.
    float VOUT_V3d3, IOUT_V3d3, POUT_V3d3; ///< The 3.3 V rail.
    float speed;                           ///< Of the fan, in revolutions.
    float TEMP;
};

static_assert(sizeof(PsuLog) == 60 && offsetof(PsuLog, I_AC) == 4 && offsetof(PsuLog, P_IN) == 8);
static_assert(offsetof(PsuLog, P_OUT) == 12 && offsetof(PsuLog, VOUT_V12) == 16);
static_assert(offsetof(PsuLog, IOUT_V12) == 20 && offsetof(PsuLog, POUT_V12) == 24);
static_assert(offsetof(PsuLog, VOUT_V5) == 28 && offsetof(PsuLog, IOUT_V5) == 32);
static_assert(offsetof(PsuLog, POUT_V5) == 36 && offsetof(PsuLog, VOUT_V3d3) == 40);
static_assert(offsetof(PsuLog, IOUT_V3d3) == 44 && offsetof(PsuLog, POUT_V3d3) == 48);
static_assert(offsetof(PsuLog, speed) == 52 && offsetof(PsuLog, TEMP) == 56);

/// The digital power supplies of the series AU_LINE and PT_LINE (550, 650, 750 and 850 W, with several rails
/// or a single one), and SILENT_1300. Measurements, results, times, threads and wire are those of VOLTGRID
/// (pyrux/voltgrid.h); what differs is told here.
///
/// Fan calls do not cross: while a `setFan` runs, which takes a second in mode 5, further calls of `setFan`
/// and `getFan` give E_INVALID_GET at once and log "this->lock_flag == 1".
///
/// Log: besides name and result of each call, under the tag [AU_LINE_550_MULTI] of the whole series:
/// "R1:fan_speed=" and the number for each fan speed that arrives.
struct PYRUX_PSUCTRL_Base {
    /// Slot 0. Tells the mains side. `inputPower` is voltage times current times power factor.
    /// @note Does not wait.
    virtual _error getInput(PsuInput& input) = 0;

    /// Slot 1. Tells voltage and current of each rail.
    /// @note Does not wait.
    virtual _error getOutput(PsuOutput& output) = 0;

    /// Slot 2. Reads the fan's mode and curve as VOLTGRID's slot 2.
    /// @note Log: "getPsuCtrlDeviceFan,ret=" and the result, or "getPsuCtrlDeviceFan,ret=E_INVALID_GET" when
    ///       a request fails or its reply does not fit.
    /// @note Waits at most 18 s, 1 s for a device that answers nothing.
    virtual _error getFan(PsuCtrlFan& fan) = 0;

    /// Slot 3. Tells the temperature in degrees Celsius, as last reported.
    /// @note Does not wait.
    virtual _error getThermal(float& temperature) = 0;

    /// Slot 4. Reads the rail mode as VOLTGRID's slot 4.
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getMultiRail(std::uint8_t* mode) = 0;

    /// Slot 5. Tells all measurements, from memory. The power of each rail is its mean voltage times its mean
    /// current.
    /// @note Log: fifteen lines, each "getPsuCtrlDeviceLog", directly after it one of these texts, and the
    ///       number: "TEMP=", "VOUT_V12=", ",IOUT_V12=", ",POUT_V12=", ",VOUT_V5=", ",IOUT_V5=",
    ///       ",POUT_V5=", "VOUT_V3d3=", ",IOUT_V3d3=", ",POUT_V3d3=", ",speed=", ",P_IN=", ",P_OUT=",
    ///       ",V_AC=", "I_AC=". Numbers as a stream writes them: 230.5, 12, 1200.
    /// @note Does not wait.
    virtual _error getLog(PsuLog& log) = 0;

    /// Slot 6. Sets the fan's mode and curve as VOLTGRID's slot 5. A mode outside 1 to 5 is refused before
    /// anything else.
    /// @note Log: "setPsuCtrlDeviceFan end.ret=" and the result, or "setPsuCtrlDeviceFan,ret=E_INVALID_GET"
    ///       when a write fails, whatever its result.
    /// @note Waits at most 8 s, 1 s for a device that answers nothing.
    virtual _error setFan(const PsuCtrlFan& fan) = 0;

    /// Slot 7. Sets the rail mode as VOLTGRID's slot 6.
    /// @param mode  1 to 3
    /// @note Waits at most 1 s.
    virtual _error setMultiRail(std::uint8_t mode) = 0;

    /// Slot 8. Reads the firmware's version as VOLTGRID's slot 7.
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getVersion(std::uint8_t* family, std::uint8_t* major, std::uint8_t* minor) = 0;

    /// Slot 9. Closes the object as VOLTGRID's slot 8.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_PSUCTRL_Base() = default;
};

/// Factory of the whole series AU_LINE and PT_LINE, and of SILENT_1300.
/// @note Does not wait.
PYRUX_API PYRUX_PSUCTRL_Base* psuCtrl(const char* path);
