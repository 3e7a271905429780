#pragma once

#include "devices/keyboards/effect_image.h"
#include "pyrux/error.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// The exchanges with a keyboard's effect memory.
class EffectMemory {
public:
    EffectMemory(DeviceLink& link, const EffectLayout& layout) : link(link), layout(layout) {}

    struct Loaded {
        bool complete; ///< Everything could be asked for; otherwise the cache is as it was.
        _error result; ///< E_INVALID_GET also when the last record in the memory is none.
    };

    /// Reads all effects.
    Loaded load(EffectCache& cache);

    /// Writes all effects.
    /// @return E_INVALID_SET: an effect that has no record, nothing sent; otherwise the first failure
    _error store(const EffectCache& cache);

    /// Shows one effect, without a change to the memory.
    /// @return E_INVALID_SET: an effect, or a layer or zone of it, that has no preview, nothing sent; or the
    ///         first failure of the transfer
    _error preview(std::uint8_t effect, const EffectData& data);

private:
    DeviceLink& link;
    const EffectLayout& layout;
};

} // namespace pyrux
