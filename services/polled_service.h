#pragma once

#include "services/service.h"
#include "transport/clock.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace pyrux {

/// A thread that goes through a cycle, sleeps, and so on.
class PollingThread {
public:
    /// The first cycle comes at once. What `cycle` uses belongs to it.
    PollingThread(std::chrono::milliseconds period, Clock& clock, std::function<void()> cycle);

    /// Ends the thread: at once while it sleeps. A cycle that hangs is given 1000 ms; the thread then ends by
    /// itself after it.
    ~PollingThread();
    PollingThread(const PollingThread&) = delete;
    PollingThread& operator=(const PollingThread&) = delete;

private:
    struct State;
    std::shared_ptr<State> state;
    std::thread thread;
};

/// A service that takes a sample each period and posts it.
template <ServiceMessage number>
class PolledService : public Service {
public:
    /// Takes a sample, on the service's thread. No value: nothing is posted in this period.
    using Source = std::function<std::optional<Payload<number>>()>;

    PolledService(std::string serviceName, std::chrono::milliseconds period, Clock& clock, Source source)
        : PolledService(std::move(serviceName), period, clock, std::move(source),
                        std::make_shared<Outlet<number>>())
    {
    }

private:
    PolledService(std::string serviceName, std::chrono::milliseconds period, Clock& clock, Source source,
                  std::shared_ptr<Outlet<number>> outlet)
        : Service(std::move(serviceName), outlet),
          polling(period, clock, [outlet, source = std::move(source)] {
              if (const auto sample = source())
                  outlet->post(*sample);
          })
    {
    }

    PollingThread polling;
};

} // namespace pyrux
