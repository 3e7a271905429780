#pragma once

#include "core/log.h"
#include "core/models.h"
#include "devices/lighting/judged_requests.h"
#include "pyrux/error.h"
#include "transport/cmd_queue.h"
#include "transport/exchange.h"
#include "transport/notify.h"
#include "transport/reader_thread.h"
#include "transport/report.h"
#include "transport/usb_hid.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace pyrux {

/// What tells one lighting controller from another, below its commands.
struct ControllerTraits {
    const ModelRow& model;
    std::string_view failureText; ///< Logged when the reader gives up.
    usbHid::Mode mode = usbHid::Mode::polled;
    std::int32_t paceMs = slowPaceMs;     ///< Of the queue, from the start.
    std::chrono::milliseconds wait{1000}; ///< For a reply.
    std::chrono::milliseconds gap{0};     ///< Between requests; 0 for none.

    static constexpr std::int32_t slowPaceMs = 100; ///< While the device plays its own effects.
    static constexpr std::int32_t fastPaceMs = 10;  ///< While the host drives the lights.
};

/// What the lighting controllers share: the channel, requests and plain writes, a queue for frames, the
/// reader, and how all this ends.
class LightingController {
public:
    LightingController(const LightingController&) = delete;
    LightingController& operator=(const LightingController&) = delete;

    // Life cycle, for the host object.
    bool openFailed() const { return !opened; }
    void setUnplugged(bool gone);
    void noteClosed() {}
    void abort() { exchange.abort(); }
    void sayGoodbye() {}
    bool endThreads(std::chrono::milliseconds limit);

protected:
    LightingController(const std::string& path, const ControllerTraits& traits);

    /// Whoever gives the reader its reports to take stops it in its own destructor.
    ~LightingController() = default;

    /// A plain write. Deliberate: its result is not looked at; a lost command shows in the next request.
    void write(const Report& command) { channel.writeWatched(command.bytes()); }
    void write(std::initializer_list<Report> commands);

    /// Sends a request and waits for a reply that repeats its first two bytes.
    _error request(const Report& command, Reply& reply) { return exchange.transact(command, 2, reply); }

    /// Sends a request of the form `80 cmd op` and hands its reply to `take`, if that begins `80 answer 03`.
    /// Deliberate: what `take` sets stays as it was for another reply, and that is no error.
    template <class Take>
    _error get(const Report& command, std::uint8_t answer, Take take)
    {
        Reply reply;
        const _error result = request(command, reply);
        if (!result && reply.begins({0x80, answer, 0x03}))
            take(reply);
        return result;
    }
    template <class Take>
    _error get(const Report& command, Take take)
    {
        return get(command, command[2], take);
    }

    bool opened = false;
    std::atomic<bool> unplugged{false};
    usbHid channel;
    Exchange exchange;
    CmdQueue queue; // goes before the channel that it writes to
    ReaderThread reader;
};

/// A record as the bytes that it is made of.
template <class Record>
std::span<const std::uint8_t> bytesOf(const Record& record)
{
    return {reinterpret_cast<const std::uint8_t*>(&record), sizeof record};
}
template <class Record>
std::span<std::uint8_t> bytesOf(Record& record)
{
    return {reinterpret_cast<std::uint8_t*>(&record), sizeof record};
}

/// How a report begins.
class ReportHead {
public:
    consteval ReportHead(std::initializer_list<std::uint8_t> head) : count(head.size())
    {
        std::ranges::copy(head, bytes.begin());
    }

    bool begins(const Reply& report) const
    {
        return std::ranges::equal(std::span(bytes).first(count), report.part(0, count));
    }

private:
    std::array<std::uint8_t, 4> bytes{};
    std::size_t count;
};

/// A report that a controller sends by itself.
template <class Record>
struct ControllerEvent {
    ReportHead head;
    std::string_view text; ///< Written to the debug output; empty: nothing is.
    Record (*record)(const Reply& report);
};

/// A controller with a callback, which gets a record by value.
template <class Record>
class NotifyingController : public LightingController {
public:
    using Callback = void (*)(Record);

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
    /// Which of the two a report goes to that would suit both.
    enum class First { requests, events };

    NotifyingController(const std::string& path, const ControllerTraits& traits,
                        std::span<const ControllerEvent<Record>> events, First first = First::requests)
        : LightingController(path, traits), table(events), first(first)
    {
        if (opened)
            reader.start([this](const Reply& report) { take(report); });
    }

    ~NotifyingController() { reader.stop(); }

    Notify<Callback> notify;

private:
    void take(const Reply& report)
    {
        if (first == First::events)
            takeEvent(report) || exchange.deliver(report);
        else
            exchange.deliver(report) || takeEvent(report);
    }

    bool takeEvent(const Reply& report)
    {
        for (const ControllerEvent<Record>& event : table) {
            if (!event.head.begins(report))
                continue;
            if (!event.text.empty())
                debugText(event.text);
            notify.call(event.record(report));
            return true;
        }
        return false;
    }

    const std::span<const ControllerEvent<Record>> table;
    const First first;
};

} // namespace pyrux
