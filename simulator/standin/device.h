#pragma once

#include "simulator/bus.h"
#include "simulator/standin/clock.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace pyrux::sim {

class Device;

/// One USB interface of a plugged device, and what passed on it. Guarded by the device's mutex.
struct Wire {
    int interface = 0;
    std::string path;      ///< Of its first collection.
    bool numbered = false; ///< Its reports have ids.
    std::size_t room = 64; ///< Bytes of the longest report that hid_read may give.
    std::deque<WireRecord> traffic;
    std::map<std::uint8_t, std::vector<std::uint8_t>>
        newest; ///< Payload that the host got last, by report id.
    std::atomic<int> readCalls = 0;
};

/// One entry of the enumeration: a collection of a plugged device.
struct Entry {
    Collection collection; ///< With its reports, where they are the usual ones too.
    std::string path;
    Wire* wire; ///< Lives as long as the device.

    const ReportPair* reportsWith(std::uint8_t id) const;
    bool hears(std::uint8_t id) const; ///< It has an input report with that id.
};

/// What hid_open_path gives out: the device's side of it. The input reports wait here, guarded by the
/// device's mutex.
class Handle {
public:
    Handle(std::shared_ptr<Device> of, const Entry& entry);

    const std::shared_ptr<Device> device;
    const Entry& entry; ///< Lives as long as the device.
    std::atomic<bool> nonblocking = false;
    std::atomic<const wchar_t*> error = nullptr; ///< What the last call ran into; null: nothing.
    std::atomic<int> callers = 0;                ///< Calls that use the handle at this moment.

    std::mutex infoMutex;
    std::shared_ptr<void> info; ///< What hid_get_device_info gave out, guarded by `infoMutex`.

private:
    friend class Device;

    /// As many as the kernel keeps, in turn; the oldest gives way.
    static constexpr std::size_t mostWaiting = 64;
    std::array<std::size_t, mostWaiting> lengths{};
    std::vector<std::uint8_t> bytes; ///< The room of the wire for each.
    std::size_t first = 0;
    std::size_t count = 0;
    std::condition_variable arrived;
    bool closed = false;
    bool read = false;     ///< Somebody has.
    bool caughtUp = false; ///< And has come back since the last report.
};

/// A plugged-in device: a firmware model, its conduct, the handles to it and the traffic on its wire.
class Device : public std::enable_shared_from_this<Device> {
public:
    Device(std::shared_ptr<Firmware> behind, std::string plug);

private:
    std::list<Wire> wires; ///< The interfaces, by number.
    int controlInterface;

public:
    const std::string instance; ///< The piece of its paths that tells this plug from others.
    const std::vector<Entry> entries;
    const std::shared_ptr<Firmware> model;

    /// Connects the model and gives it power.
    void plug();
    /// False: it had gone before.
    bool unplug();
    bool isPlugged() const;
    /// The entry of a path, in any case. Null: there is none.
    const Entry* entryOf(const std::string& path) const;
    /// The path of the first collection on the control interface.
    const std::string& controlPath() const;

    /// Null: the device has gone. Each open handle must be closed before it is let go.
    std::shared_ptr<Handle> open(const Entry& entry);
    void close(Handle& handle);

    /// hidapi's results: bytes written, bytes read, -1 with an error text left in the handle.
    int write(Handle& handle, Bytes report);
    int read(Handle& handle, std::span<std::uint8_t> buffer, int limitMs);
    int inputReport(Handle& handle, std::span<std::uint8_t> buffer);

    void setConduct(const Conduct& next);
    void releaseWrites();
    /// Sends an input report as hid_read is to give it.
    void deliver(Wire& wire, Bytes report);
    std::vector<WireRecord> takeTraffic(Wire& wire, std::size_t least, std::chrono::milliseconds limit);
    bool awaitReader(std::chrono::milliseconds limit);

private:
    using Lock = std::unique_lock<std::mutex>;

    std::vector<Entry> makeEntries(const Identity& identity);
    Wire& wireOf(int interface);
    bool waitForTurn(Lock& lock, std::uint64_t ticket);
    bool stall(Lock& lock, std::uint64_t releasesBefore);
    const wchar_t* refusal() const;
    void fromModel(const Channel& from, Bytes payload);
    void shape(std::vector<std::uint8_t>& report);
    void deliver(const Lock& lock, Wire& wire, Bytes report);
    void record(const Lock& lock, Wire& wire, WireRecord::Direction direction, Bytes report);

    mutable std::mutex mutex;
    bool plugged = true;
    Conduct conduct;
    std::vector<Handle*> handles; ///< Those that are open.

    // Writes are taken one at a time, in the order in which they came.
    std::condition_variable turns;
    std::uint64_t nextTicket = 0;
    std::uint64_t servedTicket = 0;
    std::uint64_t releases = 0;

    std::condition_variable recorded;
    std::condition_variable readersCame; ///< One has found nothing to read.
    std::uint32_t noise = 0x2545F491;
};

/// Threads in hid_write that a stalled device holds, on all devices.
int stalledWriters();
bool awaitStalledWriters(int least, std::chrono::milliseconds limit);

using Trace = void (*)(const char* path, int direction, const unsigned char* bytes, int length);
/// After the return no other callback is running.
void setTrace(Trace callback);

} // namespace pyrux::sim
