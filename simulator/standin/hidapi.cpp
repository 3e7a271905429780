#include "simulator/standin/registry.h"

#include <chrono>
#include <cwchar>

#if !defined(_WIN32)
#pragma GCC visibility push(default)
#endif
#include <hidapi/hidapi.h>
#if !defined(_WIN32)
#pragma GCC visibility pop
#endif

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

/// @file
/// hidapi's functions. A hid_device* is a number here and is never followed.

namespace {

using namespace pyrux::sim;

/// A call that hidapi does not protect against others of its sort.
class LibraryCall {
public:
    LibraryCall()
    {
        if (inside()++ > 0)
            ++Registry::instance().overlaps;
    }
    ~LibraryCall() { --inside(); }
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

private:
    static std::atomic<int>& inside()
    {
        static std::atomic<int> calls = 0;
        return calls;
    }
};

/// A call with a handle; empty when the handle is not open.
class HandleCall {
public:
    explicit HandleCall(hid_device* device) : handle(Registry::instance().enter(numberOf(device))) {}
    ~HandleCall()
    {
        if (handle)
            Registry::leave(*handle);
    }
    HandleCall(const HandleCall&) = delete;
    HandleCall& operator=(const HandleCall&) = delete;

    explicit operator bool() const { return handle != nullptr; }
    Handle& operator*() const { return *handle; }
    Handle* operator->() const { return handle.get(); }

    static std::uintptr_t numberOf(hid_device* device) { return reinterpret_cast<std::uintptr_t>(device); }

private:
    std::shared_ptr<Handle> handle;
};

std::atomic<const wchar_t*> libraryError = nullptr;

/// The texts of a device are ASCII.
std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// An entry of an enumeration with what it points to.
struct Info : hid_device_info {
    Info(const Identity& identity, const Entry& entry)
        : hid_device_info{}, pathText(entry.path), serialText(widened(identity.serial)),
          makerText(widened(identity.manufacturer)), productText(widened(identity.product))
    {
        path = pathText.data();
        vendor_id = identity.vid;
        product_id = identity.pid;
        serial_number = serialText.data();
        release_number = identity.release;
        manufacturer_string = makerText.data();
        product_string = productText.data();
        usage_page = entry.collection.usagePage;
        usage = entry.collection.usage;
        interface_number = entry.collection.interface;
        bus_type = HID_API_BUS_USB;
    }

    std::string pathText;
    std::wstring serialText;
    std::wstring makerText;
    std::wstring productText;
};

bool wanted(unsigned short filter, std::uint16_t value)
{
    return filter == 0 || filter == value;
}

hid_device* opened(const std::string& path)
{
    const std::uintptr_t number = Registry::instance().open(path);
    libraryError = number ? nullptr : L"No such device";
    return reinterpret_cast<hid_device*>(number);
}

template <class Text>
int copyText(hid_device* device, wchar_t* string, std::size_t maxlen, Text text)
{
    const HandleCall handle(device);
    if (!handle || !string || maxlen == 0)
        return -1;
    std::wcsncpy(string, widened(text(handle->device->model->identity())).c_str(), maxlen - 1);
    string[maxlen - 1] = L'\0';
    handle->error = nullptr;
    return 0;
}

int unsupported(hid_device* device)
{
    const HandleCall handle(device);
    if (handle)
        handle->error = L"Not supported";
    return -1;
}

} // namespace

int hid_init()
{
    const LibraryCall call;
    libraryError = nullptr;
    return 0;
}

int hid_exit()
{
    const LibraryCall call;
    libraryError = nullptr;
    return 0;
}

hid_device_info* hid_enumerate(unsigned short vendor_id, unsigned short product_id)
{
    const LibraryCall call;
    hid_device_info* first = nullptr;
    hid_device_info** last = &first;
    for (const auto& device : Registry::instance().plugged()) {
        const Identity& identity = device->model->identity();
        if (!wanted(vendor_id, identity.vid) || !wanted(product_id, identity.pid))
            continue;
        for (const Entry& entry : device->entries) {
            *last = new Info(identity, entry);
            last = &(*last)->next;
        }
    }
    libraryError = first ? nullptr : L"No HID devices found in the system.";
    return first;
}

