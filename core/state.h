#pragma once

#include "pyrux/records.h"

#include <atomic>
#include <cstdint>

namespace pyrux {

/// Not 0: the host runs without a visible control application. Set by `pyrux_background`.
inline std::atomic<std::uint32_t> backgroundMode{0};

/// The host's hotplug callback; null until `registerDevNotify`.
inline std::atomic<void (*)(HotplugEvent)> devNotifyCallback{nullptr};

} // namespace pyrux
