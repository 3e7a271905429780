#pragma once

#include "pyrux/error.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Loads and temperatures of the host computer, as the callback of `registerStatusNotify` receives them.
struct SysStatusRecord {
    std::int32_t cpuTemp;  ///< Processor temperature in degrees Celsius.
    std::int32_t gpuTemp;  ///< Graphics card temperature, likewise.
    std::int32_t ramUsage; ///< Memory load in %.
    std::int32_t cpuUsage; ///< Processor load in %.
    std::int32_t gpuUsage; ///< NVIDIA graphics card load in %.
};
static_assert(sizeof(SysStatusRecord) == 20);
static_assert(offsetof(SysStatusRecord, gpuTemp) == 4 && offsetof(SysStatusRecord, ramUsage) == 8);
static_assert(offsetof(SysStatusRecord, cpuUsage) == 12 && offsetof(SysStatusRecord, gpuUsage) == 16);

/// Details of the host computer, as the callback of `registerInfoNotify` receives them. What the fields mean
/// is the resident service's business: they are numbered as in its reply.
struct SysDetailRecord {
    std::int32_t field3;
    std::int32_t field4;
    std::int32_t field1;
    std::int32_t field10;
    std::int32_t field11;
    std::int32_t field12;
    std::int32_t field13;
    std::int32_t field14;
    float field0;
    float field2;
    std::int32_t field8;
    std::int32_t field9;
    std::int32_t field6;
    std::int32_t unused[5]; ///< 0
    float field5;
    float field7;
};
static_assert(sizeof(SysDetailRecord) == 80);
static_assert(offsetof(SysDetailRecord, field3) == 0 && offsetof(SysDetailRecord, field4) == 4);
static_assert(offsetof(SysDetailRecord, field1) == 8 && offsetof(SysDetailRecord, field10) == 12);
static_assert(offsetof(SysDetailRecord, field11) == 16 && offsetof(SysDetailRecord, field12) == 20);
static_assert(offsetof(SysDetailRecord, field13) == 24 && offsetof(SysDetailRecord, field14) == 28);
static_assert(offsetof(SysDetailRecord, field0) == 32 && offsetof(SysDetailRecord, field2) == 36);
static_assert(offsetof(SysDetailRecord, field8) == 40 && offsetof(SysDetailRecord, field9) == 44);
static_assert(offsetof(SysDetailRecord, field6) == 48 && offsetof(SysDetailRecord, unused) == 52);
static_assert(offsetof(SysDetailRecord, field5) == 72 && offsetof(SysDetailRecord, field7) == 76);

/// Names of the host computer's parts; a name that the system does not tell is empty.
struct SysHardwareNames {
    std::string cpuName;
    std::string gpuName;
    std::string ramManufacturer; ///< Of the first memory module.
    std::string ramModel;        ///< Likewise.
    std::int32_t ramCapacityGiB; ///< Likewise, cut to a whole number.
    std::string boardManufacturer;
    std::string boardProduct;
};
static_assert(sizeof(SysHardwareNames) == 6 * sizeof(std::string) + sizeof(void*) &&
              offsetof(SysHardwareNames, gpuName) == sizeof(std::string) &&
              offsetof(SysHardwareNames, ramManufacturer) == 2 * sizeof(std::string) &&
              offsetof(SysHardwareNames, ramModel) == 3 * sizeof(std::string) &&
              offsetof(SysHardwareNames, ramCapacityGiB) == 4 * sizeof(std::string) &&
              offsetof(SysHardwareNames, boardManufacturer) == 4 * sizeof(std::string) + sizeof(void*) &&
              offsetof(SysHardwareNames, boardProduct) == 5 * sizeof(std::string) + sizeof(void*));

