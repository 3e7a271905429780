#pragma once

#include <cstdlib>
#include <string_view>

namespace pyrux::platform {

/// A variable of the environment; empty without one. A program that has more rights than who has started it,
/// by its set-user-ID bit or its capabilities, finds none: the library would otherwise write with these
/// rights where that user tells it to.
inline const char* environment(const char* name)
{
    const char* const value = secure_getenv(name);
    return value ? value : "";
}

} // namespace pyrux::platform
