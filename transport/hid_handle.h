#pragma once

#include "platform/device_wait.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

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
    HidHandle(const HidHandle&) = delete;
    HidHandle& operator=(const HidHandle&) = delete;

    /// hid_write's result. Waits for the writes before it, however long they hang.
    int write(std::span<const std::uint8_t> report);

    /// The same past those writes; -1 also when another call of this sort hangs.
    int writeAside(std::span<const std::uint8_t> report);

    /// hid_read's result; 0 also when a signal has come.
    int read(std::span<std::uint8_t> buffer);

    /// hid_read_timeout's result; 0 also when a signal has come, and when somebody else reads for all that
    /// time.
    int readTimeout(std::span<std::uint8_t> buffer, int limitMs);

    /// hid_get_input_report's result; -1 also when another call of this sort, or `writeAside`, hangs.
    int inputReport(std::span<std::uint8_t> buffer);

    /// Null: input can only be looked for.
    platform::DeviceWait* input() const { return waiting.get(); }

private:
    /// hidapi frees and sets the error text of a hid_device in every call, without a lock, and a read frees
    /// it before it waits. So only one call at a time is made on one; calls that must not wait for each other
    /// have a hid_device of their own.
    class Line {
    public:
        Line() = default;
        ~Line();
        Line(const Line&) = delete;
        Line& operator=(const Line&) = delete;

        /// With the line in hand, or while nobody else knows of it.
        bool open(const std::string& place);
        bool isOpen() const { return raw != nullptr; }

        /// The line is the caller's for the call. No value: it was somebody else's for all of `limit`;
        /// without a limit it is waited for.
        template <class Call>
        std::optional<int> call(std::optional<std::chrono::milliseconds> limit, Call call);

        hid_device_* raw = nullptr;

    private:
        std::mutex mutex;
        std::condition_variable freed;
        bool taken = false;
        std::uint64_t lastTicket = 0;
        std::vector<std::uint64_t>
            waiting; ///< In the order in which they came, so that late reports keep it.
    };

    explicit HidHandle(std::string place) : place(std::move(place)) {}

    template <class Call>
    int callAside(Call call);

    const std::string place;
    Line reading;
    Line writing;
    std::unique_ptr<platform::DeviceWait> waiting;
    Line aside; ///< Opened by the first call that needs it; few devices do.
};

} // namespace pyrux
