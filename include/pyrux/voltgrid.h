#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/psu_records.h"

#include <cstdint>

/// The digital power supply VOLTGRID: it streams its measurements, and its fan can be set.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Measurements: the supply sends them by itself, and the last 17 of each channel are kept. `getInput`,
/// `getOutput` and `getThermal` answer from memory with the mean of these, always E_OK, without a word to the
/// device; they are cheap enough to be polled at screen rate. Channel 1 is the mains, channels 2 to 6 are the
/// rails. A report with a wrong digit, another channel or no closing bracket in its place is dropped.
///
/// Results: every operation gives E_CLOSED once the device has gone or `exit_device` has run. Those that ask
/// the device give E_INVALID_GET when no reply comes in time or one that does not fit; those that write give
/// E_WRITE_TIMEOUT for a device that does not take it; both E_NOT_OPEN when the channel is closed. A null
/// pointer gives E_INVALID_GET.
///
/// Time: each request waits up to 1 s for its reply, and up to 1 s before that for a device that does not
/// take it.
///
/// Threads: any thread may call; calls may overlap.
///
/// Wire: reports of 17 bytes, report id 0, then ASCII text, then zeros. What the supply sends begins with the
/// text: "[V1230.5]" (volts of channel 1), "[I2012.3]" (amperes), "[P10.97]" (power factor), "[T1041.5]"
/// (temperature), "[R11200]" (fan speed).
struct PYRUX_VOLTGRID_Base {
    /// Slot 0. Tells the mains side. `inputPower` is voltage times current, without the power factor.
    /// @note Does not wait.
    virtual _error getInput(PsuInput& input) = 0;

    /// Slot 1. Tells voltage and current of each rail.
    /// @note Does not wait.
    virtual _error getOutput(PsuOutput& output) = 0;

    /// Slot 2. Reads the fan's mode and, in mode 5, its curve; the points are 0 in other modes. A curve that
    /// cannot be, with a temperature above 70, a speed above 100 or two equal temperatures, is replaced by
    /// (30, 10), (40, 30), (60, 50), (70, 70): that is returned, and written as `setFan` does, whose result
    /// is that of the call.
    /// @return E_INVALID_GET also for a reply that is no "[Mn]" or "[miTTSS]". The points up to there are
    ///         filled.
    /// @note Wire: "[MQ]", reply "[Mn]"; in mode 5, for i from 1 to 4, "[Qi]", reply "[miTTSS]": temperature
    ///       TT; speed by two digits S1 and S2, 100 + 10 S2 where S1 is 1, 100 S1 + 10 S2 - 10 otherwise.
    /// @note Waits at most 18 s, 1 s for a device that answers nothing.
    virtual _error getFan(VoltgridFan& fan) = 0;

    /// Slot 3. Tells the temperature in degrees Celsius, as last reported.
    /// @note Does not wait.
    virtual _error getThermal(float& temperature) = 0;

    /// Slot 4. Reads the rail mode. A reply that is no "[On]" counts as mode 1, with E_OK.
    /// @note Wire: "[OQ]", reply "[On]"
    /// @note Waits at most 2 s, 1 s for a device that answers nothing.
    virtual _error getMultiRail(std::uint8_t* mode) = 0;

    /// Slot 5. Sets the fan's mode and, in mode 5, its curve. No reply is waited for; the first write that
    /// fails ends the call with its result.
    /// @return E_INVALID_MODE: a mode outside 1 to 5, nothing sent
    /// @note Wire: modes 1 to 4: "[Mn]". Mode 5: "[M5]", for i from 1 to 4 "[miTTSS]", "[M2]", 1 s later
    ///       "[M5]": the supply takes a curve only on entering the mode again. S1 is 0 and S2 the tens of the
    ///       speed plus 1; from 90 percent on they are 1 and 0.
    /// @note Waits at most 8 s, 1 s for a device that answers nothing.
    virtual _error setFan(const VoltgridFan& fan) = 0;

    /// Slot 6. Sets the rail mode; what the modes are is the firmware's.
    /// @param mode  1 to 3; others give E_INVALID_MODE, nothing sent
    /// @note Wire: "[On]"; no reply is waited for
    /// @note Waits at most 1 s.
    virtual _error setMultiRail(std::uint8_t mode) = 0;

    /// Slot 7. Reads the firmware's version.
    /// @param family  0 or 1
    /// @return E_INVALID_GET also for a reply that does not hold one or two digits on each side of the point;
    ///         nothing is written then
    /// @note Wire: "[SQ]", reply "C" and the version: family 0. When no such reply comes once more "[SQ]",
    ///       reply "F" and the version: family 1.
    /// @note Waits at most 4 s, 2 s for a device that answers nothing.
    virtual _error getVersion(std::uint8_t* family, std::uint8_t* major, std::uint8_t* minor) = 0;

    /// Slot 8. Closes the object: ends its thread and the channel. Always E_OK; further calls do nothing.
    /// @param unplugged  not 0: the device has gone. Nothing is sent in either case.
    /// @note Calls that wait on other threads are given 2 s with `unplugged` 0, and end at once otherwise.
    virtual _error exit_device(std::uint8_t unplugged) = 0;

protected:
    ~PYRUX_VOLTGRID_Base() = default;
};

/// Factory of VOLTGRID.
/// @note Does not wait.
PYRUX_API PYRUX_VOLTGRID_Base* voltgrid(const char* path);
