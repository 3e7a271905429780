#include "transport/exchange.h"

#include "core/log.h"
#include "transport/spin_briefly.h"

#include <algorithm>
#include <condition_variable>

namespace pyrux {

/// A command that waits; it lives on the stack of its caller.
struct Exchange::Pending {
    std::span<const std::uint8_t> pattern;
    Reply* reply;
    std::atomic<bool> answered{false};
    std::condition_variable changed{};
};

/// A command's place among those that wait, whatever ends it.
class Exchange::Waiting {
public:
    Waiting(Exchange& among, Pending& one) : exchange(among), entry(one)
    {
        const std::lock_guard lock(exchange.mutex);
        exchange.pending.push_back(&entry);
    }
    ~Waiting() { end(); }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    /// From now on the reply is not written to.
    void end() const
    {
        const std::lock_guard lock(exchange.mutex);
        std::erase(exchange.pending, &entry);
    }

private:
    Exchange& exchange;
    Pending& entry;
};

_error Exchange::exchange(std::span<const std::uint8_t> command, std::span<const std::uint8_t> pattern,
                          Reply& reply)
{
    std::unique_lock turn = takeTurn();
    if (ended || !channel.isOpen())
        return E_NOT_OPEN;
    Pending entry{.pattern = pattern, .reply = &reply};
    const Waiting waiting(*this, entry);
    // A lost command shows in the missing reply.
    channel.writeWatched(command.first(std::min(command.size(), rules.reportSize)));
    if (turn) {
        lastWriteTick = clock.now();
        turn.unlock();
    }
    const auto done = [&] { return entry.answered || ended || deaf; };
    spinBriefly(done);
    {
        std::unique_lock lock(mutex);
        clock.awaitDevice(Clock::Owed::reply, lock, entry.changed, rules.wait, done);
    }
    waiting.end();
    if (entry.answered)
        return E_OK;
    if (!ended && !rules.timeoutText.empty())
        log(rules.logCategory, rules.timeoutText);
    return ended || !channel.isOpen() ? E_NOT_OPEN : E_INVALID_GET;
}

/// Waits until a command may be written; commands with a gap are written one at a time.
/// @return the lock that keeps others back; none where there is no gap
std::unique_lock<std::mutex> Exchange::takeTurn()
{
    if (rules.gap.count() == 0)
        return {};
    std::unique_lock turn(turnMutex);
    while (!ended && lastWriteTick) {
        const std::chrono::milliseconds since(clock.now() - *lastWriteTick);
        if (since >= rules.gap)
            break;
        clock.sleep(turn, turnChanged, rules.gap - since, [] { return false; });
    }
    return turn;
}

bool Exchange::deliver(const Reply& reply)
{
    const std::lock_guard lock(mutex);
    bool taken = false;
    std::size_t equal = 0;
    for (Pending* entry : pending) {
        if (!rules.runningMatchCount)
            equal = 0;
        bool match = entry->pattern.empty();
        for (std::size_t i = 0; i < entry->pattern.size() && !match; ++i)
            if (entry->pattern[i] == reply[i])
                match = ++equal == entry->pattern.size();
        if (!match)
            continue;
        *entry->reply = reply;
        entry->answered = true;
        entry->changed.notify_one();
        taken = true;
        if (rules.runningMatchCount)
            break;
    }
    return taken;
}

void Exchange::endReplies()
{
    const std::lock_guard lock(mutex);
    deaf = true;
    for (Pending* entry : pending)
        entry->changed.notify_one();
}

void Exchange::abort()
{
    const std::lock_guard lock(mutex);
    ended = true;
    for (Pending* entry : pending)
        entry->changed.notify_one();
}

} // namespace pyrux
