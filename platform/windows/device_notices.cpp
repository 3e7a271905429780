#include "platform/device_notices.h"

#include "platform/text.h"
#include "platform/windows/module_handle.h"

#include <array>
#include <cstddef>
#include <utility>
#include <windows.h>

#include <dbt.h> // after windows.h, whose types it takes for granted

namespace pyrux::platform {
namespace {

/// Class and title: other programs find the window by it.
constexpr const wchar_t* windowName = L"PYRUX USB hotplug event";

constexpr GUID audioClass{0x6994AD04, 0x93EF, 0x11D0, {0xA3, 0xCC, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
constexpr GUID hidClass{0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}};

/// The name in a broadcast record, which tells its own size and ends there at the latest.
std::string nameIn(const DEV_BROADCAST_HDR& header)
{
    constexpr std::size_t head = offsetof(DEV_BROADCAST_DEVICEINTERFACE_W, dbcc_name);
    if (header.dbch_size <= head)
        return {};
    const auto* name = reinterpret_cast<const wchar_t*>(reinterpret_cast<const char*>(&header) + head);
    const std::size_t room = (header.dbch_size - head) / sizeof *name;
    std::wstring text;
    for (std::size_t i = 0; i < room && name[i]; ++i)
        text += name[i];
    return narrow(text.c_str());
}

class WindowNotices final : public DeviceNotices {
public:
    explicit WindowNotices(Handlers handlers) : handlers(std::move(handlers)) {}

    bool create()
    {
        WNDCLASSW kind{};
        kind.lpfnWndProc = &WindowNotices::procedure;
        kind.hInstance = ownModule();
        kind.lpszClassName = windowName;
        registered = RegisterClassW(&kind) != 0;
        if (!registered)
            return false;
        window = CreateWindowExW(0, windowName, windowName, WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                 ownModule(), this);
        if (!window)
            return false;
        // A class that cannot be had costs its notices alone.
        for (std::size_t i = 0; i < notifications.size(); ++i)
            notifications[i] = askFor(i == 0 ? audioClass : hidClass);
        return true;
    }

    ~WindowNotices() override
    {
        for (const HDEVNOTIFY notification : notifications)
            if (notification)
                UnregisterDeviceNotification(notification);
        if (window)
            DestroyWindow(window);
        if (registered)
            UnregisterClassW(windowName, ownModule());
    }

    void run() override
    {
        for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0 && message.message != stopNotices;) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

private:
    HDEVNOTIFY askFor(const GUID& interfaceClass) const
    {
        DEV_BROADCAST_DEVICEINTERFACE_W filter{};
        filter.dbcc_size = sizeof filter;
        filter.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
        filter.dbcc_classguid = interfaceClass;
        return RegisterDeviceNotificationW(window, &filter, DEVICE_NOTIFY_WINDOW_HANDLE);
    }

    static LRESULT CALLBACK procedure(HWND window, UINT number, WPARAM first, LPARAM second)
    {
        if (number == WM_NCCREATE)
            SetWindowLongPtrW(
                window, GWLP_USERDATA,
                reinterpret_cast<LONG_PTR>(reinterpret_cast<const CREATESTRUCTW*>(second)->lpCreateParams));
        const auto* self = reinterpret_cast<const WindowNotices*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self && self->take(number, first, second))
            return TRUE;
        return DefWindowProcW(window, number, first, second);
    }

    bool take(UINT number, WPARAM first, LPARAM second) const
    {
        if (number == linkChangeNotice) {
            handlers.linkChange(first, static_cast<std::uintptr_t>(second));
            return true;
        }
        const auto* header = reinterpret_cast<const DEV_BROADCAST_HDR*>(second);
        if (number != WM_DEVICECHANGE || (first != DBT_DEVICEARRIVAL && first != DBT_DEVICEREMOVECOMPLETE) ||
            !header || header->dbch_devicetype != DBT_DEVTYP_DEVICEINTERFACE)
            return false;
        handlers.device(nameIn(*header),
                        first == DBT_DEVICEARRIVAL ? DeviceChange::arrival : DeviceChange::removal);
        return true;
    }

    const Handlers handlers;
    bool registered = false;
    HWND window = nullptr;
    std::array<HDEVNOTIFY, 2> notifications{};
};

/// The window of this process: another one, with a library of its own, may have one too.
HWND ownWindow()
{
    const auto isOwn = [](HWND window) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        return process == GetCurrentProcessId();
    };
    HWND window = FindWindowW(windowName, nullptr);
    while (window && !isOwn(window))
        window = FindWindowExW(nullptr, window, windowName, nullptr);
    return window;
}

} // namespace

std::unique_ptr<DeviceNotices> DeviceNotices::open(Handlers handlers)
{
    const auto queue = ThreadMessages::open();
    auto notices = std::make_unique<WindowNotices>(std::move(handlers));
    if (!notices->create())
        return nullptr;
    return notices;
}

bool postLinkChange(std::uintptr_t status, std::uintptr_t record)
{
    const HWND window = ownWindow();
    return window && PostMessageW(window, linkChangeNotice, status, static_cast<LPARAM>(record)) != FALSE;
}

} // namespace pyrux::platform
