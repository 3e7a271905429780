#pragma once

#include "core/models.h"
#include "devices/host_core.h"
#include "pyrux/error.h"
#include "pyrux/lighting.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace pyrux {

/// A protocol class with a model row of its own.
template <class Device>
concept ProtocolClass =
    std::derived_from<Device, ProtocolObject> && std::same_as<decltype(Device::model), const ModelRow&>;

/// A protocol class that decides from the path what it makes, such as one for the cable and one for the
/// receiver.
template <class Device>
concept MadeByPath = requires(const std::string& path)
{
    {
        Device::make(path)
        } -> std::convertible_to<std::unique_ptr<Device>>;
};

/// Forwards a call of a host operation to the protocol object: name and line are logged on entry, a closed
/// object answers E_CLOSED, the result is logged.
#define FORWARD(...) this->forward(__func__, __LINE__, [&](auto& target) { return target.__VA_ARGS__; })

/// Forwards without a log, for operations that run at frame rate.
#define FORWARD_QUIET(...) this->forwardQuiet([&](auto& target) { return target.__VA_ARGS__; })

/// The shape of all host objects: the model's interface, then the core's hooks and fields. What needs no type
/// stands in `HostCore`.
template <class Device, class InterfaceType>
class HostObject : public InterfaceType, public HostCore {
public:
    using Interface = InterfaceType;
    static constexpr const ModelRow& model() { return Device::model; }

    explicit HostObject(const std::string& path) : HostCore(Device::model)
    {
        static_assert(ProtocolClass<Device>);
        logConstructor();
        if constexpr (MadeByPath<Device>)
            adopt(Device::make(path));
        else
            adopt(std::make_unique<Device>(path));
    }

    _error exit_device(std::uint8_t unplugged) override { return exitDevice(unplugged, __LINE__); }

protected:
    ~HostObject() = default;

    template <class Operation>
    _error forward(const char* name, int line, Operation operation)
    {
        const auto run = [](ProtocolObject& target, void* arguments) {
            return (*static_cast<Operation*>(arguments))(static_cast<Device&>(target));
        };
        return call(name, line, run, &operation);
    }

    template <class Operation>
    _error forwardQuiet(Operation operation)
    {
        return forward(nullptr, 0, operation);
    }
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

/// What a model adds whose list of operations has a destructor: one ordinary entry, which ends the device as
/// `exit_device` does. The object stays, as all do; `flags` has no meaning for it.
template <class Host>
class DestroyableHost : public Host {
public:
    using Host::Host;

    void* destroy(std::uint32_t) override
    {
        this->shutDown(false);
        return static_cast<typename Host::Interface*>(this);
    }

protected:
    ~DestroyableHost() = default;
};

template <class Host>
MadeHost makeHost(const std::string& path)
{
    auto host = std::make_unique<Host>(path);
    if (host->openFailure() == 1) {
        host->logFailedOpening();
        return {};
    }
    typename Host::Interface* const interface = host.get();
    return {.core = host.release(), .interface = interface};
}

/// The factory export of a model: its name and its host class, which may have commas.
#define PYRUX_FACTORY(name, ...)                                                                             \
    PYRUX_API __VA_ARGS__::Interface* name(const char* path)                                                 \
    {                                                                                                        \
        using Host = __VA_ARGS__;                                                                            \
        return static_cast<Host::Interface*>(                                                                \
            pyrux::findOrMakeHost(Host::model(), path, __LINE__, pyrux::makeHost<Host>));                    \
    }

} // namespace pyrux
