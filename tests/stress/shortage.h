#pragma once

#include <cstddef>

namespace pyrux::test {

/// What the system can be short of.
enum class Kind { thread, eventfd, socket, open, memory };

/// Whose requests count.
enum class Whose { callers, everybodys };

/// Lets one request to the system fail: the N-th of a kind from now on, counted from 1, until the object goes.
class Shortage {
public:
    Shortage(Kind kind, std::size_t which, Whose whose = Whose::callers);
    ~Shortage();
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;

    /// Whether there was that request: it has failed.
    bool felt() const;

private:
    const Whose whose;
};

} // namespace pyrux::test
