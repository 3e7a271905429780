#pragma once

#include "platform/dynamic_library.h"
#include "platform/keyboard_language.h"
#include "platform/system_load.h"
#include "pyrux/sys_info.h"
#include "services/cpu_load.h"
#include "services/hardware_names.h"
#include "services/message_thread.h"
#include "services/service_manager.h"
#include "transport/notify.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>

namespace pyrux {

/// Where `SYS_INFO` takes from what it tells. The defaults are the computer itself.
struct SystemSources {
    PYRUX_SERVICE& services = PYRUX_SERVICE::instance();
    PipeLimits limits{};
    CpuLoad& cpuLoad = CpuLoad::shared();
    std::function<std::optional<platform::CpuTimes>()> cpuTimes = [] { return platform::cpuTimes(); };
    std::function<std::uint32_t()> memoryLoad = [] { return platform::memoryLoad(); };
    std::function<std::uint32_t()> gpuLoad = [] { return platform::nvidiaLoad(); };
    AskHardware hardware = [](platform::Hardware part) { return platform::hardwareFacts(part); };
    std::function<platform::ThreadId(void*)> windowThread = platform::windowThread;
    std::function<std::uint16_t(platform::ThreadId)> keyboardLanguage = platform::keyboardLanguage;
    std::string hookLibrary = platform::libraryFile("tw-hook");
};

class SYS_INFO final : public SYS_INFO_Base {
public:
    explicit SYS_INFO(SystemSources from = {});
    ~SYS_INFO();
    SYS_INFO(const SYS_INFO&) = delete;
    SYS_INFO& operator=(const SYS_INFO&) = delete;

    _error getHardwareNames(SysHardwareNames* names) override;
    _error getSysTemp(std::int32_t* cpu, std::int32_t* gpu) override;
    _error getSysCore(std::int32_t* first, std::int32_t* second) override;
    _error getCpuUsage(std::int32_t* percent) override;
    _error getGpuUsage(std::int32_t* percent) override;
    _error getRamUsage(std::int32_t* percent) override;
    _error setHookWindow(void* window) override;
    _error getKeyboardLanguage(std::int32_t* language) override;
    _error registerStatusNotify(SysStatusCallback callback) override;
    _error unRegisterStatusNotify() override;
    _error registerLanguageNotify(SysLanguageCallback callback) override;
    _error unRegisterLanguageNotify() override;
    _error callStatusNotify(SysStatusRecord status) override;
    _error registerInfoNotify(SysDetailCallback callback) override;
    _error unRegisterInfoNotify() override;
    _error callInfoNotify(SysDetailRecord details) override;
    void* destroy(std::uint32_t flags) override;

private:
    static constexpr platform::ThreadId noThread = 0xFFFFFFFF;

    void handle(const platform::ThreadMessage& message);
    void tellLanguage();
    void tellStatus(const Temperatures& temperatures);

    const SystemSources sources;
    platform::ThreadId threadId = noThread; ///< Stays so when the thread cannot be had.
    Subscription tempService;
    Subscription infoService;
    std::atomic<std::int32_t> cpuTemp = 0; ///< Of the last MSG_TEMPERATURE.
    std::atomic<std::int32_t> gpuTemp = 0;
    std::atomic<std::int32_t> coreFirst = 0; ///< Read once; 0 also when the resident service does not tell.
    std::atomic<std::int32_t> coreSecond = 0;
    std::atomic<platform::ThreadId> hookThreadId = 0;
    std::atomic<void*> hookWindow = nullptr;
    Notify<SysStatusCallback> statusCallback;
    Notify<SysDetailCallback> infoCallback;
    Notify<SysLanguageCallback> languageCallback;
    MessageThread messages; ///< Uses all of the above.
};

/// What the export `sysInfo` gives.
SYS_INFO_Base* makeSysInfo();

} // namespace pyrux
