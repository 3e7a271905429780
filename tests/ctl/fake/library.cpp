// A library with pyrux's exports and made-up devices, for what the simulator cannot show: a device whose
// driver is not good, one that cannot be opened, one that pyruxctl does not know, and hotplug events.

#define PYRUX_BUILDING
#include "pyrux/pyrux.h"
#include "tests/ctl/fake_mouse.h"

#include <cstdlib>
#include <string_view>

#if defined(_WIN32)
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr auto mouse = R"(\\?\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2})";
constexpr auto broken = R"(\\?\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2})";
constexpr auto headset = R"(\\?\hid#vid_3a7e&pid_0111#headset#{4d1e55b2})";
constexpr auto lateMouse = R"(\\?\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2})";

void (*hotplugCallback)(HotplugEvent) = nullptr;
FakeMouse firstMouse, secondMouse;

std::string setting(const char* name)
{
    const char* const text = std::getenv(name);
    return text ? text : "";
}

/// The devices that are attached; PYRUX_FAKE_DEVICES chooses how many of them.
int attached()
{
    const std::string text = setting("PYRUX_FAKE_DEVICES");
    return text.empty() ? 3 : std::stoi(text);
}

DevInfoRecord record(const char* path, const char* product, const char* serial, std::uint16_t pid,
                     std::uint32_t good)
{
    DevInfoRecord record{};
    std::strncpy(record.path, path, sizeof record.path - 1);
    std::strncpy(record.product, product, sizeof record.product - 1);
    std::strncpy(record.serial, serial, sizeof record.serial - 1);
    std::strncpy(record.vendor, "Tessel Works", sizeof record.vendor - 1);
    record.release = 0x1203;
    record.vid = 0x3A7E;
    record.pid = pid;
    record.driverOk = good;
    record.statusOk = 1;
    return record;
}

HotplugEvent hotplug(std::uint32_t plugged)
{
    HotplugEvent event{};
    std::strncpy(event.name, "RD210", sizeof event.name - 1);
    std::strncpy(event.path, lateMouse, sizeof event.path - 1);
    event.vid = 0x3A7E;
    event.pid = 0x012F;
    event.plugged = plugged;
    event.driverOk = 1;
    return event;
}

/// A mouse that tells of its keys as soon as somebody listens, and then goes away.
class LateMouse {
public:
    PYRUX_RD210_Base* open()
    {
        mouse.onListen = [this] {
            NotifyRecord key{RD210_KEY_DOWN, 0x22};
            mouse.callback(&key);
            hotplugCallback(hotplug(0));
        };
        return &mouse;
    }

private:
    FakeMouse mouse;
} late;

} // namespace

EXPORT std::int32_t pyrux_init()
{
    return 0;
}
EXPORT std::int32_t pyrux_exit()
{
    return 0;
}
EXPORT std::uint32_t pyrux_background(std::uint8_t flag)
{
    return flag;
}
EXPORT float* pyrux_version(float* version)
{
    *version = 9.25f;
    return version;
}
EXPORT std::int32_t devNums()
{
    return attached();
}
EXPORT std::int32_t devInfo(DevInfoRecord* records)
{
    const DevInfoRecord all[]{
        record(mouse, "First mouse", "A1", 0x012F, 1),
        record(headset, "Headset", setting("PYRUX_DEBUG_OUTPUT").c_str(), 0x0111, 0),
        record(broken, "Broken mouse", "B2", 0x012F, 1),
    };
    const bool twice =
        !setting("PYRUX_FAKE_TWICE").empty(); // each record again, as for two rows of the catalogue
    std::int32_t count = 0;
    for (int i = 0; i < attached(); ++i)
        for (int again = 0; again <= twice; ++again)
            records[count++] = all[i];
    return count;
}
EXPORT std::int32_t registerDevNotify(void (*callback)(HotplugEvent event))
{
    hotplugCallback = callback;
    if (!setting("PYRUX_FAKE_HOTPLUG").empty())
        callback(hotplug(1));
    return 0;
}
EXPORT void getBTVersion(const char*, char* version)
{
    std::strcpy(version, "1.2.3");
}
EXPORT void getDGVersion(const char*, std::uint16_t* version)
{
    std::puts("is not a dongle dev: RD210"); // as the real one does, on the standard output
    version[0] = 0;
    version[1] = 0x0105;
}
EXPORT void getDriverVersion(const char*, std::uint8_t* version)
{
    *version = 7;
}
EXPORT PYRUX_RD210_Base* rd210(const char* path)
{
    const std::string_view text(path);
    if (text == broken)
        return nullptr;
    return text == mouse ? &firstMouse : text == lateMouse ? late.open() : &secondMouse;
}
