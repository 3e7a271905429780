#include "platform/media_devices.h"

#include "platform/apartment.h"
#include "platform/text.h"

#include <array>
#include <objbase.h>
#include <oleauto.h>
#include <setupapi.h>
#include <wbemidl.h>

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

/// Owns a COM object.
template <class Object>
class Com {
public:
    Com() = default;
    ~Com()
    {
        if (object)
            object->Release();
    }
    Com(const Com&) = delete;
    Com& operator=(const Com&) = delete;

    Object** place() { return &object; }
    Object* get() const { return object; }
    Object* operator->() const { return object; }

private:
    Object* object = nullptr;
};

/// Owns a text of COM's.
class ComText {
public:
    explicit ComText(const std::wstring& from) : text(SysAllocString(from.c_str())) {}
    ~ComText() { SysFreeString(text); }
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;
    BSTR get() const { return text; }

private:
    BSTR text;
};

struct Apartment {
    Apartment() { enterApartment(); }
    ~Apartment() { leaveApartment(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

/// The names of devices are ASCII.
std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

PlugAndPlayStatus failed(std::string_view step, HRESULT code)
{
    return {.failure = step, .code = static_cast<std::uint32_t>(code), .text = {}};
}

constexpr LONG withoutLimit = -1; // WBEM_INFINITE as the call takes it

/// The property "Status" of the first object; without one when there is no object.
PlugAndPlayStatus firstStatus(IEnumWbemClassObject& objects)
{
    PlugAndPlayStatus status;
    Com<IWbemClassObject> object;
    ULONG count = 0;
    if (FAILED(objects.Next(withoutLimit, 1, object.place(), &count)) || count == 0)
        return status;
    VARIANT value;
    VariantInit(&value);
    if (SUCCEEDED(object->Get(L"Status", 0, &value, nullptr, nullptr)))
        status.text = value.vt == VT_BSTR ? narrow(value.bstrVal) : std::string();
    VariantClear(&value);
    return status;
}

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
    const Apartment apartment;
    // Fails when the process has its security already, which then is the one to use.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                         RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    Com<IWbemLocator> locator;
    if (const HRESULT code = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                              IID_IWbemLocator, reinterpret_cast<void**>(locator.place()));
        FAILED(code))
        return failed("fail CoCreateInstance", code);
    Com<IWbemServices> services;
    if (const HRESULT code = locator->ConnectServer(ComText(L"ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                                    0, nullptr, nullptr, services.place());
        FAILED(code))
        return failed("fail ConnectServer", code);
    CoSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                      RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    // Two blanks behind FROM: as it has always been sent.
    const ComText query(L"SELECT * FROM  Win32_PnPEntity WHERE name = '" + widened(name) + L"'");
    Com<IEnumWbemClassObject> objects;
    if (const HRESULT code = services->ExecQuery(ComText(L"WQL").get(), query.get(),
                                                 WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                                 nullptr, objects.place());
        FAILED(code))
        return failed("fail ExecQuery", code);
    return firstStatus(*objects.get());
}

} // namespace pyrux::platform
