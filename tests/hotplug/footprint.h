#pragma once

#include <cstddef>

namespace pyrux::test {

/// What a process has in use. A system without such a number gives 0.
struct Footprint {
    std::size_t files = 0; ///< Open files or handles.
    std::size_t bytes = 0; ///< Allocated memory.
    std::size_t threads = 0;
};

Footprint footprint();

} // namespace pyrux::test
