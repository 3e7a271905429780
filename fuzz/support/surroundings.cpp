#include "fuzz/support/surroundings.h"

#include "core/log.h"

#include <cstdio>
#include <cstdlib>

namespace pyrux::fuzz {

void beAlone()
{
    setenv("PYRUX_DEBUG_OUTPUT", "none", 1);
    setenv("PYRUX_RUNTIME_DIR", "/nonexistent", 1);
    setenv("PYRUX_DATA_DIR", "/nonexistent", 1);
    unsetenv("XDG_CURRENT_DESKTOP");
    unsetenv("PYRUX_SIMULATE");
    debugEnabled = 0;
    if (!std::freopen("/dev/null", "w", stdout))
        std::abort();
}

} // namespace pyrux::fuzz
