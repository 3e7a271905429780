#include "transport/reader_thread.h"

#include "core/boundary.h"
#include "platform/threads.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace pyrux {

namespace {

/// A polled channel on which nothing has been found for so long is waited for, where the system can do that.
constexpr std::chrono::milliseconds silentFor{100};

} // namespace

bool ReaderThread::start(std::function<void(const Reply&)> take, std::function<void()> ended)
{
    running = true;
    finished = false;
    thread = platform::startThread([this, take = std::move(take), ended = std::move(ended)] {
        run(take);
        running = false;
        if (ended)
            ended();
        const std::lock_guard lock(mutex);
        finished = true;
        changed.notify_all();
    });
    if (thread.joinable())
        return true;
    running = false;
    finished = true;
    channel.closeChannel();
    return false;
}

void ReaderThread::askToStop()
{
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    changed.notify_all();
    channel.endReads();
}

void ReaderThread::stop()
{
    askToStop();
    if (thread.joinable())
        thread.join();
}

bool ReaderThread::stopWithin(std::chrono::milliseconds limit)
{
    askToStop();
    if (std::this_thread::get_id() == thread.get_id())
        return false;
    {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, limit, [&] { return finished; }))
            return false;
    }
    stop();
    return true;
}

void ReaderThread::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(mutex);
    clock.awaitDevice(Clock::Owed::report, lock, changed, time, [&] { return stopping; });
}

void ReaderThread::reportFailure() const
{
    if (rules.logCategory)
        log(*rules.logCategory, rules.failureText);
    else
        debugText(rules.failureText);
}

void ReaderThread::run(const std::function<void(const Reply&)>& take)
{
    int failures = 0;
    std::chrono::milliseconds silence{0}; ///< Of a polled channel.
    bool marked = false;
    for (;;) {
        std::array<std::uint8_t, Reply::size> buffer{};
        const std::span<std::uint8_t> room =
            std::span(buffer).first(std::min(rules.reportSize, buffer.size()));
        const int count = channel.readBlocking(room);
        if (count == nothingRead)
            return;
        if (count > 0) {
            silence = {};
            marked = false;
            attempt([&] { take(Reply(room.first(std::size_t(count)))); }); // at worst a report is lost
        } else if (count == 0) {
            if (marked)
                channel.awaitInput();
            else
                pause(rules.polledPause);
            silence =
                std::min(silence + std::max(rules.polledPause, std::chrono::milliseconds(1)), silentFor);
            marked = silence == silentFor && channel.markInput();
        } else if (failures == rules.survivedFailures) {
            reportFailure();
            return;
        } else {
            ++failures;
            pause(rules.failurePause);
        }
    }
}

} // namespace pyrux
