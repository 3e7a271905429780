#include "simulator/models/identities.h"

#include <map>
#include <mutex>

namespace pyrux::sim {

const Identity& standingIdentity(const std::string& name, std::uint16_t pid, std::uint16_t release,
                                 const std::vector<Collection>& collections, int controlInterface)
{
    static std::mutex mutex;
    static auto& known = *new std::map<std::uint16_t, Identity>;
    const std::lock_guard lock(mutex);
    const auto [place, made] = known.try_emplace(pid);
    if (made)
        place->second = {
            .vid = 0x3A7E,
            .pid = pid,
            .release = release,
            .serial = name + "-000001",
            .product = name,
            .manufacturer = "Tessel Works",
            .collections = collections,
            .controlInterface = controlInterface,
        };
    return place->second;
}

} // namespace pyrux::sim
