#include "platform/folders.h"

#include <cstdlib>

namespace pyrux::platform {

std::filesystem::path commonDataFolder()
{
    const char* chosen = std::getenv("PYRUX_DATA_DIR");
    return chosen && *chosen ? chosen : "/var/lib";
}

} // namespace pyrux::platform
