#include "devices/held_key.h"

#include <array>
#include <cstddef>

namespace pyrux {

std::atomic<bool>& heldKeyOf(const ModelRow& model)
{
    static constinit std::array<std::atomic<bool>, deviceCatalogue.size()> held{};
    return held.at(std::size_t(model.deviceType));
}

} // namespace pyrux
