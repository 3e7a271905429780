#include "platform/linux/name_memory.h"

#include <algorithm>
#include <utility>

namespace pyrux::platform {
namespace {

/// More than go while one enumeration runs. Where more have gone what it has read is dropped.
constexpr std::size_t mostForgotten = 64;

} // namespace

NameMemory& nameMemory()
{
    static auto& memory = *new NameMemory;
    return memory;
}

void NameMemory::begin()
{
    const std::lock_guard lock(mutex);
    ++readers;
}

void NameMemory::end()
{
    const std::lock_guard lock(mutex);
    if (--readers == 0)
        byPlace.clear();
}

void NameMemory::remember(const std::string& place, Names names)
{
    const std::lock_guard lock(mutex);
    put(place, std::move(names));
}

void NameMemory::remember(const std::string& place, Names names, Mark before)
{
    const std::lock_guard lock(mutex);
    const Mark since = forgets - before;
    if (since <= forgotten.size() && std::find(forgotten.end() - static_cast<std::ptrdiff_t>(since),
                                               forgotten.end(), place) == forgotten.end())
        put(place, std::move(names));
}

void NameMemory::put(const std::string& place, Names names)
{
    if (readers > 0 && !names.empty())
        byPlace.try_emplace(place, std::move(names));
}

NameMemory::Mark NameMemory::mark() const
{
    const std::lock_guard lock(mutex);
    return forgets;
}

NameMemory::Names NameMemory::recall(const std::string& place) const
{
    const std::lock_guard lock(mutex);
    const auto found = byPlace.find(place);
    return found == byPlace.end() ? Names{} : found->second;
}

NameMemory::Names NameMemory::forget(const std::string& place)
{
    const std::lock_guard lock(mutex);
    ++forgets;
    forgotten.push_back(place);
    if (forgotten.size() > mostForgotten)
        forgotten.pop_front();
    const auto found = byPlace.extract(place);
    return found ? std::move(found.mapped()) : Names{};
}

std::vector<std::string> NameMemory::places() const
{
    const std::lock_guard lock(mutex);
    std::vector<std::string> all;
    for (const auto& [place, names] : byPlace)
        all.push_back(place);
    return all;
}

} // namespace pyrux::platform
