#pragma once

#include "pyrux/error.h"
#include "transport/clock.h"
#include "transport/report.h"
#include "transport/usb_hid.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace pyrux {

/// How a family of devices pairs commands with replies.
struct ExchangeRules {
    std::chrono::milliseconds wait{2000};  ///< Time for a reply, after the write.
    std::string_view timeoutText{};        ///< Logged when no reply comes; empty: nothing is.
    int logCategory = 0;                   ///< Category of that line.
    std::size_t reportSize = Report::size; ///< Bytes of a command that go out, the report id included.
    /// Deliberate where it is set: the count of equal bytes is not taken back between waiting commands, so
    /// that a match may begin in one and end in the next; a full match ends the pass.
    bool runningMatchCount = false;
    /// Least time between the end of one command's write and the next command; 0 for none.
    std::chrono::milliseconds gap{0};
};

/// Commands that wait for their reply on one channel. A host's thread sends and waits in `transact`; the
/// channel's reader hands every input report to `deliver`.
class Exchange {
public:
    Exchange(usbHid& channel, const ExchangeRules& rules, Clock& clock = Clock::current())
        : channel(channel), rules(rules), clock(clock)
    {
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    /// Sends a command and waits for a reply that begins with the command's first `matchLength` payload
    /// bytes.
    /// @return E_OK, with the reply; E_INVALID_GET: none in time; E_NOT_OPEN: the channel is, or was
    /// meanwhile, closed
    template <std::size_t size>
    _error transact(const ReportOf<size>& command, std::size_t matchLength, Reply& reply)
    {
        const auto payload = command.payload();
        return exchange(command.bytes(), payload.first(std::min(matchLength, payload.size())), reply);
    }

    /// The same for a reply with a beginning of its own.
    template <std::size_t size>
    _error transact(const ReportOf<size>& command, std::span<const std::uint8_t> pattern, Reply& reply)
    {
        return exchange(command.bytes(), pattern, reply);
    }

    /// Gives an input report to the commands that wait for it. Several may take one reply.
    /// @return whether one did
    bool deliver(const Reply& reply);

    /// Lets every waiting command, and each one that comes later, end with E_NOT_OPEN, until `resume`.
    void abort();
    void resume() { ended = false; }
    bool aborted() const { return ended; }

    /// Nobody reads any more: commands, also those that wait, go on without a reply at once.
    void endReplies();

private:
    struct Pending;
    class Waiting;

    _error exchange(std::span<const std::uint8_t> command, std::span<const std::uint8_t> pattern,
                    Reply& reply);
    std::unique_lock<std::mutex> takeTurn();

    usbHid& channel;
    const ExchangeRules rules;
    Clock& clock;
    std::mutex mutex;
    std::vector<Pending*> pending;
    std::atomic<bool> ended{false};
    std::atomic<bool> deaf{false}; ///< Set by `endReplies`.

    std::mutex turnMutex; ///< Held while a command with a gap is written. Taken before `mutex`.
    std::condition_variable turnChanged;
    std::optional<std::uint32_t> lastWriteTick; ///< Kept only where there is a gap.
};

} // namespace pyrux
