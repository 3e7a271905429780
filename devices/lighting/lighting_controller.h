#pragma once

#include "core/models.h"
#include "devices/linked_device.h"
#include "pyrux/error.h"
#include "transport/operation_requests.h"
#include "transport/report.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace pyrux {

/// What tells one lighting controller from another, below its commands.
struct ControllerTraits {
    const ModelRow& model;
    std::string_view failureText{}; ///< As in `LinkRules`.
    usbHid::Mode mode = usbHid::Mode::timed;
    std::int32_t paceMs = slowPaceMs;     ///< Of the queue, from the start.
    std::chrono::milliseconds wait{1000}; ///< For a reply.
    std::chrono::milliseconds gap{0};     ///< Between requests; 0 for none.

    static constexpr std::int32_t slowPaceMs = 100; ///< While the device plays its own effects.
    static constexpr std::int32_t fastPaceMs = 10;  ///< While the host drives the lights.
};

LinkRules linkRules(const ControllerTraits& traits);

/// What the lighting controllers share, above their link.
class LightingController : public LinkedDevice {
protected:
    LightingController(const std::string& path, const ControllerTraits& traits)
        : LinkedDevice(path, linkRules(traits))
    {
    }

    CmdQueue& queue() { return link.queue(); }

    void write(const Report& command) { link.write(command); }
    void write(std::initializer_list<Report> commands) { link.write(commands); }

    /// Asks for what an operation reads and hands it to `take`.
    template <class Take>
    _error get(const Report& command, Take take)
    {
        return readOperation(link, command, take);
    }

    /// The same where the reply names another command.
    template <class Take>
    _error get(const Report& command, std::uint8_t answer, Take take)
    {
        return readOperation(link, command, answer, take);
    }
};

/// A controller with a callback, which gets a record by value.
template <class Record>
class NotifyingController : public NotifyingDevice<void (*)(Record), LightingController> {
protected:
    using Event = DeviceEvent<Record>;

    /// Which of the two a report goes to that would suit both.
    enum class First { requests, events };

    NotifyingController(const std::string& path, const ControllerTraits& traits,
                        std::span<const Event> events, First first = First::requests)
        : NotifyingDevice<void (*)(Record), LightingController>(path, traits), table(events), first(first)
    {
        if (this->link.opened())
            this->link.start([this](const Reply& report) { take(report); });
    }

    ~NotifyingController() override { this->link.stop(); }

private:
    void take(const Reply& report)
    {
        if (first == First::events)
            this->takeEvents(table, report) || this->link.deliver(report);
        else
            this->link.deliver(report) || this->takeEvents(table, report);
    }

    const std::span<const Event> table;
    const First first;
};

} // namespace pyrux
