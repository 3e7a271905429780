#include "tests/hidraw/no_threads.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace pyrux::test {
namespace {

std::atomic<bool> refused{false};

} // namespace

NoThreads::NoThreads()
{
    refused = true;
}

NoThreads::~NoThreads()
{
    refused = false;
}

} // namespace pyrux::test

#ifdef PYRUX_UNSANITIZED
extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*body)(void*), void* argument) noexcept
{
    if (pyrux::test::refused)
        return EAGAIN;
    static auto* const original =
        reinterpret_cast<decltype(pthread_create)*>(dlsym(RTLD_NEXT, "pthread_create"));
    return original(thread, how, body, argument);
}
#endif
