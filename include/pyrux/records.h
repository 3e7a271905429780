#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// One attached device, as `devInfo` writes it. All texts are NUL-terminated.
struct DevInfoRecord {
    char path[1024];        ///< Device path in lower case.
    char serial[512];       ///< Serial number in the system's code page; empty if the device has none.
    char product[512];      ///< Product string, likewise.
    char vendor[512];       ///< Manufacturer string, likewise.
    std::uint16_t release;  ///< Device release number, binary coded decimal.
    std::uint16_t pid;      ///< USB product id.
    std::uint16_t vid;      ///< USB vendor id.
    std::uint32_t driverOk; ///< 1, or 0 for an audio device whose installed driver is another maker's.
    std::uint32_t statusOk; ///< 1, or 0 for an audio device whose Plug and Play status is not "OK".
};

/// A device that came or went, handed by value to the callback of `registerDevNotify`.
struct HotplugEvent {
    char name[30];          ///< Model name, NUL-terminated.
    char path[1024];        ///< Device path in upper case, NUL-terminated.
    std::uint32_t vid;      ///< USB vendor id; for a receiver that of the paired device.
    std::uint32_t pid;      ///< USB product id, likewise.
    std::uint32_t plugged;  ///< 1 arrival, 0 removal.
    std::uint32_t driverOk; ///< As in `DevInfoRecord`.
    std::uint32_t statusOk; ///< As in `DevInfoRecord`.
};

#pragma pack(pop)

static_assert(sizeof(DevInfoRecord) == 2574);
static_assert(offsetof(DevInfoRecord, serial) == 1024 && offsetof(DevInfoRecord, product) == 1536);
static_assert(offsetof(DevInfoRecord, vendor) == 2048 && offsetof(DevInfoRecord, release) == 2560);
static_assert(offsetof(DevInfoRecord, pid) == 2562 && offsetof(DevInfoRecord, vid) == 2564);
static_assert(offsetof(DevInfoRecord, driverOk) == 2566 && offsetof(DevInfoRecord, statusOk) == 2570);
static_assert(sizeof(HotplugEvent) == 1074);
static_assert(offsetof(HotplugEvent, path) == 30 && offsetof(HotplugEvent, vid) == 1054);
static_assert(offsetof(HotplugEvent, pid) == 1058 && offsetof(HotplugEvent, plugged) == 1062);
static_assert(offsetof(HotplugEvent, driverOk) == 1066 && offsetof(HotplugEvent, statusOk) == 1070);

/// What a device's notification callback receives by address. Valid only during the call.
struct NotifyRecord {
    std::uint32_t event; ///< Kind of event, listed with each model.
    std::uint16_t value; ///< The event's value, 0 for events without one.
};
static_assert(sizeof(NotifyRecord) == 8 && offsetof(NotifyRecord, value) == 4);

/// Callback of `registerNotify`. Runs on the device's reader thread with the device's notify mutex held, so
/// that after `unRegisterNotify` has returned no further call comes. While it runs, the device's other
/// replies and events wait.
using NotifyCallback = void (*)(NotifyRecord* record);
