#pragma once

#include "devices/keyboards/status_chart.h"
#include "platform/thread_messages.h"
#include "services/service.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace pyrux {

/// Charts the processor load or the spectrum of what is played, on a thread of its own that is told by the
/// services.
class StatusEffect {
public:
    using Shown =
        std::function<std::optional<std::uint32_t>()>; ///< The type to chart; none: the effect is off.
    using Show = std::function<void(std::span<const std::uint8_t> frame)>;

    /// @param shown, show  called on the thread
    StatusEffect(const StatusChart& chart, Shown shown, Show show);
    ~StatusEffect();
    StatusEffect(const StatusEffect&) = delete;
    StatusEffect& operator=(const StatusEffect&) = delete;

    /// The thread, for messages to it.
    platform::ThreadId id() const { return threadId; }

    /// Leaves the services and lets the thread end. Safe from any thread.
    void askToStop();

    /// The same, and waits for the end; not on the thread itself.
    /// @return whether the thread has ended
    bool stopWithin(std::chrono::milliseconds limit);

private:
    void run();
    void take(const platform::ThreadMessage& message);
    void draw();
    bool stopAsked();

    const StatusChart& chart;
    const Shown shown;
    const Show show;
    std::vector<std::int32_t> levels; ///< Of the columns, the newest first.

    std::mutex mutex; ///< Guards what follows.
    std::condition_variable changed;
    bool ready = false;
    bool stopping = false;
    bool finished = false;
    platform::ThreadId threadId = 0;
    Subscription load;
    Subscription spectrum;
    std::thread thread;
};

} // namespace pyrux
