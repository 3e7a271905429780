#pragma once

#include "core/models.h"
#include "pyrux/error.h"
#include "transport/cmd_queue.h"
#include "transport/exchange.h"
#include "transport/reader_thread.h"
#include "transport/report.h"
#include "transport/usb_hid.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pyrux {

/// What tells the link of one model from another's.
struct LinkRules {
    const ModelRow& model;          ///< Whose category the log lines have.
    std::string_view failureText{}; ///< Told when the reader gives up; empty: "<model> USB fail".
    bool failureLogged = true;      ///< It is logged; otherwise it goes to the debug output alone.
    usbHid::Mode mode = usbHid::Mode::blocking;
    std::size_t reportSize = Report::size; ///< Bytes of a command and of a read, the report id included.
    std::chrono::milliseconds wait{2000};  ///< For a reply.
    std::string_view timeoutText = "USB RX timeout"; ///< Logged when there is none.
    bool runningMatchCount = false;                  ///< See `ExchangeRules`.
    std::chrono::milliseconds gap{0};                ///< Between commands; 0 for none.
    int survivedFailures = 30;                       ///< Failed reads; the next one ends the reader.
    /// The queue's pause between frames, in ms; none: the device has no queue.
    std::optional<std::int32_t> paceMs{};
};

/// One HID path of a device: the channel, commands that wait for their reply, plain writes, a queue for
/// frames, the reader, and how all this ends. A protocol object holds one for each of its paths.
class DeviceLink {
public:
    /// Opens the path. The reader stands still until `start`.
    DeviceLink(const std::string& path, const LinkRules& rules, Clock& clock = Clock::current());
    ~DeviceLink() { reader.stop(); }
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;

    /// Whether the path could be opened.
    bool opened() const { return usable; }

    /// Whether commands can still be sent.
    bool isOpen() const { return channel.isOpen(); }

    /// Whether the device has gone.
    bool unplugged() const { return gone; }

    /// Starts the reader; `take` gets each input report on its thread. Whoever gives one that uses what goes
    /// before the link stops the reader with `stop` first. Where the system has no room for a thread, the
    /// path counts as one that could not be opened.
    void start(std::function<void(const Reply&)> take);
    void stop() { reader.stop(); }

    /// Gives an input report to the commands that wait for it.
    /// @return whether one took it
    bool deliver(const Reply& reply) { return exchange.deliver(reply); }

    static constexpr std::size_t plainMatch = 2; ///< Bytes of a command that its reply repeats, as a rule.

    /// Sends a command and waits for a reply that repeats its first bytes.
    /// @return E_OK, with the reply; E_INVALID_GET: none in time; E_NOT_OPEN
    template <std::size_t size>
    _error get(const ReportOf<size>& command, Reply& reply, std::size_t matchLength = plainMatch)
    {
        return exchange.transact(command, matchLength, reply);
    }

    /// The same for a reply with a beginning of its own.
    template <std::size_t size>
    _error get(const ReportOf<size>& command, std::span<const std::uint8_t> pattern, Reply& reply)
    {
        return exchange.transact(command, pattern, reply);
    }

    /// Sends a command whose reply does not matter but for coming.
    /// @return E_OK; E_INVALID_SET: none in time; E_NOT_OPEN
    template <std::size_t size>
    _error set(const ReportOf<size>& command, std::size_t matchLength = plainMatch)
    {
        Reply reply;
        const _error result = get(command, reply, matchLength);
        return result == E_INVALID_GET ? E_INVALID_SET : result;
    }

    /// A plain write, with a result as of `usbHid::writeWatched`.
    template <std::size_t size>
    _error send(const ReportOf<size>& command)
    {
        return channel.writeWatched(command.bytes().first(std::min(size, reportSize)));
    }

    /// Plain writes. Deliberate: their results are not looked at; a lost command shows in the next request.
    void write(const Report& command) { send(command); }
    void write(std::initializer_list<Report> commands);

    /// The queue for frames. Only of a link that has one.
    CmdQueue& queue() { return *frames; }

    /// Whether commands end at once, because of `abort`.
    bool aborted() const { return exchange.aborted(); }

    // The end, as `ProtocolObject` has it.

    void setUnplugged(bool unplugged);
    void abort() { exchange.abort(); }

    /// Lets commands go out again after `abort`, for a goodbye.
    void resume() { exchange.resume(); }

    /// Ends the threads, all at the same time, and closes the channel.
    /// @return false: one still runs at the deadline
    bool endThreads(std::chrono::steady_clock::time_point deadline);

    usbHid channel;
    Exchange exchange;

private:
    const std::size_t reportSize;
    std::atomic<bool> gone{false};
    bool usable = false;
    std::optional<CmdQueue> frames; // goes before the channel that it writes to
    ReaderThread reader;
};

} // namespace pyrux
