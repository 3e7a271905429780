#pragma once

#include "platform/thread_messages.h"
#include "pyrux/error.h"
#include "services/service_messages.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace pyrux {

/// What the manager knows of a service.
class SERVICE_PROBE {
public:
    virtual _error serviceName(std::string& out) = 0; ///< Slot 0.
    virtual _error release() = 0;                     ///< Slot 1. Destroys and frees the service.
    virtual ~SERVICE_PROBE() = default;               ///< Slot 2.
};

/// The threads that a service tells its samples, in order of subscription. It lives on, with the blocks that
/// a derived class adds, until the last subscription and the service's own thread have gone.
class Subscribers {
public:
    virtual ~Subscribers() = default;

    /// A thread that is added twice is told twice.
    void add(platform::ThreadId thread);

    /// Takes one entry of the thread away; after the return no further message goes to that entry.
    void remove(platform::ThreadId thread);

    /// To all of them, in the place of a message of its kind that a thread has not taken yet: what does not
    /// keep up gets the newest sample. A thread that has ended misses it and keeps its place.
    void post(const platform::ThreadMessage& message);

private:
    std::mutex mutex;
    std::vector<platform::ThreadId> subscribers;
};

/// The subscribers of a service with one kind of message.
template <ServiceMessage number>
class Outlet final : public Subscribers {
public:
    using Value = Payload<number>;

    void post(const Value& newest)
    {
        block.write(newest);
        Subscribers::post(messageOf<number>(block));
    }

private:
    Sample<Value> block;
};

/// A thread's place among the subscribers of a service. Messages that are waiting when it ends still point to
/// the service's blocks, so `end` comes before the thread is told to end, and the object goes after it.
class Subscription {
public:
    Subscription() = default;
    Subscription(std::shared_ptr<Subscribers> among, platform::ThreadId thread);
    Subscription(Subscription&& other) noexcept { *this = std::move(other); }
    Subscription& operator=(Subscription&& other) noexcept;
    ~Subscription() { end(); }

    explicit operator bool() const { return place != nullptr; }

    /// No message is posted any more.
    void end();

private:
    std::shared_ptr<Subscribers> place;
    platform::ThreadId thread = 0;
    bool active = false;
};

/// What all services are.
class Service : public SERVICE_PROBE {
public:
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    _error serviceName(std::string& out) final;
    _error release() final;

    Subscription subscribe(platform::ThreadId thread) { return {subscribers, thread}; }

    /// Always E_OK, also for a thread that is no subscriber.
    _error removeSubscriber(platform::ThreadId thread);

protected:
    Service(std::string serviceName, std::shared_ptr<Subscribers> own)
        : name(std::move(serviceName)), subscribers(std::move(own))
    {
    }
    ~Service() override = default;

private:
    const std::string name;
    const std::shared_ptr<Subscribers> subscribers;
};

} // namespace pyrux
