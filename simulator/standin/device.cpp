#include "simulator/standin/device.h"

#include <algorithm>
#include <cstdio>
#include <map>
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

/// The entries with paths such as
/// \\?\HID#VID_3A7E&PID_012F&MI_01&Col01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}.
std::vector<Entry> entriesOf(const Identity& identity, const std::string& instance)
{
    std::map<int, int> collections;
    for (const Collection& one : identity.collections)
        ++collections[one.interface];
    std::map<int, int> seen;
    std::vector<Entry> entries;
    for (const Collection& one : identity.collections) {
        std::string path = "\\\\?\\HID#VID_" + hex4(identity.vid) + "&PID_" + hex4(identity.pid);
        if (one.interface >= 0)
            path += "&MI_" + twoDigits(one.interface);
        if (collections[one.interface] > 1)
            path += "&Col" + twoDigits(++seen[one.interface]);
        path += "#" + instance + "#{4d1e55b2-f16f-11cf-88cb-001111000030}";
        entries.push_back({one, std::move(path)});
    }
    return entries;
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

Handle::Handle(std::shared_ptr<Device> of, const Entry& opened) : device(std::move(of)), entry(opened) {}

Device::Device(std::shared_ptr<Firmware> behind, std::string plug)
    : instance(std::move(plug)), entries(entriesOf(behind->identity(), instance)), model(std::move(behind))
{
}

void Device::plug()
{
    model->powerOn();
    model->connect([device = weak_from_this()](Bytes report) {
        if (const auto here = device.lock())
            here->fromModel(report);
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

bool Device::onControlInterface(const Entry& entry) const
{
    return entry.collection.interface == model->identity().controlInterface;
}

const std::string& Device::controlPath() const
{
    const auto found =
        std::ranges::find_if(entries, [&](const Entry& one) { return onControlInterface(one); });
    return found == entries.end() ? entries.front().path : found->path;
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
const wchar_t* Device::refusal(const Handle& handle) const
{
    if (!plugged)
        return gone;
    return conduct.refuseWrites || !onControlInterface(handle.entry) ? ioError : nullptr;
}

int Device::write(Handle& handle, Bytes report)
{
    if (report.empty())
        return failed(handle, L"Zero buffer/length");
    Lock lock(mutex);
    if (const wchar_t* text = refusal(handle))
        return failed(handle, text);
    const std::uint64_t releasesBefore = releases;
    // Whoever leaves early because the device has gone need not pass its turn on: all others leave too.
    if (!waitForTurn(lock, nextTicket++) || !stall(lock, releasesBefore))
        return failed(handle, gone);
    const wchar_t* text = refusal(handle);
    if (!text) {
        record(lock, WireRecord::Direction::toDevice, report);
        lock.unlock();
        const Bytes payload = report.subspan(1);
        model->output(payload.first(std::min<std::size_t>(payload.size(), 64)));
        lock.lock();
    }
    ++servedTicket;
    if (nextTicket != servedTicket)
        turns.notify_all();
    return text ? failed(handle, text) : done(handle, report.size());
}

int Device::read(Handle& handle, std::span<std::uint8_t> buffer, int limitMs)
{
    ++readCalls;
    Lock lock(mutex);
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
    const Handle::InputReport& report = handle.waiting[handle.first];
    const std::size_t length = std::min(report.length, buffer.size());
    std::copy_n(report.bytes.begin(), length, buffer.begin());
    handle.first = (handle.first + 1) % handle.waiting.size();
    --handle.count;
    return done(handle, length);
}

int Device::inputReport(Handle& handle, std::span<std::uint8_t> buffer)
{
    const Lock lock(mutex);
    if (!plugged)
        return failed(handle, gone);
    if (conduct.failReads || buffer.empty())
        return failed(handle, ioError);
    // Byte 0 stays the report id that the caller put there.
    const std::size_t length = std::min(newest.size(), buffer.size() - 1);
    std::copy_n(newest.begin(), length, buffer.begin() + 1);
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

void Device::fromModel(Bytes report)
{
    const Lock lock(mutex);
    if (conduct.silent)
        return;
    if (conduct.replyTime.count() <= 0) {
        if (conduct.garbage || conduct.shortReads < report.size())
            deliver(lock, shaped(report));
        else
            deliver(lock, report);
        return;
    }
    runAt(Clock::now() + std::min(conduct.replyTime, longest),
          [device = weak_from_this(), bytes = shaped(report)] {
              if (const auto here = device.lock())
                  here->deliver(bytes);
          });
}

/// A report as the conduct makes it.
std::vector<std::uint8_t> Device::shaped(Bytes report)
{
    std::vector<std::uint8_t> bytes(
        report.begin(), report.begin() + std::ptrdiff_t(std::min(report.size(), conduct.shortReads)));
    if (!conduct.garbage)
        return bytes;
    for (std::uint8_t& byte : bytes) {
        noise ^= noise << 13;
        noise ^= noise >> 17;
        noise ^= noise << 5;
        byte ^= std::uint8_t(1 + noise % 255); // never 0, so that no byte stays what it was
    }
    return bytes;
}

void Device::deliver(Bytes report)
{
    const Lock lock(mutex);
    deliver(lock, report.first(std::min<std::size_t>(report.size(), 64)));
}

void Device::deliver(const Lock& lock, Bytes report)
{
    if (!plugged)
        return;
    record(lock, WireRecord::Direction::toHost, report);
    newest.assign(report.begin(), report.end());
    for (Handle* handle : handles) {
        if (!onControlInterface(handle->entry))
            continue;
        auto& waiting = handle->waiting;
        if (handle->count == waiting.size()) {
            handle->first = (handle->first + 1) % waiting.size();
            --handle->count;
        }
        Handle::InputReport& place = waiting[(handle->first + handle->count) % waiting.size()];
        std::ranges::copy(report, place.bytes.begin());
        place.length = report.size();
        ++handle->count;
        handle->arrived.notify_one();
    }
}

void Device::record(const Lock&, WireRecord::Direction direction, Bytes report)
{
    if (traffic.size() == mostTraffic)
        traffic.pop_front();
    traffic.push_back({direction, {report.begin(), report.end()}});
    recorded.notify_all();
    if (!trace.load())
        return;
    const std::lock_guard traceLock(traceMutex());
    if (const Trace callback = trace)
        callback(controlPath().c_str(), direction == WireRecord::Direction::toDevice ? 0 : 1, report.data(),
                 int(report.size()));
}

std::vector<WireRecord> Device::takeTraffic(std::size_t least, std::chrono::milliseconds limit)
{
    Lock lock(mutex);
    recorded.wait_for(lock, std::min(limit, longest), [&] { return traffic.size() >= least; });
    std::vector<WireRecord> taken(std::make_move_iterator(traffic.begin()),
                                  std::make_move_iterator(traffic.end()));
    traffic.clear();
    return taken;
}

int Device::reads() const
{
    return readCalls;
}

} // namespace pyrux::sim
