#include "platform/media_devices.h"

#include "platform/windows/wmi.h"

#include <windows.h>

#include <setupapi.h>

namespace pyrux::platform {
namespace {

/// The first text of a device's property; the others of a list are less telling.
std::string property(HDEVINFO devices, SP_DEVINFO_DATA& device, DWORD which)
{
    DWORD size = 0;
    SetupDiGetDeviceRegistryPropertyA(devices, &device, which, nullptr, nullptr, 0, &size);
    std::string text(size + 1, '\0');
    if (!SetupDiGetDeviceRegistryPropertyA(devices, &device, which, nullptr,
                                           reinterpret_cast<BYTE*>(text.data()), size, nullptr))
        return {};
    return text.c_str();
}

/// The names of devices are ASCII.
std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// By `WmiAnswer::Failure`.
constexpr std::string_view failures[]{"", "fail CoCreateInstance", "fail ConnectServer", "fail ExecQuery"};

} // namespace

std::vector<UsbDevice> presentUsbDevices()
{
    std::vector<UsbDevice> found;
    const HDEVINFO devices = SetupDiGetClassDevsA(nullptr, "USB", nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
    if (devices == INVALID_HANDLE_VALUE)
        return found;
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    for (DWORD i = 0; SetupDiEnumDeviceInfo(devices, i, &device); ++i)
        found.push_back({.deviceClass = property(devices, device, SPDRP_CLASS),
                         .hardwareId = property(devices, device, SPDRP_HARDWAREID),
                         .manufacturer = property(devices, device, SPDRP_MFG)});
    SetupDiDestroyDeviceInfoList(devices);
    return found;
}

PlugAndPlayStatus plugAndPlayStatus(const std::string& name)
{
    constexpr const wchar_t* status[]{L"Status"};
    // Two blanks after FROM: as it has always been sent.
    const WmiAnswer answer =
        firstObject(L"SELECT * FROM  Win32_PnPEntity WHERE name = '" + widened(name) + L"'", status);
    return {.failure = failures[static_cast<std::size_t>(answer.failure)],
            .code = answer.code,
            .text = answer.found ? answer.texts[0] : std::nullopt};
}

} // namespace pyrux::platform
