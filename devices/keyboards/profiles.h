#pragma once

#include "pyrux/error.h"
#include "transport/device_link.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace pyrux {

/// The current profile and the effect of each, as they were seen or set last. All parts of a keyboard share
/// it.
class ProfileState {
public:
    static constexpr std::size_t count = 5;

    /// The effect of the current profile. A profile that the device alone knows of has no place here.
    std::uint8_t effect() const;
    void setEffect(std::uint8_t effect);

    std::atomic<std::uint8_t> current{0};
    std::atomic<bool> reloadNeeded{false}; ///< The device has other effects than the library's copy.

private:
    std::array<std::atomic<std::uint8_t>, count> effects{};
};

/// The choice of a keyboard's profile, and its way back to factory settings.
class Profiles {
public:
    /// @param partialResets  parts of a profile that can be reset alone
    Profiles(DeviceLink& link, ProfileState& state, std::uint8_t partialResets)
        : link(link), state(state), partialResets(partialResets)
    {
    }

    _error change(std::uint8_t id);
    _error getCurrent(std::uint8_t* id);
    _error reset(std::uint8_t scope);
    _error resetPartial(std::uint8_t part);

private:
    DeviceLink& link;
    ProfileState& state;
    const std::uint8_t partialResets;
};

} // namespace pyrux
