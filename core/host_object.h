#pragma once

#include "core/call_gate.h"
#include "core/dev_probe.h"
#include "core/log.h"
#include "core/models.h"
#include "core/registry.h"
#include "core/state.h"
#include "pyrux/error.h"
#include "pyrux/lighting.h"
#include "transport/device_path.h"

#include <atomic>
#include <chrono>
#include <concepts>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace pyrux {

/// What a host object asks of its protocol class, beside the operations that it forwards to.
template <class Device>
concept ProtocolObject = requires(Device device, bool flag, std::chrono::milliseconds limit)
{
    {
        Device::model
        } -> std::convertible_to<const ModelRow&>;
    {
        device.openFailed()
        } -> std::convertible_to<bool>;
    device.setUnplugged(flag); ///< Whether the device has gone: nothing is sent to it any more.
    device.noteClosed();       ///< The host object is closed: operations that go on by themselves end.
    device.abort();            ///< Waiting commands end with E_NOT_OPEN.
    device.sayGoodbye();       ///< Sends the goodbye commands, unless the device has gone.
    {
        device.endThreads(limit)
        } -> std::convertible_to<bool>; ///< Closes the channel; false: a thread still runs.
};

/// Forwards a call of a host operation to the protocol object: name and line are logged on entry, a closed
/// object answers E_CLOSED, the result is logged.
#define FORWARD(...) this->forward(__func__, __LINE__, [&](auto& target) { return target.__VA_ARGS__; })

/// Forwards without a log, for operations that run at frame rate.
#define FORWARD_QUIET(...) this->forwardQuiet([&](auto& target) { return target.__VA_ARGS__; })

/// The shape of all host objects: the model's interface, then the core's hooks, then the three fields that a
/// host may know of. Host objects are never freed; what they own beside these fields goes with `exit_device`.
template <class Device, class InterfaceType>
class HostObject : public InterfaceType, public DEV_PROBE {
public:
    using Interface = InterfaceType;
    static constexpr const ModelRow& model() { return Device::model; }

    explicit HostObject(const std::string& path)
    {
        static_assert(ProtocolObject<Device>);
        logOwn(model().hostClass, __LINE__);
        auto created = std::make_unique<Device>(path);
        openFailed = created->openFailed() ? 1 : 0;
        if (openFailed)
            closed = 1;
        else
            device = created.release();
    }

    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;

    bool failed() const { return openFailed != 0; }

    /// Logs the destructor's name; the object of a failed factory call goes then.
    void logDestructor() const { logOwn("~" + std::string(model().hostClass), __LINE__); }

    /// Closes the object. Deliberate: works on a closed object too, logs no result and does not touch the
    /// registry.
    _error exit_device(std::uint8_t unplugged) override
    {
        logOwn(__func__, __LINE__);
        shutDown(unplugged != 0);
        return E_OK;
    }

    std::int32_t device_pre_exit(const std::uint8_t*) override
    {
        logOwn(__func__, __LINE__);
        calls.enter();
        if (!leaving)
            if (Device* target = device)
                target->noteClosed();
        closed = 1;
        calls.leave();
        return 0;
    }

    std::int32_t device_exit(const std::uint8_t* unplugged) override
    {
        // Deliberate: the text is as hosts and technicians know it.
        log(model().logCategory, [&] { return "exit devie " + std::string(model().model) + " by probe"; });
        exit_device(*unplugged);
        return 0;
    }

protected:
    ~HostObject() = default;

    template <class Call>
    _error forward(const char* operation, int line, Call&& call)
    {
        logOwn(operation, line);
        const Inside inside(calls);
        if (closed)
            return E_CLOSED;
        const _error result = call(*device.load());
        log(model().logCategory, [&] {
            return fullName(model(), operation) +
                   ", ret = " + std::to_string(static_cast<std::int32_t>(result));
        });
        return result;
    }

