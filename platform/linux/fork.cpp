#include "platform/fork.h"

#include <atomic>
#include <pthread.h>

namespace pyrux::platform {
namespace {

std::atomic<bool> forked{false};

[[maybe_unused]] const int registered = pthread_atfork(nullptr, nullptr, [] { forked = true; });

} // namespace

bool inForkedChild()
{
    return forked.load(std::memory_order_relaxed);
}

} // namespace pyrux::platform