/// Language codes of `getKeyboardLanguage`.
enum SysKeyboardLanguage : std::int32_t {
    SYS_LANGUAGE_ENGLISH = 0,
    SYS_LANGUAGE_CHINESE = 1,
    SYS_LANGUAGE_FRENCH = 2,
    SYS_LANGUAGE_GERMAN = 3,
    SYS_LANGUAGE_ITALIAN = 4,
    SYS_LANGUAGE_JAPANESE = 5,
    SYS_LANGUAGE_KOREAN = 6,
    SYS_LANGUAGE_MALAY = 7,
    SYS_LANGUAGE_PORTUGUESE = 8,
    SYS_LANGUAGE_RUSSIAN = 9,
    SYS_LANGUAGE_SPANISH = 10,
    SYS_LANGUAGE_THAI = 11,
    SYS_LANGUAGE_TURKISH = 12,
    SYS_LANGUAGE_VIETNAMESE = 13,
    SYS_LANGUAGE_OTHER = 14,
};

using SysStatusCallback = void (*)(SysStatusRecord status);
using SysDetailCallback = void (*)(SysDetailRecord details);
using SysLanguageCallback = void (*)(std::int32_t language);

/// The object of `sysInfo`, which the caller owns: what is to be known of the host computer.
///
/// Slots: the operations stand in the order of the object's virtual table; a host that does not use this
/// header calls the N-th entry.
///
/// Results: a get gives E_INVALID_GET for a null pointer.
///
/// Threads: any thread may call. Callbacks run on the object's own thread; once a registration has changed,
/// the callback that was there before is not called any more. A callback must not call `destroy`.
struct SYS_INFO_Base {
    /// Slot 0. Collects the names of the computer's parts, four at a time. A part that cannot be asked stays
    /// empty; why is told on the standard output and the debug output.
    /// @return E_OK; E_INVALID_GET: the collectors could not run
    virtual _error getHardwareNames(SysHardwareNames* names) = 0;

    /// Slot 1. The last temperatures of the resident service in degrees Celsius, 0 before the first ones. One
    /// above 100 or below 0 is taken back to 0.
    virtual _error getSysTemp(std::int32_t* cpu, std::int32_t* gpu) = 0;

    /// Slot 2. Does as the export `getSysCore`.
    virtual _error getSysCore(std::int32_t* first, std::int32_t* second) = 0;

    /// Slot 3. The processor load in % since the last time that anybody in the process asked; 100 when no
    /// time was counted since.
    virtual _error getCpuUsage(std::int32_t* percent) = 0;

    /// Slot 4. The load of the first NVIDIA graphics card in %; 0 without one.
    virtual _error getGpuUsage(std::int32_t* percent) = 0;

    /// Slot 5. The memory load in %; 0 when it cannot be read.
    virtual _error getRamUsage(std::int32_t* percent) = 0;

    /// Slot 6. Names the host's window, whose keyboard language is to be followed. Prints the id of the
    /// window's thread; installs the hook of the library tw-hook where there is one.
    /// @param window  the system's handle. On Linux, where windows have no threads, anything but null.
    virtual _error setHookWindow(void* window) = 0;

    /// Slot 7. The language of the window's keyboard, a code of `SysKeyboardLanguage`.
    /// @return E_OK; E_INVALID_GET: there is no window
    virtual _error getKeyboardLanguage(std::int32_t* language) = 0;

    /// Slots 8 and 9. The callback for loads and temperatures, told about every 800 ms while the resident
    /// service gives temperatures.
    virtual _error registerStatusNotify(SysStatusCallback callback) = 0;
    virtual _error unRegisterStatusNotify() = 0;

    /// Slots 10 and 11. The callback for another keyboard language.
    virtual _error registerLanguageNotify(SysLanguageCallback callback) = 0;
    virtual _error unRegisterLanguageNotify() = 0;

    /// Slot 12. Calls the callback of slot 8, on the caller's thread.
    virtual _error callStatusNotify(SysStatusRecord status) = 0;

    /// Slots 13 and 14. The callback for details, told about every second.
    virtual _error registerInfoNotify(SysDetailCallback callback) = 0;
    virtual _error unRegisterInfoNotify() = 0;

    /// Slot 15. Calls the callback of slot 13, on the caller's thread.
    virtual _error callInfoNotify(SysDetailRecord details) = 0;

    /// Slot 16. Ends the object: its thread is joined, no callback comes after the return.
    /// @param flags  bit 0: the object's memory is freed too
    /// @return the object
    virtual void* destroy(std::uint32_t flags) = 0;

protected:
    ~SYS_INFO_Base() = default;
};
