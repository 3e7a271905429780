#include "platform/fork.h"

namespace pyrux::platform {

/// The system does not know it.
bool inForkedChild()
{
    return false;
}

} // namespace pyrux::platform
