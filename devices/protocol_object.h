#pragma once

#include <chrono>
#include <cstdint>

namespace pyrux {

/// What a host object asks of its protocol object, beside the operations that it forwards to.
class ProtocolObject {
public:
    ProtocolObject() = default;
    virtual ~ProtocolObject() = default;
    ProtocolObject(const ProtocolObject&) = delete;
    ProtocolObject& operator=(const ProtocolObject&) = delete;

    /// 0: it works. 1: the device could not be opened, the factory gives null. 2: it cannot work now, the
    /// factory gives a closed object that stays in the registry until its device goes.
    virtual std::int32_t openFailed() const = 0;

    virtual void
    setUnplugged(bool gone) = 0; ///< Whether the device has gone: nothing is sent to it any more.
    virtual void noteClosed() {} ///< The host object is closed: operations that go on by themselves end.
    virtual void abort() = 0;    ///< Waiting commands end with E_NOT_OPEN.
    virtual void sayGoodbye() {} ///< Sends the goodbye commands, unless the device has gone.

    /// Ends the threads and closes the channels.
    /// @return false: a thread still runs at the deadline
    virtual bool endThreads(std::chrono::steady_clock::time_point deadline) = 0;
};

} // namespace pyrux