void hid_free_enumeration(hid_device_info* devs)
{
    while (devs)
        delete static_cast<Info*>(std::exchange(devs, devs->next));
}

hid_device* hid_open(unsigned short vendor_id, unsigned short product_id, const wchar_t* serial_number)
{
    const LibraryCall call;
    for (const auto& device : Registry::instance().plugged()) {
        const Identity& identity = device->model->identity();
        if (identity.vid != vendor_id || identity.pid != product_id)
            continue;
        if (!serial_number || widened(identity.serial) == serial_number)
            return opened(device->entries.front().path);
    }
    libraryError = L"Device with requested VID/PID/(SerialNumber) not found";
    return nullptr;
}

hid_device* hid_open_path(const char* path)
{
    const LibraryCall call;
    return opened(path ? path : "");
}

int hid_write(hid_device* dev, const unsigned char* data, size_t length)
{
    const HandleCall handle(dev);
    return handle ? handle->device->write(*handle, {data, data ? length : 0}) : -1;
}

int hid_read_timeout(hid_device* dev, unsigned char* data, size_t length, int milliseconds)
{
    const HandleCall handle(dev);
    return handle ? handle->device->read(*handle, {data, data ? length : 0}, milliseconds) : -1;
}

int hid_read(hid_device* dev, unsigned char* data, size_t length)
{
    const HandleCall handle(dev);
    return handle ? handle->device->read(*handle, {data, data ? length : 0}, handle->nonblocking ? 0 : -1)
                  : -1;
}

int hid_set_nonblocking(hid_device* dev, int nonblock)
{
    const HandleCall handle(dev);
    if (!handle)
        return -1;
    handle->nonblocking = nonblock != 0;
    return 0;
}

int hid_send_feature_report(hid_device* dev, const unsigned char*, size_t)
{
    return unsupported(dev);
}

int hid_get_feature_report(hid_device* dev, unsigned char*, size_t)
{
    return unsupported(dev);
}

int hid_get_input_report(hid_device* dev, unsigned char* data, size_t length)
{
    const HandleCall handle(dev);
    return handle ? handle->device->inputReport(*handle, {data, data ? length : 0}) : -1;
}

void hid_close(hid_device* dev)
{
    const LibraryCall call;
    if (dev)
        Registry::instance().close(HandleCall::numberOf(dev));
}

int hid_get_manufacturer_string(hid_device* dev, wchar_t* string, size_t maxlen)
{
    return copyText(dev, string, maxlen, [](const Identity& identity) { return identity.manufacturer; });
}

int hid_get_product_string(hid_device* dev, wchar_t* string, size_t maxlen)
{
    return copyText(dev, string, maxlen, [](const Identity& identity) { return identity.product; });
}

int hid_get_serial_number_string(hid_device* dev, wchar_t* string, size_t maxlen)
{
    return copyText(dev, string, maxlen, [](const Identity& identity) { return identity.serial; });
}

hid_device_info* hid_get_device_info(hid_device* dev)
{
    const HandleCall handle(dev);
    if (!handle)
        return nullptr;
    // The handle keeps it: it is valid until hid_close.
    const std::lock_guard lock(handle->infoMutex);
    if (!handle->info)
        handle->info = std::make_shared<Info>(handle->device->model->identity(), handle->entry);
    return static_cast<Info*>(handle->info.get());
}

int hid_get_indexed_string(hid_device* dev, int, wchar_t*, size_t)
{
    return unsupported(dev);
}

const wchar_t* hid_error(hid_device* dev)
{
    const wchar_t* text = libraryError;
    if (dev) {
        const HandleCall handle(dev);
        text = handle ? handle->error.load() : L"Device handle is not open";
    }
    return text ? text : L"Success";
}

const hid_api_version* hid_version()
{
    static const hid_api_version version{HID_API_VERSION_MAJOR, HID_API_VERSION_MINOR, HID_API_VERSION_PATCH};
    return &version;
}

const char* hid_version_str()
{
    return HID_API_VERSION_STR;
}
