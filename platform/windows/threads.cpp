#include "platform/threads.h"

#include "platform/module.h"

namespace pyrux::platform {

struct ThreadStart::Before {};

ThreadStart::ThreadStart()
{
    // A thread whose code has been unloaded would take the host with it.
    [[maybe_unused]] static const bool kept = (keepLoaded(), true);
}

ThreadStart::~ThreadStart() = default;

} // namespace pyrux::platform
