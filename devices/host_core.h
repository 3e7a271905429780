#pragma once

#include "core/dev_probe.h"
#include "core/models.h"
#include "devices/call_gate.h"
#include "devices/protocol_object.h"
#include "pyrux/error.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace pyrux {

/// What all host objects do alike, whatever their interface: the core's hooks, the three fields that a host
/// may know of, the log and the closed check around each call, and the end. A host object is never freed;
/// what it owns goes with `exit_device`.
class HostCore : public HostProbe {
public:
    HostCore(const HostCore&) = delete;
    HostCore& operator=(const HostCore&) = delete;

    std::int32_t device_pre_exit(const std::uint8_t*) override;
    std::int32_t device_exit(const std::uint8_t* unplugged) override;
    void announceExit() override;
    void shutDown(bool unplugged) override;

    /// What the protocol object said of its opening.
    std::int32_t openFailure() const { return openFailed; }

    /// Says that the device could not be opened, and logs the destructor: the object of a failed call goes
    /// then.
    void logFailedOpening() const;

protected:
    explicit HostCore(const ModelRow& model) : model(model) {}
    ~HostCore() = default;

    void logConstructor() const;
    void adopt(std::unique_ptr<ProtocolObject> made);

    /// The body of `exit_device`. Deliberate: works on a closed object too, logs no result and does not touch
    /// the registry.
    _error exitDevice(std::uint8_t unplugged, int line);

    /// What a host operation asks of the protocol object, with its arguments after the pointer.
    using Operation = _error (*)(ProtocolObject& target, void* arguments);

    /// One call of a host operation, from its entry to its result. The protocol object stays meanwhile.
    /// @param name  logged with the source line, and with the result; null: at frame rate, without a log
    /// @return E_CLOSED for a closed object; E_FAIL where the system has no room for what the operation needs
    _error call(const char* name, int line, Operation operation, void* arguments);

    // Deliberate order: directly after the two virtual table pointers, where hosts know them.
    std::int32_t openFailed = 0;
    std::atomic<ProtocolObject*> device{nullptr};
    std::atomic<std::int32_t> closed{0};

private:
    class Inside;

    void logOwn(std::string_view operation, int line) const;

    const ModelRow& model;
    std::atomic<bool> leaving{false};
    CallGate calls;
};

/// A host object that has been made: its hooks and its interface, which is what hosts get.
struct MadeHost {
    HostCore* core = nullptr;
    void* interface = nullptr;
};

/// The body of every factory: one object per path, found or made.
/// @param make  makes the host object of a path; empty where the device cannot be opened
void* findOrMakeHost(const ModelRow& model, const char* path, int line,
                     MadeHost (*make)(const std::string& path));

} // namespace pyrux
