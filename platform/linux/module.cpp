#include "platform/module.h"

namespace pyrux::platform {

void keepLoaded()
{
    // The library is linked so that dlclose leaves it in the process.
}

} // namespace pyrux::platform
