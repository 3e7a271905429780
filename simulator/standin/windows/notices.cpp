#include "simulator/standin/notices.h"

#include <cstddef>
#include <cstring>
#include <vector>
#include <windows.h>

#include <dbt.h> // after windows.h, whose types it takes for granted

namespace pyrux::sim {

namespace {

constexpr const wchar_t* windowClass = L"PYRUX USB hotplug event";
constexpr GUID hidClass{0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}};

/// A listener that has stopped taking notices must not hold the bus for ever.
constexpr UINT limitMs = 5000;

/// The broadcast record of a device interface, with its name after it.
std::vector<char> recordOf(const std::string& path)
{
    const std::wstring name(path.begin(), path.end());
    const std::size_t head = offsetof(DEV_BROADCAST_DEVICEINTERFACE_W, dbcc_name);
    std::vector<char> bytes(head + (name.size() + 1) * sizeof(wchar_t));
    DEV_BROADCAST_DEVICEINTERFACE_W record{};
    record.dbcc_size = DWORD(bytes.size());
    record.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
    record.dbcc_classguid = hidClass;
    std::memcpy(bytes.data(), &record, head);
    std::memcpy(bytes.data() + head, name.c_str(), name.size() * sizeof(wchar_t));
    return bytes;
}

} // namespace

void announce(const std::string& path, bool plugged)
{
    std::vector<char> record = recordOf(path);
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, windowClass, nullptr))) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        DWORD_PTR result = 0;
        if (process == GetCurrentProcessId())
            SendMessageTimeoutW(window, WM_DEVICECHANGE,
                                plugged ? DBT_DEVICEARRIVAL : DBT_DEVICEREMOVECOMPLETE,
                                reinterpret_cast<LPARAM>(record.data()), SMTO_NORMAL, limitMs, &result);
    }
}

} // namespace pyrux::sim
