#pragma once

#include "core/log.h"
#include "transport/clock.h"
#include "transport/report.h"
#include "transport/usb_hid.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace pyrux {

/// How a family of devices reads.
struct ReaderRules {
    std::size_t reportSize = 65; ///< Bytes asked for, and kept of a report.
    int survivedFailures = 30;   ///< The next failed read ends the thread; counted over its whole life.
    std::chrono::milliseconds failurePause{100}; ///< Pause after a failed read that is survived.
    std::chrono::milliseconds polledPause{0}; ///< Pause after a look at a polled channel that found nothing.
    std::string failureText{};                ///< Logged when the thread gives up.
    /// Category of that line; none: it goes to the debug output alone, whatever the log's settings.
    std::optional<int> logCategory = systemCategory;
};

/// The one thread that reads a channel.
class ReaderThread {
public:
    ReaderThread(usbHid& channel, const ReaderRules& rules, Clock& clock = Clock::steady())
        : channel(channel), rules(rules), clock(clock)
    {
    }
    ~ReaderThread() { stop(); }
    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

    /// Starts the thread; `take` gets each input report on it, `ended` is called at its end.
    /// @return false: the system has no room for a thread. The channel is closed then, so that calls end with
    ///         E_NOT_OPEN in place of waiting for replies that nobody reads
    bool start(std::function<void(const Reply&)> take, std::function<void()> ended = {});

    /// Ends the thread, which takes at most one slice of a blocking read, or as long as what it hands its
    /// reports to. Not to be called on the thread itself.
    void stop();

    /// The same, but gives up after `limit`; at once when called on the thread itself.
    /// @return whether the thread has ended
    bool stopWithin(std::chrono::milliseconds limit);

    /// Whether the thread has given up or was never started.
    bool ended() const { return !running; }

private:
    void askToStop();
    void run(const std::function<void(const Reply&)>& take);
    void pause(std::chrono::milliseconds time);
    void reportFailure() const;

    usbHid& channel;
    const ReaderRules rules;
    Clock& clock;
    std::atomic<bool> running{false};
    std::mutex mutex;
    std::condition_variable changed;
    bool stopping = false;
    bool finished = true;
    std::thread thread;
};

} // namespace pyrux
