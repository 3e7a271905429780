#pragma once

#include <functional>
#include <future>
#include <vector>

namespace pyrux::test {

/// Runs scenarios that spend their time waiting, all at once.
inline void together(const std::vector<std::function<void()>>& scenarios)
{
    std::vector<std::future<void>> running;
    for (const auto& scenario : scenarios)
        running.push_back(std::async(std::launch::async, scenario));
    for (auto& each : running)
        each.get();
}

} // namespace pyrux::test
