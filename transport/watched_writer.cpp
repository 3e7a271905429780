#include "transport/watched_writer.h"

#include "core/boundary.h"
#include "platform/threads.h"
#include "transport/spin_briefly.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <thread>

namespace pyrux {

namespace {

/// Hanging writes of one channel that may exist at a time. Further ones wait for a place.
constexpr std::size_t mostStuck = 4;

} // namespace

/// A writing thread and the one report it has in hand. The thread shares the ownership, so that it can
/// outlive the channel while a write hangs.
class WatchedWriter::Worker {
public:
    /// Starts the thread. Null: the system has no room for one.
    static std::shared_ptr<Worker> start()
    {
        auto worker = std::make_shared<Worker>();
        worker->thread = platform::startThread([worker] { worker->run(); });
        return worker->thread.joinable() ? worker : nullptr;
    }

    /// Hands a report over and waits for its write to return. False when it takes too long: the thread is
    /// then left alone, and ends when the write returns.
    bool write(std::shared_ptr<HidHandle> to, std::span<const std::uint8_t> report,
               std::chrono::milliseconds limit, Clock& clock)
    {
        std::unique_lock lock(mutex);
        bytes.assign(report.begin(), report.end());
        handle = std::move(to);
        state = State::full;
        changed.notify_all();
        lock.unlock();
        spinBriefly([&] { return state == State::empty; });
        lock.lock();
        if (clock.awaitDevice(Clock::Owed::write, lock, changed, limit,
                              [&] { return state == State::empty; }))
            return true;
        ending = true;
        thread.detach();
        return false;
    }

    /// Ends a thread that has nothing in hand.
    void end()
    {
        {
            const std::lock_guard lock(mutex);
            ending = true;
        }
        changed.notify_all();
        thread.join();
    }

    /// Waits for a thread that was left alone.
    bool waitForEnd(std::chrono::milliseconds limit, Clock& clock)
    {
        std::unique_lock lock(mutex);
        return clock.awaitDevice(Clock::Owed::write, lock, changed, limit,
                                 [&] { return state == State::ended; });
    }

private:
    enum class State { empty, full, ended };

    void run()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [&] { return state == State::full || ending; });
            if (state == State::full) {
                std::shared_ptr<HidHandle> to = std::move(handle);
                lock.unlock();
                attempt([&] { to->write(bytes); }); // a lost report shows in the missing reply
                to.reset();
                lock.lock();
                state = State::empty;
            }
            if (ending)
                break;
            changed.notify_all();
            lock.unlock();
            spinBriefly([&] { return state == State::full || ending; });
            lock.lock();
        }
        state = State::ended;
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::atomic<State> state{State::empty};
    std::atomic<bool> ending{false};
    std::shared_ptr<HidHandle> handle;
    std::vector<std::uint8_t> bytes;
    std::thread thread;
};

WatchedWriter::~WatchedWriter()
{
    if (worker)
        worker->end();
}

_error WatchedWriter::write(const std::shared_ptr<HidHandle>& handle, std::span<const std::uint8_t> report)
{
    const std::lock_guard lock(turn);
    std::chrono::milliseconds left = limit;
    std::erase_if(stuck, [](const auto& one) { return one.expired(); });
    if (!worker) {
        if (stuck.size() >= mostStuck) {
            const auto deadline = std::chrono::steady_clock::now() + limit;
            const std::shared_ptr<Worker> oldest = stuck.front().lock();
            if (oldest && !oldest->waitForEnd(limit, clock))
                return E_WRITE_TIMEOUT;
            left = std::max(timeUntil(deadline), std::chrono::milliseconds(0));
        }
        worker = Worker::start();
        if (!worker)
            return E_WRITE_TIMEOUT;
    }
    stuck.reserve(stuck.size() + 1); // once a thread has been left alone it must be known
    if (worker->write(handle, report, left, clock))
        return E_OK;
    stuck.push_back(worker);
    worker.reset();
    return E_WRITE_TIMEOUT;
}

} // namespace pyrux
