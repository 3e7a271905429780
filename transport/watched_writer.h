#pragma once

#include "pyrux/error.h"
#include "transport/clock.h"
#include "transport/hid_handle.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace pyrux {

/// Writes reports with a limit on the time that a stalled device can take. The writing is done by a thread
/// that lives as long as its channel; one that hangs is left alone and ends by itself, and a new one takes
/// over.
class WatchedWriter {
public:
    explicit WatchedWriter(std::chrono::milliseconds limit = std::chrono::milliseconds(1000),
                           Clock& clock = Clock::steady())
        : limit(limit), clock(clock)
    {
    }
    ~WatchedWriter();
    WatchedWriter(const WatchedWriter&) = delete;
    WatchedWriter& operator=(const WatchedWriter&) = delete;

    /// Writes a copy of `report`. One write at a time; further callers wait.
    /// @return E_OK whatever the system said of the write: a lost report shows in the missing reply;
    ///         E_WRITE_TIMEOUT when it has not returned within the limit
    _error write(const std::shared_ptr<HidHandle>& handle, std::span<const std::uint8_t> report);

private:
    class Worker;

    const std::chrono::milliseconds limit;
    Clock& clock;
    std::mutex turn;
    std::shared_ptr<Worker> worker;
    std::vector<std::weak_ptr<Worker>> stuck;
};

} // namespace pyrux
