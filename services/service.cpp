#include "services/service.h"

#include <algorithm>

namespace pyrux {

void Subscribers::add(platform::ThreadId thread)
{
    const std::lock_guard lock(mutex);
    subscribers.push_back(thread);
}

void Subscribers::remove(platform::ThreadId thread)
{
    const std::lock_guard lock(mutex);
    if (const auto entry = std::find(subscribers.begin(), subscribers.end(), thread);
        entry != subscribers.end())
        subscribers.erase(entry);
}

void Subscribers::post(const platform::ThreadMessage& message)
{
    const std::lock_guard lock(mutex);
    for (auto entry = subscribers.begin(); entry != subscribers.end(); ++entry) {
        const auto earlierOnes = std::count(subscribers.begin(), entry, *entry);
        platform::postThreadMessage(*entry, message, platform::Post::newest,
                                    static_cast<std::size_t>(earlierOnes));
    }
}

Subscription::Subscription(std::shared_ptr<Subscribers> among, platform::ThreadId subscriber)
    : place(std::move(among)), thread(subscriber), active(true)
{
    place->add(thread);
}

Subscription& Subscription::operator=(Subscription&& other) noexcept
{
    if (this != &other) {
        end();
        place = std::move(other.place);
        thread = other.thread;
        active = std::exchange(other.active, false);
    }
    return *this;
}

void Subscription::end()
{
    if (std::exchange(active, false))
        place->remove(thread);
}

_error Service::serviceName(std::string& out)
{
    out = name;
    return E_OK;
}

_error Service::release()
{
    delete this;
    return E_OK;
}

_error Service::removeSubscriber(platform::ThreadId thread)
{
    subscribers->remove(thread);
    return E_OK;
}

} // namespace pyrux
