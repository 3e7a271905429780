#include "tests/worst/device_time.h"

#include "tests/support/scripted_device.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace pyrux {
namespace {

using std::chrono::milliseconds;
using test::Trouble;
using Lock = std::unique_lock<std::mutex>;
using Condition = std::function<bool()>;

thread_local bool measures = false;

class MeasuringClock final : public Clock {
public:
    std::uint32_t now() override { return measures ? start + std::uint32_t(elapsed) : worldNow(); }

    void sleep(Lock& lock, std::condition_variable& changed, milliseconds time, const Condition& cut) override
    {
        if (!measures) {
            changed.wait_for(lock, time, cut);
            return;
        }
        tellIfNoticed(lock);
        letPass(lock, int(time.count()), cut);
    }

    void wait(Lock& lock, std::condition_variable& changed, const Condition& until) override
    {
        changed.wait(lock, until);
    }

    bool awaitDevice(Owed owed, Lock& lock, std::condition_variable& changed, milliseconds limit,
                     const Condition& done) override
    {
        const Trouble kind = trouble;
        if (kind == Trouble::none)
            return Clock::awaitDevice(owed, lock, changed, limit, done);
        if (owed == Owed::report)
            return kind == Trouble::vanished ? pauseBeside(lock, changed, int(limit.count()), done)
                                             : Clock::awaitDevice(owed, lock, changed, limit, done);
        const bool never = kind == Trouble::stalled || (kind == Trouble::silent && owed == Owed::reply);
        if (!measures)
            return never ? done() : Clock::awaitDevice(owed, lock, changed, limit, done);
        if (owed == Owed::reply)
            tellIfNoticed(lock);
        if (never || (owed == Owed::reply && kind != Trouble::late))
            return letPass(lock, int(limit.count()), done);
        // It comes for certain; only a late reply costs something.
        const bool came = Clock::awaitDevice(owed, lock, changed, test::patience, done);
        if (!came || kind == Trouble::late)
            elapsed += int(limit.count());
        return came;
    }

    void begin(Trouble which, std::function<void()> toTell)
    {
        start = worldNow();
        elapsed = 0;
        notice = std::move(toTell);
        measures = true;
        trouble = which;
    }

    int end()
    {
        measures = false;
        trouble = Trouble::none;
        wake([](const Sleeper&) { return true; });
        return elapsed;
    }

private:
    /// A reader that pauses.
    struct Sleeper {
        std::mutex* lock;
        std::condition_variable* changed;
        int until;
        bool* due;
    };

    static std::uint32_t worldNow()
    {
        using namespace std::chrono;
        return std::uint32_t(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    }

    void tellIfNoticed(Lock& lock)
    {
        if (trouble != Trouble::noticed || !notice)
            return;
        const auto tell = std::exchange(notice, nullptr);
        lock.unlock();
        tell();
        lock.lock();
    }

    /// Lets the measuring thread's time pass.
    bool letPass(Lock& lock, int ms, const Condition& done)
    {
        const int until = elapsed + ms;
        while (!done()) {
            if (elapsed == until)
                return false;
            if (trouble != Trouble::vanished) {
                elapsed = until;
                continue;
            }
            lock.unlock();
            if (const std::optional<int> next = nextEnd()) {
                elapsed = std::min(*next, until);
                wake([&](const Sleeper& one) { return one.until <= elapsed; });
            }
            std::this_thread::yield(); // to the reader, which ends or sleeps again
            lock.lock();
        }
        return true;
    }

    bool pauseBeside(Lock& lock, std::condition_variable& changed, int ms, const Condition& cut)
    {
        bool due = false;
        {
            const std::lock_guard guard(mutex);
            sleepers.push_back({lock.mutex(), &changed, elapsed + ms, &due});
        }
        changed.wait(lock, [&] { return due || cut() || trouble != Trouble::vanished; });
        const std::lock_guard guard(mutex);
        std::erase_if(sleepers, [&](const Sleeper& one) { return one.due == &due; });
        return cut();
    }

    std::optional<int> nextEnd()
    {
        const std::lock_guard guard(mutex);
        const auto first = std::ranges::min_element(sleepers, {}, &Sleeper::until);
        return first == sleepers.end() ? std::nullopt : std::optional(first->until);
    }

    /// None of them leaves but for this: objects are closed outside measurements.
    template <class Which>
    void wake(Which which)
    {
        std::vector<Sleeper> woken;
        {
            const std::lock_guard guard(mutex);
            std::ranges::copy_if(sleepers, std::back_inserter(woken), which);
            std::erase_if(sleepers, which);
        }
        for (const Sleeper& one : woken) {
            const std::lock_guard guard(*one.lock);
            *one.due = true;
            one.changed->notify_all();
        }
    }

    std::atomic<Trouble> trouble{Trouble::none};
    std::atomic<int> elapsed{0}; ///< Changed by the measuring thread alone.
    std::uint32_t start = 0;
    std::function<void()> notice;
    std::mutex mutex; ///< Of `sleepers`; taken after the lock of whoever sleeps.
    std::vector<Sleeper> sleepers;
};

MeasuringClock& measuringClock()
{
    static auto& clock = *new MeasuringClock; // never destroyed, as the library's own
    return clock;
}

} // namespace

Clock& Clock::steady()
{
    return measuringClock();
}

Clock& Clock::current()
{
    return measuringClock();
}

namespace test {

void DeviceTime::begin(Trouble trouble, std::function<void()> notice)
{
    measuringClock().begin(trouble, std::move(notice));
}

int DeviceTime::end()
{
    return measuringClock().end();
}

} // namespace test
} // namespace pyrux
