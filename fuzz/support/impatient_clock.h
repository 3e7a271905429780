#pragma once

#include "transport/clock.h"

#include <atomic>
#include <string>

namespace pyrux::fuzz {

/// A clock on which no time is lost: sleeps are over at once, and so is a wait for a device that has nothing
/// left to say. The device is a simulated one, which says all that it has to say while it takes a command.
class ImpatientClock final : public Clock {
public:
    /// The device that is waited for. Lives as long as the clock.
    void watch(const std::string& path) { watched = &path; }

    std::uint32_t now() override { return time; }
    void sleep(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::milliseconds length, const std::function<bool()>& cut) override;
    void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
              const std::function<bool()>& until) override;
    bool awaitDevice(Owed owed, std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                     std::chrono::milliseconds limit, const std::function<bool()>& done) override;

private:
    std::atomic<const std::string*> watched{nullptr};
    std::atomic<std::uint32_t> time{1'000'000};
};

} // namespace pyrux::fuzz
