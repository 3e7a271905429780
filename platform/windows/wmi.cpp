#include "platform/windows/wmi.h"

#include "platform/apartment.h"
#include "platform/text.h"

#include <objbase.h>
#include <oleauto.h>
#include <wbemidl.h>

namespace pyrux::platform {
namespace {

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

WmiAnswer failed(WmiAnswer::Failure step, HRESULT code)
{
    return {.failure = step, .code = static_cast<std::uint32_t>(code)};
}

constexpr LONG withoutLimit = -1; // WBEM_INFINITE as the call takes it

std::optional<std::string> textOf(IWbemClassObject& object, const wchar_t* property)
{
    VARIANT value;
    VariantInit(&value);
    std::optional<std::string> text;
    if (SUCCEEDED(object.Get(property, 0, &value, nullptr, nullptr))) {
        const bool readable = value.vt != VT_NULL && SUCCEEDED(VariantChangeType(&value, &value, 0, VT_BSTR));
        text = readable ? narrow(value.bstrVal) : std::string();
    }
    VariantClear(&value);
    return text;
}

} // namespace

WmiAnswer firstObject(const std::wstring& query, std::span<const wchar_t* const> properties)
{
    using Failure = WmiAnswer::Failure;
    const Apartment apartment;
    // Fails when the process has its security already, which then is the one to use.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                         RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    Com<IWbemLocator> locator;
    if (const HRESULT code = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                              IID_IWbemLocator, reinterpret_cast<void**>(locator.place()));
        FAILED(code))
        return failed(Failure::locator, code);
    Com<IWbemServices> services;
    if (const HRESULT code = locator->ConnectServer(ComText(L"ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                                    0, nullptr, nullptr, services.place());
        FAILED(code))
        return failed(Failure::server, code);
    CoSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                      RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    Com<IEnumWbemClassObject> objects;
    if (const HRESULT code = services->ExecQuery(ComText(L"WQL").get(), ComText(query).get(),
                                                 WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                                 nullptr, objects.place());
        FAILED(code))
        return failed(Failure::query, code);
    WmiAnswer answer;
    Com<IWbemClassObject> object;
    ULONG count = 0;
    answer.found =
        SUCCEEDED(objects->Next(withoutLimit, 1, object.place(), &count)) && count != 0 && object.get();
    if (answer.found)
        for (const wchar_t* const property : properties)
            answer.texts.push_back(textOf(*object.get(), property));
    return answer;
}

} // namespace pyrux::platform
