#include "pyrux/pyrux.h"

#include "core/boundary.h"
#include "core/catalogue.h"
#include "core/log.h"
#include "core/state.h"
#include "library/lifecycle.h"
#include "platform/folders.h"
#include "platform/fork.h"
#include "platform/profile_file.h"
#include "services/resident_service.h"
#include "services/sys_info.h"
#include "transport/audio_devices.h"
#include "transport/device_path.h"
#include "transport/dongle_manager.h"
#include "transport/enumeration.h"
#include "transport/hotplug.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

using namespace pyrux;

namespace {

/// What an export gives without its body.
template <class Result>
struct Without {
    Result absent; ///< In a forked child, which has none of the library's threads: as if nothing were there.
    Result failed; ///< Where the system has no room for what the body needs.
};

/// An export, from its log line on.
template <class Result, class Body>
Result exported(const char* name, int line, Without<Result> without, Body body)
{
    if (platform::inForkedChild())
        return without.absent;
    logCall(systemCategory, "PYRUX::", name, line);
    return atBoundary(without.failed, body);
}

template <class Body>
void exported(const char* name, int line, Body body)
{
    exported(name, line, Without<bool>{false, false}, [&] {
        body();
        return true;
    });
}

/// One that logs its call elsewhere, as for the library's own calls.
template <class Body>
std::int32_t forwarded(Body body)
{
    return platform::inForkedChild() ? E_CLOSED : atBoundary<std::int32_t>(E_FAIL, body);
}

#define EXPORTED(...) exported(__func__, __LINE__, __VA_ARGS__)

constexpr Without<std::int32_t> always0{E_CLOSED, 0};
constexpr Without<std::int32_t> nothing{0, 0};
constexpr Without<std::int32_t> failure{E_CLOSED, E_FAIL};

} // namespace

std::int32_t pyrux_init()
{
    return EXPORTED(always0, [] {
        startLibrary();
        return 0;
    });
}

std::int32_t pyrux_exit()
{
    return EXPORTED(always0, [] {
        stopLibrary();
        return 0;
    });
}

std::uint32_t pyrux_background(std::uint8_t flag)
{
    backgroundMode = flag;
    return flag;
}

float* pyrux_version(float* version)
{
    if (version)
        *version = 3.86F;
    return version;
}

void pyrux_dprintf(const char* format, ...)
{
    if (platform::inForkedChild())
        return;
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = format ? std::vsnprintf(nullptr, 0, format, arguments) : -1;
    va_end(arguments);
    if (length >= 0) {
        attempt([&] {
            std::vector<char> text(std::size_t(length) + 1);
            std::vsnprintf(text.data(), text.size(), format, again);
            debugText(text.data());
        });
    }
    va_end(again);
}

std::int32_t devNums()
{
    return EXPORTED(nothing, countDevices);
}

std::int32_t devInfo(DevInfoRecord* records)
{
    return EXPORTED(nothing, [&] {
        if (!records)
            return 0;
        std::vector<DevInfoRecord> found = listDevices();
        markAudioDevices(found);
        DongleDeviceManger::instance().correctRecords(found);
        std::ranges::copy(found, records);
        return std::int32_t(found.size());
    });
}

std::int32_t registerDevNotify(void (*callback)(HotplugEvent))
{
    return EXPORTED(always0, [&] {
        devNotifyCallback = callback;
        return 0;
    });
}

void getBTVersion(const char* path, char* version)
{
    if (version)
        *version = '\0';
    EXPORTED([&] {
        if (!version)
            return;
        const PathIdentity identity = parseVidPid(path ? path : "");
        log(systemCategory, [&] {
            return "vid=" + std::to_string(identity.vid) + ",pid=" + std::to_string(identity.pid) +
                   ",device_name=" + findNameByVidPid(identity.vid, identity.pid);
        });
    });
}

void getDGVersion(const char* path, std::uint16_t* version)
{
    if (version)
        version[0] = version[1] = 0;
    EXPORTED([&] {
        if (!version)
            return;
        const PathIdentity identity = parseVidPid(path ? path : "");
        const auto row = std::ranges::find_if(deviceCatalogue, [&](const DeviceRow& one) {
            return one.vid == identity.vid && one.pid == identity.pid;
        });
        if (row == deviceCatalogue.end()) {
            consoleLine("is not a dongle dev:");
            return;
        }
        const std::uint32_t word = DongleDeviceManger::instance().versionWord(row->name);
        version[0] = std::uint16_t(word);
        version[1] = std::uint16_t(word >> 16);
        // Deliberate asymmetry: a receiver has only the first value, any other device only the second.
        if (row->flags & RowFlag::receiver) {
            version[1] = 0;
            consoleLine(std::string("is a dongle dev:") + row->name);
        } else {
            version[0] = 0;
            consoleLine(std::string("is not a dongle dev:") + row->name);
        }
    });
}

void getDriverVersion(const char* path, std::uint8_t* version)
{
    if (version)
        *version = 0;
    EXPORTED([&] {
        if (!version)
            return;
        const PathIdentity identity = parseVidPid(path ? path : "");
        if (findNameByVidPid(identity.vid, identity.pid) != std::string_view("VK950"))
            return;
        const auto file = platform::commonDataFolder() / "TesselWorks" / "LumaDesk" / "localdevice.ini";
        *version = std::uint8_t(platform::readProfileInt(file, "VK950_VERSION", "version", 0));
    });
}

SYS_INFO_Base* sysInfo()
{
    return EXPORTED(Without<SYS_INFO_Base*>{}, makeSysInfo);
}

std::int32_t getSysTemp(std::int32_t* cpu, std::int32_t* gpu)
{
    return forwarded([&] { return resident::temperatures(cpu, gpu); });
}

std::int32_t getSysCore(std::int32_t* first, std::int32_t* second)
{
    return forwarded([&] { return resident::coreCounts(first, second); });
}

std::int32_t getVersion(float* version)
{
    return EXPORTED(failure, [&] { return resident::version(version); });
}

std::int32_t fakeTempEnable()
{
    return EXPORTED(failure, [&] { return resident::enableFakeTemperature(); });
}

std::int32_t fakeTempStep()
{
    return EXPORTED(failure, [&] { return resident::stepFakeTemperature(); });
}
