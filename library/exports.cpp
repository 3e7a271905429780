#include "pyrux/pyrux.h"

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

/// The beginning of an export: its log line, but in a forked child, which has none of the library's threads, just
/// the result of something that is not there.
#define BEGIN_EXPORT(absent)                                                                                 \
    if (pyrux::platform::inForkedChild())                                                                    \
        return absent;                                                                                       \
    pyrux::logCall(pyrux::systemCategory, std::string("PYRUX::") + __func__, __LINE__)

using namespace pyrux;

std::int32_t pyrux_init()
{
    BEGIN_EXPORT(E_CLOSED);
    startLibrary();
    return 0;
}

std::int32_t pyrux_exit()
{
    BEGIN_EXPORT(E_CLOSED);
    stopLibrary();
    return 0;
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
        std::vector<char> text(std::size_t(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        debugText(text.data());
    }
    va_end(again);
}

std::int32_t devNums()
{
    BEGIN_EXPORT(0);
    return countDevices();
}

std::int32_t devInfo(DevInfoRecord* records)
{
    BEGIN_EXPORT(0);
    if (!records)
        return 0;
    std::vector<DevInfoRecord> found = listDevices();
    markAudioDevices(found);
    DongleDeviceManger::instance().correctRecords(found);
    std::ranges::copy(found, records);
    return std::int32_t(found.size());
}

std::int32_t registerDevNotify(void (*callback)(HotplugEvent))
{
    BEGIN_EXPORT(E_CLOSED);
    devNotifyCallback = callback;
    return 0;
}

void getBTVersion(const char* path, char* version)
{
    if (version)
        *version = '\0';
    BEGIN_EXPORT();
    if (!version)
        return;
    const PathIdentity identity = parseVidPid(path ? path : "");
    log(systemCategory, [&] {
        return "vid=" + std::to_string(identity.vid) + ",pid=" + std::to_string(identity.pid) +
               ",device_name=" + findNameByVidPid(identity.vid, identity.pid);
    });
}

void getDGVersion(const char* path, std::uint16_t* version)
{
    if (version)
        version[0] = version[1] = 0;
    BEGIN_EXPORT();
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
        consoleLine(std::string("is a dongle dev:") + row->name);
        version[1] = 0;
    } else {
        consoleLine(std::string("is not a dongle dev:") + row->name);
        version[0] = 0;
    }
}

void getDriverVersion(const char* path, std::uint8_t* version)
{
    if (version)
        *version = 0;
    BEGIN_EXPORT();
    if (!version)
        return;
    const PathIdentity identity = parseVidPid(path ? path : "");
    if (findNameByVidPid(identity.vid, identity.pid) != std::string_view("VK950"))
        return;
    const auto file = platform::commonDataFolder() / "TesselWorks" / "LumaDesk" / "localdevice.ini";
    *version = std::uint8_t(platform::readProfileInt(file, "VK950_VERSION", "version", 0));
}

SYS_INFO_Base* sysInfo()
{
    BEGIN_EXPORT(nullptr);
    return makeSysInfo();
}

std::int32_t getSysTemp(std::int32_t* cpu, std::int32_t* gpu)
{
    if (platform::inForkedChild())
        return E_CLOSED;
    return resident::temperatures(cpu, gpu); // logs the call, as for the library's own calls
}

std::int32_t getSysCore(std::int32_t* first, std::int32_t* second)
{
    if (platform::inForkedChild())
        return E_CLOSED;
    return resident::coreCounts(first, second); // likewise
}

std::int32_t getVersion(float* version)
{
    BEGIN_EXPORT(E_CLOSED);
    return resident::version(version);
}

std::int32_t fakeTempEnable()
{
    BEGIN_EXPORT(E_CLOSED);
    return resident::enableFakeTemperature();
}

std::int32_t fakeTempStep()
{
    BEGIN_EXPORT(E_CLOSED);
    return resident::stepFakeTemperature();
}
