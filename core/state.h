#pragma once

#include <atomic>
#include <cstdint>

namespace pyrux {

/// Not 0: the host runs without a visible control application. Set by `pyrux_background`.
inline std::atomic<std::uint32_t> backgroundMode{0};

} // namespace pyrux
