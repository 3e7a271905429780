#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

/// @file
/// Times. Upper limits leave room for a machine that is busy with something else; where a limit is short, the
/// fastest of several rounds is held against it.

namespace pyrux::test {

/// Milliseconds that a call takes.
template <class Call>
std::int64_t milliseconds(Call&& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
        .count();
}

/// The fastest of several rounds, each of which tells its milliseconds.
template <class Round>
std::int64_t fastestOf(int rounds, Round&& round)
{
    std::int64_t best = std::numeric_limits<std::int64_t>::max();
    for (int i = 0; i < rounds; ++i)
        best = std::min(best, std::int64_t(round()));
    return best;
}

} // namespace pyrux::test
