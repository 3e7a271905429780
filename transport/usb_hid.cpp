#include "transport/usb_hid.h"

#include "transport/device_path.h"

#include <algorithm>
#include <chrono>

namespace pyrux {

namespace {

/// A read is cut into slices of this length, and closing a device waits no longer than this. Where the system
/// can wait for a device and for the end of its reads at once, that takes over after a slice of silence.
constexpr int sliceMs = 100;

/// One wake-up a second for a silent device, should ever a word get lost.
constexpr std::chrono::milliseconds longestSilence{1000};

} // namespace

usbHid::usbHid(std::string path) : path_(std::move(path)) {}

usbHid::~usbHid()
{
    closeChannel();
}

bool usbHid::open(Mode wanted)
{
    std::shared_ptr<HidHandle> opened =
        HidHandle::open(std::string(withoutDongleMark(path_)), wanted != Mode::blocking);
    const std::lock_guard lock(handleMutex);
    mode = wanted;
    handle = std::move(opened);
    return handle != nullptr;
}

void usbHid::closeChannel()
{
    endReads();
    std::shared_ptr<HidHandle> closed;
    const std::lock_guard lock(handleMutex);
    closed.swap(handle);
}

std::shared_ptr<HidHandle> usbHid::current() const
{
    const std::lock_guard lock(handleMutex);
    return handle;
}

_error usbHid::writeWatched(std::span<const std::uint8_t> report)
{
    const std::shared_ptr<HidHandle> to = current();
    return to ? writer.write(to, report) : E_NOT_OPEN;
}

_error usbHid::writeDirect(std::span<const std::uint8_t> report)
{
    const std::shared_ptr<HidHandle> to = current();
    if (!to)
        return E_NOT_OPEN;
    return to->writeAside(report) < 0 ? E_WRITE_TIMEOUT : E_OK;
}

int usbHid::readBlocking(std::span<std::uint8_t> buffer)
{
    for (;;) {
        const std::shared_ptr<HidHandle> from = current();
        if (!from || readsEnded)
            return nothingRead;
        if (mode == Mode::polled)
            return from->read(buffer);
        int count = from->readTimeout(buffer, sliceMs);
        if (count == 0)
            count = readAfterSilence(*from, buffer);
        if (count != 0)
            return count;
    }
}

/// Waits while nothing comes. 0: something has, or the reads end, or there can be no such wait.
int usbHid::readAfterSilence(HidHandle& from, std::span<std::uint8_t> buffer) const
{
    platform::DeviceWait* const input = from.input();
    for (bool more = input != nullptr; more && !readsEnded;) {
        input->mark();
        if (const int count = from.readTimeout(buffer, 0); count != 0)
            return count;
        more = !input->wait(longestSilence);
    }
    return 0;
}

bool usbHid::markInput()
{
    const std::shared_ptr<HidHandle> from = current();
    if (!from || !from->input())
        return false;
    from->input()->mark();
    return true;
}

void usbHid::awaitInput()
{
    const std::shared_ptr<HidHandle> from = current();
    if (from && from->input() && !readsEnded)
        from->input()->wait(longestSilence);
}

void usbHid::endReads()
{
    readsEnded = true;
    const std::shared_ptr<HidHandle> from = current();
    if (from && from->input())
        from->input()->wake();
}

int usbHid::readLimited(std::span<std::uint8_t> buffer, int limitMs)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(limitMs);
    for (;;) {
        const std::shared_ptr<HidHandle> from = current();
        if (!from || readsEnded)
            return nothingRead;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int count = from->readTimeout(buffer, int(std::clamp<long long>(left, 0, sliceMs)));
        if (count > 0)
            return 0;
        if (count < 0 || Clock::now() >= deadline)
            return nothingRead;
    }
}

int usbHid::read1000(std::span<std::uint8_t, 65> buffer)
{
    return readLimited(buffer, 1000);
}

int usbHid::read3000(std::span<std::uint8_t> buffer)
{
    return readLimited(buffer, 3000);
}

_error usbHid::getInputReport(std::span<std::uint8_t, 5> buffer)
{
    const std::shared_ptr<HidHandle> from = current();
    return from && from->inputReport(buffer) >= 1 ? E_OK : E_INVALID_GET;
}

} // namespace pyrux
