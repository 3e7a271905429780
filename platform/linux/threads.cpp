#include "platform/threads.h"

#include <csignal>
#include <pthread.h>

namespace pyrux::platform {

struct ThreadStart::Before {
    sigset_t blocked;
};

ThreadStart::ThreadStart() : before(std::make_unique<Before>())
{
    sigset_t own;
    sigfillset(&own);
    // Blocked, these would end the process without their handler.
    for (const int mistake : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        sigdelset(&own, mistake);
    pthread_sigmask(SIG_SETMASK, &own, &before->blocked);
}

ThreadStart::~ThreadStart()
{
    pthread_sigmask(SIG_SETMASK, &before->blocked, nullptr);
}

} // namespace pyrux::platform
