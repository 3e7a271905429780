#pragma once

#include "core/log.h"
#include "core/models.h"
#include "devices/protocol_object.h"
#include "pyrux/error.h"
#include "transport/device_events.h"
#include "transport/device_link.h"
#include "transport/notify.h"
#include "transport/report.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

namespace pyrux {

/// A protocol object on one link: its life cycle is the link's.
class LinkedDevice : public ProtocolObject {
public:
    std::int32_t openFailed() const override { return link.opened() ? 0 : 1; }
    void setUnplugged(bool gone) override { link.setUnplugged(gone); }
    void noteClosed() override { closed = true; }
    void abort() override { link.abort(); }
    bool endThreads(std::chrono::steady_clock::time_point deadline) override
    {
        return link.endThreads(deadline);
    }

protected:
    LinkedDevice(const std::string& path, const LinkRules& rules, Clock& clock = Clock::current())
        : row(rules.model), link(path, rules, clock)
    {
    }

    /// Whoever gives the link's reader its reports to take stops it in its own destructor.
    ~LinkedDevice() override = default;

    const ModelRow& row;
    DeviceLink link;
    std::atomic<bool> closed{false}; ///< The host object is closed.
};

/// A linked device with a callback, which takes a record by value or by address, and a table of the reports
/// that the device sends by itself.
template <class Callback, class Base = LinkedDevice>
class NotifyingDevice : public Base {
public:
    _error registerNotify(Callback callback)
    {
        notify.set(callback);
        return E_OK;
    }

    _error unRegisterNotify()
    {
        notify.set(nullptr);
        return E_OK;
    }

protected:
    using Base::Base;
    ~NotifyingDevice() override { this->link.stop(); }

    /// Tells the host. The record is valid during the call.
    template <class Record>
    void tell(Record record)
    {
        if constexpr (std::is_invocable_v<Callback, Record*>)
            notify.call(&record);
        else
            notify.call(record);
    }

    template <class Record>
    void tell(const DeviceEvent<Record>& event, const Reply& report)
    {
        if (!event.text.empty())
            debugText((event.text.front() == ' ' ? std::string(this->row.model) : std::string())
                          .append(event.text));
        if (event.acknowledgement)
            this->link.write(*event.acknowledgement);
        tell(event.record(report));
    }

    /// Tells of the events of a table that a report fits: one report may carry several.
    /// @return whether there was one
    template <class Record>
    bool takeEvents(std::span<const DeviceEvent<Record>> events, const Reply& report)
    {
        bool taken = false;
        for (const DeviceEvent<Record>& event : events) {
            if (!event.fits(report))
                continue;
            tell(event, report);
            taken = true;
        }
        return taken;
    }

    Notify<Callback> notify;
};

} // namespace pyrux
