#include "simulator/standin/device.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

namespace pyrux::sim {

namespace {

constexpr std::size_t mostTraffic = 65536;

/// A wait longer than this is one without end; it keeps sums of times in range.
constexpr std::chrono::milliseconds longest = std::chrono::hours(24);

/// The threads that wait inside hid_write.
struct Stalled {
    std::mutex mutex;
    std::condition_variable changed;
    int threads = 0;
};

Stalled& stalled()
{
    // Never destroyed: a writer may hang to the end of the process.
    static auto& one = *new Stalled;
    return one;
}

class StalledHere {
public:
    StalledHere() { change(1); }
    ~StalledHere() { change(-1); }
    StalledHere(const StalledHere&) = delete;
    StalledHere& operator=(const StalledHere&) = delete;

private:
    static void change(int by)
    {
        Stalled& all = stalled();
        {
            const std::lock_guard lock(all.mutex);
            all.threads += by;
        }
        all.changed.notify_all();
    }
};

std::mutex& traceMutex()
{
    static auto& mutex = *new std::mutex;
    return mutex;
}

std::atomic<Trace> trace = nullptr;

std::string hex4(unsigned value)
{
    char text[5];
    std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
    return text;
}

std::string twoDigits(int value)
{
    char text[12];
    std::snprintf(text, sizeof text, "%02d", value);
    return text;
}

bool equalWithoutCase(const std::string& a, const std::string& b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

int failed(Handle& handle, const wchar_t* text)
{
    handle.error = text;
    return -1;
}

int done(Handle& handle, std::size_t bytes)
{
    handle.error = nullptr;
    return int(bytes);
}

constexpr const wchar_t* gone = L"No such device";
constexpr const wchar_t* ioError = L"Input/output error";

} // namespace

int stalledWriters()
{
    const std::lock_guard lock(stalled().mutex);
    return stalled().threads;
}

bool awaitStalledWriters(int least, std::chrono::milliseconds limit)
{
    std::unique_lock lock(stalled().mutex);
    return stalled().changed.wait_for(lock, std::min(limit, longest),
                                      [&] { return stalled().threads >= least; });
}

void setTrace(Trace callback)
{
    const std::lock_guard lock(traceMutex());
    trace = callback;
}

const ReportPair* Entry::reportsWith(std::uint8_t id) const
{
    const auto found = std::ranges::find(collection.reports, id, &ReportPair::id);
    return found == collection.reports.end() ? nullptr : &*found;
}

bool Entry::hears(std::uint8_t id) const
{
    const ReportPair* const pair = reportsWith(id);
    return pair && pair->input > 0;
}

Handle::Handle(std::shared_ptr<Device> of, const Entry& opened)
    : device(std::move(of)), entry(opened), bytes(mostWaiting * opened.wire->room)
{
}

Device::Device(std::shared_ptr<Firmware> behind, std::string plug)
    : controlInterface(behind->identity().controlInterface), instance(std::move(plug)),
      entries(makeEntries(behind->identity())), model(std::move(behind))
{
}

Wire& Device::wireOf(int interface)
{
    const auto found = std::ranges::find(wires, interface, &Wire::interface);
    if (found != wires.end())
        return *found;
    Wire& made = wires.emplace_back();
    made.interface = interface;
    return made;
}

/// The entries with paths such as
/// \\?\HID#VID_3A7E&PID_012F&MI_01&Col01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}.
std::vector<Entry> Device::makeEntries(const Identity& identity)
{
    std::map<int, int> collections;
    for (const Collection& one : identity.collections)
        ++collections[one.interface];
    std::map<int, int> seen;
    std::vector<Entry> made;
    for (const Collection& one : identity.collections) {
        std::string path = "\\\\?\\HID#VID_" + hex4(identity.vid) + "&PID_" + hex4(identity.pid);
        if (one.interface >= 0)
            path += "&MI_" + twoDigits(one.interface);
        if (collections[one.interface] > 1)
            path += "&Col" + twoDigits(++seen[one.interface]);
        path += "#" + instance + "#{4d1e55b2-f16f-11cf-88cb-001111000030}";
        Wire& wire = wireOf(one.interface);
        if (wire.path.empty())
            wire.path = path;
        Entry entry{one, std::move(path), &wire};
        const auto reports = reportsOf(identity, one);
        entry.collection.reports.assign(reports.begin(), reports.end());
        for (const ReportPair& pair : entry.collection.reports) {
            wire.numbered = wire.numbered || pair.id != 0;
            wire.room = std::max(wire.room, pair.input + (pair.id != 0));
        }
        made.push_back(std::move(entry));
    }
    return made;
}

void Device::plug()
{
    model->powerOn();
    model->connect([device = weak_from_this()](const Channel& from, Bytes payload) {
        if (const auto here = device.lock())
            here->fromModel(from, payload);
    });
}

bool Device::unplug()
{
    {
        const Lock lock(mutex);
        turns.notify_all();
        for (Handle* handle : handles)
            handle->arrived.notify_all();
        if (!std::exchange(plugged, false))
            return false;
    }
    model->powerOff();
    return true;
}

bool Device::isPlugged() const
{
    const Lock lock(mutex);
    return plugged;
}

const Entry* Device::entryOf(const std::string& path) const
{
    for (const Entry& entry : entries)
        if (equalWithoutCase(entry.path, path))
            return &entry;
    return nullptr;
}

const std::string& Device::controlPath() const
{
    const auto found = std::ranges::find(wires, controlInterface, &Wire::interface);
    return found == wires.end() ? entries.front().path : found->path;
}

std::shared_ptr<Handle> Device::open(const Entry& entry)
{
    auto handle = std::make_shared<Handle>(shared_from_this(), entry);
    const Lock lock(mutex);
    if (!plugged)
        return nullptr;
    handles.push_back(handle.get());
    return handle;
}

void Device::close(Handle& handle)
{
    const Lock lock(mutex);
    handle.closed = true;
    handle.arrived.notify_all();
    std::erase(handles, &handle);
}

/// Waits until the writes before are through. False: the device has gone.
bool Device::waitForTurn(Lock& lock, std::uint64_t ticket)
{
    if (plugged && servedTicket != ticket) {
        const StalledHere here;
        turns.wait(lock, [&] { return !plugged || servedTicket == ticket; });
    }
    return plugged;
}

/// Waits as long as a write takes. False: the device has gone.
bool Device::stall(Lock& lock, std::uint64_t releasesBefore)
{
    if (conduct.writeTime.count() > 0 && plugged) {
        const auto until = Clock::now() + std::min(conduct.writeTime, longest);
        const StalledHere here;
        turns.wait_until(lock, until, [&] { return !plugged || releases != releasesBefore; });
    }
    return plugged;
}

/// Why a write is not taken; null: it is.
const wchar_t* Device::refusal() const
{
    return !plugged ? gone : conduct.refuseWrites ? ioError : nullptr;
}

int Device::write(Handle& handle, Bytes report)
{
    if (report.empty())
        return failed(handle, L"Zero buffer/length");
    Wire& wire = *handle.entry.wire;
    // Reports without ids have a byte in its place, which goes nowhere.
    const std::uint8_t id = wire.numbered ? report[0] : 0;
    const ReportPair* const taken = handle.entry.reportsWith(id);
    Lock lock(mutex);
    if (const wchar_t* text = refusal())
        return failed(handle, text);
    if (!taken || taken->output == 0)
        return failed(handle, ioError);
    const std::uint64_t releasesBefore = releases;
    // Whoever leaves early because the device has gone need not pass its turn on: all others leave too.
    if (!waitForTurn(lock, nextTicket++) || !stall(lock, releasesBefore))
        return failed(handle, gone);
    const wchar_t* text = refusal();
    if (!text) {
        record(lock, wire, WireRecord::Direction::toDevice, report);
        lock.unlock();
        const Bytes payload = report.subspan(1);
        model->outputOn({wire.interface, id}, payload.first(std::min(payload.size(), taken->output)));
        lock.lock();
    }
    ++servedTicket;
    if (nextTicket != servedTicket)
        turns.notify_all();
    return text ? failed(handle, text) : done(handle, report.size());
}

int Device::read(Handle& handle, std::span<std::uint8_t> buffer, int limitMs)
{
    ++handle.entry.wire->readCalls;
    Lock lock(mutex);
    handle.read = true;
    if (handle.count == 0) {
        handle.caughtUp = true;
        readersCame.notify_all();
    }
    const auto failing = [&] { return conduct.failReads || conduct.readFailures > 0; };
    const auto over = [&] { return !plugged || handle.closed || failing() || handle.count > 0; };
    if (limitMs < 0)
        handle.arrived.wait(lock, over);
    else if (limitMs > 0)
        handle.arrived.wait_for(lock, std::chrono::milliseconds(limitMs), over);
    if (!plugged || handle.closed)
        return failed(handle, gone);
    if (failing()) {
        conduct.readFailures -= conduct.readFailures > 0;
        return failed(handle, ioError);
    }
    if (handle.count == 0)
        return done(handle, 0);
    const std::size_t length = std::min(handle.lengths[handle.first], buffer.size());
    std::copy_n(handle.bytes.begin() + std::ptrdiff_t(handle.first * handle.entry.wire->room), length,
                buffer.begin());
    handle.first = (handle.first + 1) % Handle::mostWaiting;
    --handle.count;
    return done(handle, length);
}

int Device::inputReport(Handle& handle, std::span<std::uint8_t> buffer)
{
    Wire& wire = *handle.entry.wire;
    const std::uint8_t id = wire.numbered && !buffer.empty() ? buffer[0] : 0;
    {
        const Lock lock(mutex);
        if (!plugged)
            return failed(handle, gone);
        if (conduct.failReads || buffer.empty() || !handle.entry.hears(id))
            return failed(handle, ioError);
    }
    std::optional<std::vector<std::uint8_t>> payload = model->inputReport({wire.interface, id});
    const Lock lock(mutex);
    if (payload)
        payload->resize(handle.entry.reportsWith(id)->input);
    else
        payload = wire.newest[id];
    // Byte 0 stays the report id that the caller put there.
    const std::size_t length = std::min(payload->size(), buffer.size() - 1);
    std::copy_n(payload->begin(), length, buffer.begin() + 1);
    return done(handle, length + 1);
}

void Device::setConduct(const Conduct& next)
{
    const Lock lock(mutex);
    conduct = next;
    if (!conduct.failReads && conduct.readFailures == 0)
        return;
    for (Handle* handle : handles)
        handle->arrived.notify_all();
}

void Device::releaseWrites()
{
    const Lock lock(mutex);
    ++releases;
    turns.notify_all();
}

void Device::fromModel(const Channel& from, Bytes payload)
{
    std::vector<std::uint8_t> report;
    report.reserve(payload.size() + 1);
    if (from.id != 0)
        report.push_back(from.id);
    report.insert(report.end(), payload.begin(), payload.end());
    const Lock lock(mutex);
    Wire& wire = wireOf(from.interface);
    if (conduct.silent)
        return;
    shape(report);
    if (conduct.replyTime.count() <= 0) {
        deliver(lock, wire, report);
        return;
    }
    runAt(Clock::now() + std::min(conduct.replyTime, longest),
          [device = weak_from_this(), &wire, bytes = std::move(report)] {
              if (const auto here = device.lock())
                  here->deliver(wire, bytes);
          });
}

/// Makes a report what the conduct asks for.
void Device::shape(std::vector<std::uint8_t>& report)
{
    report.resize(std::min(report.size(), conduct.shortReads));
    if (!conduct.garbage)
        return;
    for (std::uint8_t& byte : report) {
        noise ^= noise << 13;
        noise ^= noise >> 17;
        noise ^= noise << 5;
        byte ^= std::uint8_t(1 + noise % 255); // never 0, so that no byte stays what it was
    }
}

void Device::deliver(Wire& wire, Bytes report)
{
    const Lock lock(mutex);
    deliver(lock, wire, report.first(std::min(report.size(), wire.room)));
}

void Device::deliver(const Lock& lock, Wire& wire, Bytes report)
{
    if (!plugged)
        return;
    record(lock, wire, WireRecord::Direction::toHost, report);
    const std::uint8_t id = wire.numbered && !report.empty() ? report[0] : 0;
    const Bytes payload = wire.numbered && !report.empty() ? report.subspan(1) : report;
    wire.newest[id].assign(payload.begin(), payload.end());
    for (Handle* handle : handles) {
        if (handle->entry.wire != &wire || !handle->entry.hears(id))
            continue;
        if (handle->count == Handle::mostWaiting) {
            handle->first = (handle->first + 1) % Handle::mostWaiting;
            --handle->count;
        }
        const std::size_t place = (handle->first + handle->count) % Handle::mostWaiting;
        std::ranges::copy(report, handle->bytes.begin() + std::ptrdiff_t(place * wire.room));
        handle->lengths[place] = report.size();
        ++handle->count;
        handle->caughtUp = false;
        handle->arrived.notify_one();
    }
}

void Device::record(const Lock&, Wire& wire, WireRecord::Direction direction, Bytes report)
{
    if (wire.traffic.size() == mostTraffic)
        wire.traffic.pop_front();
    wire.traffic.push_back({direction, {report.begin(), report.end()}});
    recorded.notify_all();
    if (!trace.load())
        return;
    const std::lock_guard traceLock(traceMutex());
    if (const Trace callback = trace)
        callback(wire.path.c_str(), direction == WireRecord::Direction::toDevice ? 0 : 1, report.data(),
                 int(report.size()));
}

std::vector<WireRecord> Device::takeTraffic(Wire& wire, std::size_t least, std::chrono::milliseconds limit)
{
    Lock lock(mutex);
    recorded.wait_for(lock, std::min(limit, longest), [&] { return wire.traffic.size() >= least; });
    std::vector<WireRecord> taken(std::make_move_iterator(wire.traffic.begin()),
                                  std::make_move_iterator(wire.traffic.end()));
    wire.traffic.clear();
    return taken;
}

bool Device::awaitReader(std::chrono::milliseconds limit)
{
    Lock lock(mutex);
    return readersCame.wait_for(lock, std::min(limit, longest), [&] {
        bool anyone = false;
        for (const Handle* handle : handles) {
            if (!handle->read)
                continue;
            anyone = true;
            if (!handle->caughtUp)
                return false;
        }
        return anyone;
    });
}

} // namespace pyrux::sim
