#include "core/log.h"
#include "platform/linux/hid_node.h"
#include "platform/linux/notice_socket.h"
#include "pyrux/pyrux.h"
#include "transport/audio_devices.h"
#include "transport/hotplug.h"

#include <cstdlib>
#include <cstring>
#include <string>

using namespace pyrux;

namespace {

void check(HotplugEvent event)
{
    if (!std::memchr(event.name, 0, sizeof event.name) || !std::memchr(event.path, 0, sizeof event.path))
        std::abort();
}

} // namespace

/// Names in device notices, the notices of the socket, report descriptors, and what a system's listing tells.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool ready = [] {
        setenv("PYRUX_DEBUG_OUTPUT", "none", 1);
        debugEnabled = 0;
        registerDevNotify(check);
        return true;
    }();
    if (size < 2 || !ready)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    switch (data[0] % 4) {
    case 0:
        // As it comes, and after a beginning that leads further.
        for (const char* head : {"", "HID#VID_3A7E&PID_0171&MI_03", "HID#VID_3A7E&PID_0093&MI_03"})
            for (const auto change : {platform::DeviceChange::arrival, platform::DeviceChange::removal})
                notifyDevice(head + text, change);
        break;
    case 1:
        dongleDeviceChange({data[0], std::uint32_t(size & 0xFFFF), "HID#VID_3A7E&PID_01B7&MI_03" + text},
                           data[0] & 4);
        if (const auto notice = platform::parseNotice(text); notice && notice->name.empty())
            std::abort();
        if (platform::nodeInName(text).size() > 15)
            std::abort();
        break;
    case 2:
        if (platform::topLevelUsagePages({data + 1, size - 1}).size() > 255)
            std::abort();
        break;
    default:
        mediaSource().devices = [&] { return std::vector<platform::UsbDevice>{{"MEDIA", text, text}}; };
        mediaSource().status = [&](const std::string&) { return platform::PlugAndPlayStatus{{}, 0, text}; };
        audioStateOf(0x3A7E, 0x010D);
        mediaSource() = {};
        break;
    }
    return 0;
}
