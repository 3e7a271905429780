#pragma once

#include "pyrux/error.h"
#include "pyrux/export.h"
#include "pyrux/glow_hub.h"
#include "pyrux/glow_hub2.h"
#include "pyrux/led_mouse.h"
#include "pyrux/play_dock.h"
#include "pyrux/psuctrl.h"
#include "pyrux/qw_keyboard.h"
#include "pyrux/rd110.h"
#include "pyrux/rd210.h"
#include "pyrux/records.h"
#include "pyrux/strandhub.h"
#include "pyrux/sys_info.h"
#include "pyrux/tint_hub.h"
#include "pyrux/voltgrid.h"

#include <cstdint>

/// @file
/// The exports of the library: plain functions, callable without any object and from any thread. A host calls
/// `pyrux_background` (optional), `pyrux_init`, `registerDevNotify`, `devNums`, `devInfo`, then the factory
/// of each device's model, and `pyrux_exit` at the end.
///
/// Factories stand with the interfaces of their models, in the headers that are included here. All are alike:
/// `path` is a device path, as `devInfo` or a hotplug event gives it; there is one object per path, made by
/// the first call; it stays valid to the end of the process, and answers -11 once the device has gone. The
/// result is null when the device cannot be opened.

/// Starts the library's threads. Repeated calls, also after `pyrux_exit`, do nothing. Always 0.
/// @note Tells the control application "app_control_on" unless in background mode, and waits for it up to 3 s
///       when its pipe is there but busy, and up to 3 s more when it takes the text and does not answer.
PYRUX_API std::int32_t pyrux_init();

/// Shuts all devices down, each with its goodbye, then the library's threads and services. Always 0. A second
/// caller waits up to 10 s for the first, and 1 s more when that does not suffice. The library cannot be
/// started again.
/// @note The devices' ends run side by side: they take as long as the longest `exit_device`.
PYRUX_API std::int32_t pyrux_exit();

/// Background mode: a non-zero `flag` says that the host is a resident service without a control application.
/// To be called before `pyrux_init`.
/// @return `flag`.
PYRUX_API std::uint32_t pyrux_background(std::uint8_t flag);

/// Writes the library's version, 3.86.
/// @return `version`.
PYRUX_API float* pyrux_version(float* version);

/// Exported as `dprintf`: writes a formatted text, after "[PYRUX]", to the debug output. It has another name
/// in C++ because C libraries declare a function of theirs as `dprintf`.
#if defined(PYRUX_API_NAMES)
PYRUX_API void pyrux_dprintf(const char* format, ...) PYRUX_API_NAME("dprintf") PYRUX_API_FORMAT(1);
#else
PYRUX_API void dprintf(const char* format, ...); // This compiler's C library has no function of the name.

template <class... Arguments>
void pyrux_dprintf(const char* format, Arguments... arguments)
{
    dprintf(format, arguments...);
}
#endif

/// Counts the attached devices, one per catalogue row that an attached interface may belong to. `devInfo`
/// never writes more records than this.
PYRUX_API std::int32_t devNums();

/// Lists the attached devices.
/// @param records  room for as many records as `devNums` has counted
/// @return the number of records written
PYRUX_API std::int32_t devInfo(DevInfoRecord* records);

/// Sets the one callback that is told of devices that come and go. It runs on the library's hotplug thread.
/// Always 0.
PYRUX_API std::int32_t registerDevNotify(void (*callback)(HotplugEvent event));

/// Asks a keyboard with a Bluetooth module for the module's version.
/// @param path     device path, VID_ and PID_ in upper case
/// @param version  receives the NUL-terminated text, empty for every other device
PYRUX_API void getBTVersion(const char* path, char* version);

/// Tells the release numbers of a wireless receiver and of a device.
/// @param path     device path, VID_ and PID_ in upper case
/// @param version  two values: for a receiver the first is its release and the second 0, for any other device
///                 the first is 0 and the second its release
PYRUX_API void getDGVersion(const char* path, std::uint16_t* version);

/// Tells the version of the driver package that VK950's entry in localdevice.ini names; 0 for every other
/// device.
/// @param path     device path, VID_ and PID_ in upper case
PYRUX_API void getDriverVersion(const char* path, std::uint8_t* version);

/// Makes an object that reports on the host computer. Each call makes another; the caller owns it and ends it
/// by its `destroy`. Where the resident service is there, it is asked for its core counts first: that takes
/// up to 3 s while its pipe is busy, and up to 3 s more when it does not answer.
PYRUX_API SYS_INFO_Base* sysInfo();

/// Temperatures of the processor and the graphics card in degrees Celsius, from the resident service.
/// @return 0, -3 when the service is not there, -7 when the exchange failed
PYRUX_API std::int32_t getSysTemp(std::int32_t* cpu, std::int32_t* gpu);

/// The two core counts of the resident service.
/// @return as `getSysTemp`
PYRUX_API std::int32_t getSysCore(std::int32_t* first, std::int32_t* second);

/// The version of the resident service.
/// @return as `getSysTemp`
PYRUX_API std::int32_t getVersion(float* version);

/// Switches the resident service to simulated temperatures.
/// @return as `getSysTemp`
PYRUX_API std::int32_t fakeTempEnable();

/// Takes one step of the simulated temperatures.
/// @return as `getSysTemp`
PYRUX_API std::int32_t fakeTempStep();
