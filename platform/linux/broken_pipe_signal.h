#pragma once

#include <csignal>
#include <ctime>
#include <pthread.h>

namespace pyrux::platform {

/// Keeps SIGPIPE from the calling thread for the object's life and takes away the one that its writes have
/// raised: a reader that has gone must not end the host.
class BrokenPipeSignalBlocked {
public:
    BrokenPipeSignalBlocked()
    {
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        pendingBefore = isPending();
        pthread_sigmask(SIG_BLOCK, &pipeSignal, &maskBefore);
    }
    ~BrokenPipeSignalBlocked()
    {
        constexpr timespec atOnce{};
        if (!pendingBefore && isPending())
            sigtimedwait(&pipeSignal, nullptr, &atOnce);
        pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    }
    BrokenPipeSignalBlocked(const BrokenPipeSignalBlocked&) = delete;
    BrokenPipeSignalBlocked& operator=(const BrokenPipeSignalBlocked&) = delete;

private:
    static bool isPending()
    {
        sigset_t pending;
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t pipeSignal;
    sigset_t maskBefore;
    bool pendingBefore;
};

} // namespace pyrux::platform