    template <class Call>
    _error forwardQuiet(Call&& call)
    {
        const Inside inside(calls);
        return closed ? E_CLOSED : call(*device.load());
    }

private:
    struct Inside {
        explicit Inside(CallGate& gate) : gate(gate) { gate.enter(); }
        ~Inside() { gate.leave(); }
        CallGate& gate;
    };

    static void logOwn(std::string_view operation, int line)
    {
        log(model().logCategory, [&] { return fullName(model(), operation) + ", " + std::to_string(line); });
    }

    void shutDown(bool unplugged)
    {
        closed = 1;
        if (leaving.exchange(true))
            return;
        std::unique_ptr<Device> owned(device.load());
        if (!owned)
            return;
        owned->setUnplugged(unplugged);
        owned->noteClosed();
        // A call that is inside may finish what it writes, unless the device has gone or does not answer.
        if (unplugged || !calls.drain(callGrace))
            owned->abort();
        const bool empty = calls.drain(callGrace);
        owned->sayGoodbye();
        const bool quiet = owned->endThreads(threadGrace);
        if (empty && quiet) {
            device = nullptr;
            return;
        }
        // A callback of the host has the reader thread, and may even be where this call comes from. The rest
        // waits for it elsewhere, on a thread that owns all that it uses.
        std::thread([this, rest = std::move(owned)]() mutable {
            while (!calls.drain(std::chrono::hours(1))) {
            }
            device = nullptr;
            rest.reset();
        }).detach();
    }

    static constexpr std::chrono::milliseconds callGrace{2000};
    static constexpr std::chrono::milliseconds threadGrace{150};

    std::int32_t openFailed = 0;
    std::atomic<Device*> device{nullptr};
    std::atomic<std::int32_t> closed{0};
    std::atomic<bool> leaving{false};
    CallGate calls;
};

/// What a model with lights adds to the host object of its family: the five operations of `DEV_LIGHTING`.
/// Those that run at frame rate leave no trace in the log.
template <class Host>
class LitHost : public Host {
public:
    using Host::Host;

    _error setLightingInit() override { return FORWARD(setLightingInit()); }
    _error setLightingUninit() override { return FORWARD(setLightingUninit()); }
    _error setLightingPortColor(const LightingPortColor* color) override
    {
        return FORWARD_QUIET(setLightingPortColor(color));
    }
    _error setSyncLightingData(const std::vector<LightingLedZone>& zones) override
    {
        return FORWARD_QUIET(setSyncLightingData(zones));
    }
    _error setLightingTurnOff() override { return FORWARD(setLightingTurnOff()); }

protected:
    ~LitHost() = default;
};

/// The body of every factory: one object per path, found or made while the registry is held.
template <class Host>
typename Host::Interface* createHost(const char* path, int line)
{
    const ModelRow& model = Host::model();
    logCall(model.logCategory, "PYRUX::" + std::string(model.exportName), line);
    const std::string key = registryKey(path ? path : "");
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    if (const DeviceEntry* entry = all.find(key)) {
        log(model.logCategory, "return object already create");
        return static_cast<typename Host::Interface*>(entry->host);
    }
    const auto opened = Registry::Clock::now();
    auto host = std::make_unique<Host>(key);
    if (host->failed()) {
        debugText("init fail\n");
        host->logDestructor();
        return nullptr;
    }
    typename Host::Interface* interface = host.get();
    all.add({.model = model.model,
             .deviceType = model.deviceType,
             .host = interface,
             .path = key,
             .probe = host.release(),
             .backgroundAtCreate = backgroundMode != 0,
             .opened = opened});
    return interface;
}

/// The factory export of a model.
#define PYRUX_FACTORY(name, Host)                                                                            \
    PYRUX_API Host::Interface* name(const char* path)                                                        \
    {                                                                                                        \
        return pyrux::createHost<Host>(path, __LINE__);                                                      \
    }

} // namespace pyrux
