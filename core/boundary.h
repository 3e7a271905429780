#pragma once

#include <exception>
#include <utility>

/// @file
/// What is thrown inside stays inside: neither a host's call nor a thread of the library's ends by an exception.

namespace pyrux {

/// Runs the body of what a host has called. Where the system has no room for something that it needs, such as
/// memory, the call ends with `failed`.
template <class Result, class Body>
Result atBoundary(Result failed, Body&& body)
{
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception&) {
        return failed;
    }
}

/// Takes one step of something that goes on whatever becomes of the step.
/// @return false: it has been broken off
template <class Step>
bool attempt(Step&& step)
{
    return atBoundary(false, [&] {
        std::forward<Step>(step)();
        return true;
    });
}

} // namespace pyrux
