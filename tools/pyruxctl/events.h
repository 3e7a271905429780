#pragma once

#include "pyrux/error.h"
#include "pyrux/records.h"

#include <array>
#include <chrono>
#include <concepts>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>

/// @file
/// What devices tell by themselves. The library's callbacks carry no context, so each device that is listened
/// to has a callback function of its own, made from the number of its slot.

namespace pyrux::ctl {

struct DeviceEvent {
    std::size_t slot; ///< Which of the devices that are listened to.
    std::uint32_t event;
    std::uint32_t value;
};

using Event = std::variant<DeviceEvent, HotplugEvent>;

/// Events on their way from the library's threads to the one that shows them.
class EventQueue {
public:
    using Clock = std::chrono::steady_clock;

    void push(Event event);
    /// Waits for an event. No value: the deadline has passed, or the user has asked to stop.
    std::optional<Event> pop(Clock::time_point deadline);

private:
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Event> waiting;
};

/// The one queue. It is never destroyed: a callback may come while the process ends.
EventQueue& events();

/// The callback for `registerDevNotify`.
void onHotplug(HotplugEvent event);

/// Devices that can be listened to at a time.
inline constexpr std::size_t slotCount = 32;

/// What is told of a callback's argument; specialised for each record that comes by value.
template <class Record>
struct EventOf;
template <class Record>
struct EventOf<Record*> {
    static std::uint32_t event(const Record* record) { return record->event; }
    static std::uint32_t value(const Record* record) { return record->value; }
};

/// The callbacks for `registerNotify` by slot, of one type of argument: a record or a pointer to one.
template <class Record>
struct NotifyCallbacks {
    template <std::size_t slot>
    static void callback(Record record)
    {
        events().push(DeviceEvent{slot, EventOf<Record>::event(record), EventOf<Record>::value(record)});
    }
    static constexpr auto bySlot = []<std::size_t... slot>(std::index_sequence<slot...>)
    {
        return std::array{&callback<slot>...};
    }
    (std::make_index_sequence<slotCount>());
};

/// What pyruxctl does with a host object besides the operations that the user calls.
struct HostCalls {
    void* (*create)(void* factory, const char* path); ///< The host object, or null.
    void (*listen)(void* host, std::size_t slot);
    std::int32_t (*stopListening)(void* host); ///< -11 once the device has gone.
    void (*destroy)(void* host) = nullptr;     ///< Of an object that its user owns.
};

namespace detail {

/// @tparam Owner  the interface, or what it shares with others
template <class Interface, class Owner, class Result, class Record>
void listen(Interface& host, Result (Owner::*registerNotify)(void (*)(Record)), std::size_t slot)
{
    (host.*registerNotify)(NotifyCallbacks<Record>::bySlot[slot]);
}

template <class Interface>
void* create(void* factory, const char* path)
{
    return reinterpret_cast<Interface* (*)(const char*)>(factory)(path);
}

} // namespace detail

template <class Interface>
HostCalls hostCalls()
{
    return {
        &detail::create<Interface>,
        [](void* host, std::size_t slot) {
            detail::listen(*static_cast<Interface*>(host), &Interface::registerNotify, slot);
        },
        [](void* host) -> std::int32_t { return static_cast<Interface*>(host)->unRegisterNotify(); },
    };
}

/// The same for a model that tells nothing by itself.
/// @tparam idle  an operation that sends nothing to the device
template <class Interface, _error (*idle)(Interface&)>
HostCalls silentHostCalls()
{
    return {
        &detail::create<Interface>,
        [](void*, std::size_t) {},
        [](void* host) -> std::int32_t { return idle(*static_cast<Interface*>(host)); },
    };
}

} // namespace pyrux::ctl
