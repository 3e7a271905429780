#pragma once

namespace pyrux::test {

/// While it lives, the process can start no further thread.
class NoThreads {
public:
    NoThreads();
    ~NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
};

} // namespace pyrux::test
