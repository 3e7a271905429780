#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <span>
#include <string>

struct hid_device_;

namespace pyrux {

/// hidapi's functions that touch its global state (init, enumerate, open, close) are not safe against each
/// other: whoever calls one holds this.
std::mutex& hidLibraryMutex();

/// One open device. Reads and writes may run at the same time. Closed when the last owner lets go, so that a
/// write that hangs in the system keeps its device.
class HidHandle {
public:
    /// Null when the device cannot be opened.
    static std::shared_ptr<HidHandle> open(const std::string& path, bool nonblocking);
    ~HidHandle();
    HidHandle(const HidHandle&) = delete;
    HidHandle& operator=(const HidHandle&) = delete;

    /// hid_write's result.
    int write(std::span<const std::uint8_t> report);

    /// hid_read's result.
    int read(std::span<std::uint8_t> buffer);

    /// hid_read_timeout's result; 0 also when hidapi is busy with a failed call for all that time.
    int readTimeout(std::span<std::uint8_t> buffer, int limitMs);

    /// hid_get_input_report's result.
    int inputReport(std::span<std::uint8_t> buffer);

private:
    explicit HidHandle(hid_device_* raw) : raw(raw) {}

    template <class Call>
    int guarded(int limitMs, Call call);

    hid_device_* raw;
    /// hidapi keeps one error text per device without a lock: from a failed call to the next that succeeds,
    /// calls exclude each other.
    std::shared_timed_mutex gate;
    std::atomic<bool> failed{false};
};

} // namespace pyrux
