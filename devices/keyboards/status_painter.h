#pragma once

#include "devices/keyboards/status_chart.h"
#include "platform/thread_messages.h"
#include "services/message_thread.h"
#include "services/service.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace pyrux {

/// Charts the processor load or the spectrum of what is played, on a thread of its own that is told by the
/// services.
class StatusPainter {
public:
    using Shown =
        std::function<std::optional<std::uint32_t>()>; ///< The type to chart; none: the effect is off.
    using Show = std::function<void(std::span<const std::uint8_t> frame)>;

    /// @param shown, show  called on the thread
    StatusPainter(const StatusChart& chart, Shown shown, Show show);
    ~StatusPainter() { askToStop(); }
    StatusPainter(const StatusPainter&) = delete;
    StatusPainter& operator=(const StatusPainter&) = delete;

    /// @return false: the system has no room for the thread
    bool start();

    /// Leaves the services and lets the thread end. Safe from any thread.
    void askToStop();

    /// The same, and waits for the end; not on the thread itself.
    /// @return whether the thread has ended
    bool stopWithin(std::chrono::milliseconds limit);

private:
    void take(const platform::ThreadMessage& message);
    bool stopAsked();
    void pause(std::chrono::milliseconds time);
    void draw();

    const StatusChart& chart;
    const Shown shown;
    const Show show;
    std::vector<std::int32_t> levels; ///< Of the columns, the newest first.

    std::mutex mutex; ///< Guards what follows, but for the thread.
    std::condition_variable changed;
    bool stopping = false;
    Subscription load;
    Subscription spectrum;
    MessageThread thread; // ends before what it uses goes
};

} // namespace pyrux
