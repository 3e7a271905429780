#include "platform/folders.h"

#include "platform/linux/environment.h"

namespace pyrux::platform {

std::filesystem::path commonDataFolder()
{
    const char* const chosen = environment("PYRUX_DATA_DIR");
    return *chosen ? chosen : "/var/lib";
}

} // namespace pyrux::platform
