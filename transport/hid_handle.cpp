#include "transport/hid_handle.h"

#include "platform/device_names.h"

#include <hidapi/hidapi.h>

#include <chrono>
#include <utility>

namespace pyrux {

std::mutex& hidLibraryMutex()
{
    // Never destroyed: a write that hung may close its device while the process ends.
    static auto& mutex = *new std::mutex;
    return mutex;
}

std::shared_ptr<HidHandle> HidHandle::open(const std::string& path, bool nonblocking)
{
    const std::string place = platform::openablePath(path);
    const std::lock_guard lock(hidLibraryMutex());
    hid_device_* raw = hid_open_path(place.c_str());
    if (!raw)
        return nullptr;
    hid_set_nonblocking(raw, nonblocking ? 1 : 0);
    return std::shared_ptr<HidHandle>(new HidHandle(raw));
}

HidHandle::~HidHandle()
{
    const std::lock_guard lock(hidLibraryMutex());
    hid_close(raw);
}

template <class Call>
int HidHandle::guarded(int limitMs, Call call)
{
    int result = -1;
    if (!failed) {
        const std::shared_lock lock(gate);
        result = call();
    } else {
        const std::unique_lock lock(gate, std::chrono::milliseconds(limitMs));
        if (!lock)
            return 0;
        result = call();
    }
    // A call that succeeds has taken the text away.
    failed = result < 0;
    return result;
}

namespace {

/// How long a call without a limit of its own waits for another one that may have failed.
constexpr int gateLimitMs = 1000;

} // namespace

int HidHandle::write(std::span<const std::uint8_t> report)
{
    return guarded(gateLimitMs, [&] { return hid_write(raw, report.data(), report.size()); });
}

int HidHandle::read(std::span<std::uint8_t> buffer)
{
    return guarded(gateLimitMs, [&] { return hid_read(raw, buffer.data(), buffer.size()); });
}

int HidHandle::readTimeout(std::span<std::uint8_t> buffer, int limitMs)
{
    return guarded(limitMs, [&] { return hid_read_timeout(raw, buffer.data(), buffer.size(), limitMs); });
}

int HidHandle::inputReport(std::span<std::uint8_t> buffer)
{
    return guarded(gateLimitMs, [&] { return hid_get_input_report(raw, buffer.data(), buffer.size()); });
}

} // namespace pyrux
