#include "tests/stress/shortage.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace pyrux::test {
namespace {

/// One request that is to fail.
class Failing {
public:
    void begin(Kind which, std::size_t number)
    {
        left = number;
        failed = false;
        kind = static_cast<int>(which);
    }
    void end() { kind = nothing; }
    bool done() const { return failed; }

    bool refuses(Kind which)
    {
        if (kind.load(std::memory_order_relaxed) != static_cast<int>(which))
            return false;
        std::size_t now = left;
        while (now > 0 && !left.compare_exchange_weak(now, now - 1)) {
        }
        if (now == 1)
            failed = true;
        return now == 1;
    }

private:
    static constexpr int nothing = -1;

    std::atomic<int> kind{nothing};
    std::atomic<std::size_t> left{0}; ///< Requests up to the one that fails.
    std::atomic<bool> failed{false};
};

constinit Failing everybodys;
constinit thread_local Failing callers;

bool refuses(Kind kind)
{
    return callers.refuses(kind) || everybodys.refuses(kind);
}

template <class Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

Shortage::Shortage(Kind kind, std::size_t which, Whose of) : whose(of)
{
    (whose == Whose::callers ? callers : everybodys).begin(kind, which);
}

Shortage::~Shortage()
{
    (whose == Whose::callers ? callers : everybodys).end();
}

bool Shortage::felt() const
{
    return (whose == Whose::callers ? callers : everybodys).done();
}

} // namespace pyrux::test

using pyrux::test::Kind;
using pyrux::test::original;
using pyrux::test::refuses;

#define INSTEAD extern "C" __attribute__((visibility("default"))) int

INSTEAD pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*body)(void*),
                       void* argument) noexcept
{
    static auto* const real = original<decltype(pthread_create)>("pthread_create");
    return refuses(Kind::thread) ? EAGAIN : real(thread, how, body, argument);
}

INSTEAD eventfd(unsigned count, int flags) noexcept
{
    static auto* const real = original<decltype(eventfd)>("eventfd");
    if (!refuses(Kind::eventfd))
        return real(count, flags);
    errno = EMFILE;
    return -1;
}

INSTEAD socket(int domain, int type, int protocol) noexcept
{
    static auto* const real = original<decltype(socket)>("socket");
    if (!refuses(Kind::socket))
        return real(domain, type, protocol);
    errno = EMFILE;
    return -1;
}

INSTEAD open(const char* path, int flags, ...)
{
    static auto* const real = original<int(const char*, int, mode_t)>("open");
    mode_t mode = 0;
    if (flags & (O_CREAT | O_TMPFILE)) {
        std::va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    if (!refuses(Kind::open))
        return real(path, flags, mode);
    errno = EMFILE;
    return -1;
}

// All other forms of new and delete lead here.

void* operator new(std::size_t size)
{
    void* const place = refuses(Kind::memory) ? nullptr : std::malloc(size ? size : 1);
    if (!place)
        throw std::bad_alloc();
    return place;
}

void operator delete(void* place) noexcept
{
    std::free(place);
}

void operator delete(void* place, std::size_t) noexcept
{
    std::free(place);
}
