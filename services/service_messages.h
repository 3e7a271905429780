#pragma once

#include "platform/thread_messages.h"
#include "pyrux/sys_info.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

/// @file
/// What services tell the threads of their subscribers: message numbers, and what belongs to each.

namespace pyrux {

/// Numbers of thread messages. 1028 and 1030 are private to device threads, which share the number space.
enum ServiceMessage : std::uint32_t {
    MSG_RENDER_VOLUME = 1025,        ///< Volume and mute of the default output endpoint.
    MSG_CAPTURE_VOLUME = 1026,       ///< The same of the default capture endpoint.
    MSG_HOOK_EVENT = 1029,           ///< No payload; second word: number of the window message that was seen.
    MSG_QUIT_THREAD = 1031,          ///< No payload; the receiving thread ends.
    MSG_TEMPERATURE = 1032,          ///< Temperatures of processor and graphics card.
    MSG_AUDIO_DEVICE_CHANGED = 1033, ///< No payload; another endpoint is the default one.
    MSG_AUDIO_DEVICE_STATE = 1034,   ///< An endpoint has changed its state.
    MSG_CPU_USAGE = 1035,            ///< Processor load.
    MSG_AMPLITUDE = 1036,            ///< Spectrum of what is played.
    MSG_SYSTEM_INFO = 1037,          ///< The system record.
};

struct EndpointVolume {
    std::int32_t volume = 0; ///< 0 to 100
    std::int32_t mute = 0;   ///< 1 or 0
};

struct EndpointState {
    std::string id;
    std::uint32_t state = 0;
};

struct Temperatures {
    std::int32_t cpu = 0; ///< degrees Celsius
    std::int32_t gpu = 0; ///< likewise
};

/// The type of a message's payload.
template <ServiceMessage number>
struct PayloadOf;
template <>
struct PayloadOf<MSG_RENDER_VOLUME> {
    using Type = EndpointVolume;
};
template <>
struct PayloadOf<MSG_CAPTURE_VOLUME> {
    using Type = EndpointVolume;
};
template <>
struct PayloadOf<MSG_TEMPERATURE> {
    using Type = Temperatures;
};
template <>
struct PayloadOf<MSG_AUDIO_DEVICE_STATE> {
    using Type = EndpointState;
};
template <>
struct PayloadOf<MSG_CPU_USAGE> {
    using Type = std::int32_t; // 0 to 100
};
template <>
struct PayloadOf<MSG_AMPLITUDE> {
    using Type = std::vector<float>; // the spectrum's bins
};
template <>
struct PayloadOf<MSG_SYSTEM_INFO> {
    using Type = SysDetailRecord;
};
template <ServiceMessage number>
using Payload = typename PayloadOf<number>::Type;

/// A service's one block for a kind of message, which all its messages point to. It is written anew with
/// each sample, so a late reader gets the newest one under an older message: deliberate. It is never seen
/// half written.
template <class Value>
class Sample {
public:
    void write(const Value& newest)
    {
        const std::lock_guard lock(mutex);
        value = newest;
    }

    Value read() const
    {
        const std::lock_guard lock(mutex);
        return value;
    }

private:
    mutable std::mutex mutex;
    Value value{};
};

/// The message whose first word is a block.
template <ServiceMessage number>
platform::ThreadMessage messageOf(const Sample<Payload<number>>& block)
{
    return {number, reinterpret_cast<std::uintptr_t>(&block), 0};
}

/// A copy of what a message brings. Only while the receiver's `Subscription` exists, which keeps the block.
template <ServiceMessage number>
Payload<number> payloadOf(const platform::ThreadMessage& message)
{
    return reinterpret_cast<const Sample<Payload<number>>*>(message.first)->read();
}

} // namespace pyrux
