#include "devices/host_core.h"

#include "core/boundary.h"
#include "core/log.h"
#include "core/registry.h"
#include "core/state.h"
#include "platform/fork.h"
#include "platform/threads.h"
#include "transport/device_closer.h"
#include "transport/device_path.h"

#include <mutex>
#include <thread>
#include <utility>

namespace pyrux {

namespace {

constexpr std::chrono::milliseconds callGrace{2000};
constexpr std::chrono::milliseconds threadGrace{150};

/// Makes a host object. What the system has no room for, such as a thread, lets the device count as one that
/// cannot be opened: nothing is thrown at hosts.
MadeHost makeOrNot(MadeHost (*make)(const std::string& path), const std::string& path)
{
    MadeHost made;
    if (!attempt([&] { made = make(path); }))
        debugText("init fail\n");
    return made;
}

} // namespace

/// Keeps the protocol object.
class HostCore::Inside {
public:
    explicit Inside(CallGate& calls) : calls(calls) { calls.enter(); }
    ~Inside() { calls.leave(); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    CallGate& calls;
};

_error HostCore::call(const char* name, int line, Operation operation, void* arguments)
{
    if (platform::inForkedChild())
        return E_CLOSED; // the protocol object's threads are the parent's
    if (name)
        logOwn(name, line);
    const Inside inside(calls);
    if (closed)
        return E_CLOSED;
    const _error result = atBoundary(E_FAIL, [&] { return operation(*device, arguments); });
    if (name)
        log(model.logCategory, [&] {
            return fullName(model, name) + ", ret = " + std::to_string(static_cast<std::int32_t>(result));
        });
    return result;
}

void HostCore::logOwn(std::string_view operation, int line) const
{
    log(model.logCategory, [&] { return fullName(model, operation) + ", " + std::to_string(line); });
}

void HostCore::logConstructor() const
{
    logOwn(model.hostClass, __LINE__);
}

void HostCore::logFailedOpening() const
{
    debugText("init fail\n");
    log(model.logCategory, [&] {
        return fullName(model, "~" + std::string(model.hostClass)) + ", " + std::to_string(__LINE__);
    });
}

void HostCore::adopt(std::unique_ptr<ProtocolObject> made)
{
    openFailed = made->openFailed();
    if (openFailed)
        closed = 1;
    else
        device = made.release();
}

_error HostCore::exitDevice(std::uint8_t unplugged, int line)
{
    if (platform::inForkedChild())
        return E_CLOSED;
    logOwn("exit_device", line);
    shutDown(unplugged != 0);
    return E_OK;
}

std::int32_t HostCore::device_pre_exit(const std::uint8_t*)
{
    logOwn(__func__, __LINE__);
    calls.enter();
    closed = 1;
    if (!leaving)
        if (ProtocolObject* target = device) {
            target->setUnplugged(true);
            target->noteClosed();
            target->abort(); // a device that has gone answers nobody
        }
    calls.leave();
    return 0;
}

std::int32_t HostCore::device_exit(const std::uint8_t* unplugged)
{
    announceExit();
    shutDown(*unplugged != 0);
    return 0;
}

void HostCore::announceExit()
{
    // Deliberate: the text is as hosts and technicians know it.
    log(model.logCategory, [&] { return "exit devie " + std::string(model.model) + " by probe"; });
    logOwn("exit_device", __LINE__);
}

void HostCore::shutDown(bool unplugged)
{
    closed = 1;
    if (leaving.exchange(true))
        return;
    std::unique_ptr<ProtocolObject> owned(device.load());
    if (!owned)
        return;
    owned->setUnplugged(unplugged);
    owned->noteClosed();
    // A call that is inside may finish what it writes, unless the device has gone or does not answer.
    if (unplugged || !calls.drain(callGrace))
        owned->abort();
    const bool empty = calls.drain(callGrace);
    attempt([&] { owned->sayGoodbye(); });
    const bool quiet = owned->endThreads(std::chrono::steady_clock::now() + threadGrace);
    if (empty && quiet) {
        device = nullptr;
        return;
    }
    // A callback of the host has the reader thread, and may even be where this call comes from. The rest
    // waits for it elsewhere, on a thread that owns all that it uses. Without room for that thread it stays:
    // what is left of the device is quiet and unreachable.
    std::thread last = platform::startThread([this, rest = owned.release()] {
        while (!calls.drain(std::chrono::hours(1))) {
        }
        device = nullptr;
        delete rest;
    });
    if (last.joinable())
        last.detach();
}

namespace {

void* findOrMake(const ModelRow& model, const std::string& key, MadeHost (*make)(const std::string& path))
{
    Registry& all = registry();
    std::unique_lock lock(all.mutex);
    all.waitUntilMade(lock, key);
    if (const DeviceEntry* entry = all.find(key)) {
        log(model.logCategory, "return object already create");
        return entry->host;
    }
    Registry::Reservation place(all, key);
    lock.unlock();
    const MadeHost made = makeOrNot(make, key);
    lock.lock();
    if (!made.core)
        return nullptr;
    const bool added = !place.late() && attempt([&] {
        all.add({.model = model.model,
                 .deviceType = model.deviceType,
                 .host = made.interface,
                 .path = key,
                 .probe = made.core,
                 .backgroundAtCreate = backgroundMode != 0,
                 .opened = place.opened});
    });
    if (!added) {
        lock.unlock();
        made.core->announceExit();
        made.core->shutDown(false);
        lock.lock();
        all.retire(made.interface);
        return nullptr;
    }
    if (place.gone)
        attempt([&] { closeDeviceByPath(key); });
    return made.interface;
}

} // namespace

void* findOrMakeHost(const ModelRow& model, const char* path, int line,
                     MadeHost (*make)(const std::string& path))
{
    if (platform::inForkedChild())
        return nullptr;
    logCall(model.logCategory, "PYRUX::", model.exportName, line);
    return atBoundary<void*>(nullptr, [&] { return findOrMake(model, registryKey(path ? path : ""), make); });
}

} // namespace pyrux
