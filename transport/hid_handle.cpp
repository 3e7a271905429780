#include "transport/hid_handle.h"

#include "platform/device_names.h"

#include <hidapi/hidapi.h>

#include <cerrno>

namespace pyrux {

std::mutex& hidLibraryMutex()
{
    // Never destroyed: a write that hung may close its device while the process ends.
    static auto& mutex = *new std::mutex;
    return mutex;
}

bool HidHandle::Line::open(const std::string& place)
{
    const std::lock_guard lock(hidLibraryMutex());
    raw = hid_open_path(place.c_str());
    return raw != nullptr;
}

HidHandle::Line::~Line()
{
    if (!raw)
        return;
    const std::lock_guard lock(hidLibraryMutex());
    hid_close(raw);
}

template <class Call>
std::optional<int> HidHandle::Line::call(std::optional<std::chrono::milliseconds> limit, Call call)
{
    {
        std::unique_lock lock(mutex);
        const std::uint64_t mine = ++lastTicket;
        waiting.push_back(mine);
        const auto isMine = [&] { return !taken && waiting.front() == mine; };
        if (!limit)
            freed.wait(lock, isMine);
        else
            freed.wait_for(lock, *limit, isMine);
        const bool got = isMine();
        std::erase(waiting, mine);
        if (!got)
            return {};
        taken = true;
    }
    struct Turn {
        Line& line;
        ~Turn()
        {
            {
                const std::lock_guard lock(line.mutex);
                line.taken = false;
            }
            line.freed.notify_all();
        }
    };
    const Turn turn{*this};
    return call();
}

namespace {

/// A call that a signal has cut short has not failed: it has found nothing. hidapi gives -1 and leaves the
/// system's word on it.
template <class Call>
int unlessInterrupted(Call call)
{
    errno = 0;
    const int result = call();
    return result < 0 && errno == EINTR ? 0 : result;
}

} // namespace

std::shared_ptr<HidHandle> HidHandle::open(const std::string& path, bool nonblocking)
{
    std::shared_ptr<HidHandle> handle(new HidHandle(platform::openablePath(path)));
    if (!handle->reading.open(handle->place) || !handle->writing.open(handle->place))
        return nullptr;
    hid_set_nonblocking(handle->reading.raw, nonblocking ? 1 : 0);
    handle->waiting = platform::DeviceWait::open(handle->place);
    return handle;
}

int HidHandle::write(std::span<const std::uint8_t> report)
{
    return *writing.call({}, [&] { return hid_write(writing.raw, report.data(), report.size()); });
}

template <class Call>
int HidHandle::callAside(Call call)
{
    constexpr std::chrono::milliseconds limit{1000};
    const std::optional<int> result = aside.call(limit, [&] {
        // While another line is open its place cannot become another device's.
        if (!aside.isOpen() && !aside.open(place))
            return -1;
        return call();
    });
    return result.value_or(-1);
}

int HidHandle::writeAside(std::span<const std::uint8_t> report)
{
    return callAside([&] { return hid_write(aside.raw, report.data(), report.size()); });
}

int HidHandle::read(std::span<std::uint8_t> buffer)
{
    return *reading.call({}, [&] {
        return unlessInterrupted([&] { return hid_read(reading.raw, buffer.data(), buffer.size()); });
    });
}

int HidHandle::readTimeout(std::span<std::uint8_t> buffer, int limitMs)
{
    const std::optional<int> result = reading.call(std::chrono::milliseconds(limitMs), [&] {
        return unlessInterrupted(
            [&] { return hid_read_timeout(reading.raw, buffer.data(), buffer.size(), limitMs); });
    });
    return result.value_or(0);
}

int HidHandle::inputReport(std::span<std::uint8_t> buffer)
{
    return callAside([&] { return hid_get_input_report(aside.raw, buffer.data(), buffer.size()); });
}

} // namespace pyrux
