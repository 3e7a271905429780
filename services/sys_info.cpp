#include "services/sys_info.h"

#include "core/boundary.h"
#include "core/log.h"
#include "platform/fork.h"
#include "services/resident_service.h"

#include <algorithm>
#include <utility>

namespace pyrux {
namespace {

/// Second word of MSG_HOOK_EVENT: the window's keyboard language has changed.
constexpr std::uintptr_t languageChange = 81;

/// The hook library's two functions are C functions.
using InstallHook = void(platform::ThreadId to, void* window, int hookKind);
constexpr int windowProcedureHook = 4;

struct LanguageCode {
    std::uint16_t primaryLanguage;
    SysKeyboardLanguage code;
};

constexpr LanguageCode languageCodes[]{
    {9, SYS_LANGUAGE_ENGLISH},  {4, SYS_LANGUAGE_CHINESE},     {12, SYS_LANGUAGE_FRENCH},
    {7, SYS_LANGUAGE_GERMAN},   {16, SYS_LANGUAGE_ITALIAN},    {17, SYS_LANGUAGE_JAPANESE},
    {18, SYS_LANGUAGE_KOREAN},  {62, SYS_LANGUAGE_MALAY},      {22, SYS_LANGUAGE_PORTUGUESE},
    {25, SYS_LANGUAGE_RUSSIAN}, {10, SYS_LANGUAGE_SPANISH},    {30, SYS_LANGUAGE_THAI},
    {31, SYS_LANGUAGE_TURKISH}, {42, SYS_LANGUAGE_VIETNAMESE},
};

SysKeyboardLanguage codeOf(std::uint16_t primaryLanguage)
{
    const auto* const row =
        std::find_if(std::begin(languageCodes), std::end(languageCodes),
                     [&](const LanguageCode& one) { return one.primaryLanguage == primaryLanguage; });
    return row == std::end(languageCodes) ? SYS_LANGUAGE_OTHER : row->code;
}

/// Runs a slot: not in a forked child, whose thread is the parent's, and without throwing at the host.
template <class Body>
_error operation(Body body)
{
    return platform::inForkedChild() ? E_CLOSED : atBoundary<_error>(E_FAIL, body);
}

/// Hands out a value, unless there is no place for it.
_error give(std::int32_t* out, std::int32_t value)
{
    if (!out)
        return E_INVALID_GET;
    *out = value;
    return E_OK;
}

/// A temperature out of range is taken back where it is kept.
std::int32_t withinRange(std::atomic<std::int32_t>& temperature)
{
    std::int32_t value = temperature;
    while (value > 100 || value < 0)
        if (temperature.compare_exchange_weak(value, 0))
            return 0;
    return value;
}

} // namespace

SYS_INFO::SYS_INFO(SystemSources from) : sources(std::move(from))
{
    if (!messages.start([this](const platform::ThreadMessage& message) { handle(message); }))
        return; // the operations that need no thread still work
    threadId = messages.id();
    tempService = sources.services.subscribe("temp", threadId);
    std::int32_t first = 0;
    std::int32_t second = 0;
    resident::coreCounts(&first, &second, sources.limits);
    coreFirst = first;
    coreSecond = second;
    infoService = sources.services.subscribe("systeminfo", threadId);
}

SYS_INFO::~SYS_INFO()
{
    if (threadId == noThread)
        return;
    tempService.end();
    infoService.end();
    messages.stop();
}

void SYS_INFO::handle(const platform::ThreadMessage& message)
{
    switch (message.number) {
    case MSG_HOOK_EVENT:
        if (message.second == languageChange)
            tellLanguage();
        break;
    case MSG_TEMPERATURE:
        tellStatus(payloadOf<MSG_TEMPERATURE>(message));
        break;
    case MSG_SYSTEM_INFO:
        callInfoNotify(payloadOf<MSG_SYSTEM_INFO>(message));
        break;
    default:
        break;
    }
}

void SYS_INFO::tellLanguage()
{
    std::int32_t language = 0;
    if (getKeyboardLanguage(&language) == E_OK)
        languageCallback.call(language);
}

void SYS_INFO::tellStatus(const Temperatures& temperatures)
{
    SysStatusRecord status{};
    status.cpuTemp = temperatures.cpu;
    getCpuUsage(&status.cpuUsage);
    if (coreFirst != 0) {
        status.gpuTemp = temperatures.gpu;
        getGpuUsage(&status.gpuUsage);
    }
    getRamUsage(&status.ramUsage);
    callStatusNotify(status);
    cpuTemp = temperatures.cpu;
    gpuTemp = temperatures.gpu; // deliberate: kept even when it was not told
}

_error SYS_INFO::getHardwareNames(SysHardwareNames* names)
{
    return operation([&] { return names ? collectHardwareNames(sources.hardware, *names) : E_INVALID_GET; });
}

_error SYS_INFO::getSysTemp(std::int32_t* cpu, std::int32_t* gpu)
{
    return operation([&] {
        if (!cpu || !gpu)
            return E_INVALID_GET;
        *cpu = withinRange(cpuTemp);
        *gpu = withinRange(gpuTemp);
        return E_OK;
    });
}

_error SYS_INFO::getSysCore(std::int32_t* first, std::int32_t* second)
{
    return operation([&] { return resident::coreCounts(first, second, sources.limits); });
}

_error SYS_INFO::getCpuUsage(std::int32_t* percent)
{
    return operation(
        [&] { return percent ? give(percent, sources.cpuLoad.percent(sources.cpuTimes())) : E_INVALID_GET; });
}

_error SYS_INFO::getGpuUsage(std::int32_t* percent)
{
    return operation([&] { return give(percent, static_cast<std::int32_t>(sources.gpuLoad())); });
}

_error SYS_INFO::getRamUsage(std::int32_t* percent)
{
    return operation([&] { return give(percent, static_cast<std::int32_t>(sources.memoryLoad())); });
}

_error SYS_INFO::setHookWindow(void* window)
{
    return operation([&] {
        hookWindow = window;
        hookThreadId = sources.windowThread(window);
        consoleLine("hook_pid set = " + std::to_string(hookThreadId));
        const platform::DynamicLibrary hook(sources.hookLibrary);
        if (auto* const install = hook.find<InstallHook>("installTWInjectHook"))
            install(threadId, window, windowProcedureHook);
        return E_OK;
    });
}

_error SYS_INFO::getKeyboardLanguage(std::int32_t* language)
{
    return operation([&] {
        return hookWindow.load() ? give(language, codeOf(sources.keyboardLanguage(hookThreadId)))
                                 : E_INVALID_GET;
    });
}

_error SYS_INFO::registerStatusNotify(SysStatusCallback callback)
{
    return operation([&] {
        statusCallback.set(callback);
        return E_OK;
    });
}

_error SYS_INFO::unRegisterStatusNotify()
{
    return operation([&] {
        statusCallback.set(nullptr);
        return E_OK;
    });
}

_error SYS_INFO::registerLanguageNotify(SysLanguageCallback callback)
{
    return operation([&] {
        languageCallback.set(callback);
        return E_OK;
    });
}

_error SYS_INFO::unRegisterLanguageNotify()
{
    return operation([&] {
        languageCallback.set(nullptr);
        return E_OK;
    });
}

_error SYS_INFO::callStatusNotify(SysStatusRecord status)
{
    return operation([&] {
        statusCallback.call(status);
        return E_OK;
    });
}

_error SYS_INFO::registerInfoNotify(SysDetailCallback callback)
{
    return operation([&] {
        infoCallback.set(callback);
        return E_OK;
    });
}

_error SYS_INFO::unRegisterInfoNotify()
{
    return operation([&] {
        infoCallback.set(nullptr);
        return E_OK;
    });
}

_error SYS_INFO::callInfoNotify(SysDetailRecord details)
{
    return operation([&] {
        infoCallback.call(details);
        return E_OK;
    });
}

void* SYS_INFO::destroy(std::uint32_t flags)
{
    void* const object = static_cast<SYS_INFO_Base*>(this);
    if (platform::inForkedChild())
        return object; // its thread is the parent's
    if (flags & 1)
        delete this;
    else
        this->~SYS_INFO();
    return object;
}

SYS_INFO_Base* makeSysInfo()
{
    return new SYS_INFO;
}

} // namespace pyrux
