#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace pyrux::fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Takes an input apart from its front. After its end come zeros.
class Input {
public:
    Input() = default;
    explicit Input(Bytes bytes) : rest(bytes) {}

    bool empty() const { return rest.empty(); }
    std::uint8_t byte()
    {
        const Bytes one = take(1);
        return one.empty() ? 0 : one.front();
    }
    /// So many bytes, or as many as there are.
    Bytes take(std::size_t count)
    {
        const Bytes taken = rest.first(std::min(count, rest.size()));
        rest = rest.subspan(taken.size());
        return taken;
    }
    Bytes takeAll() { return take(rest.size()); }

private:
    Bytes rest;
};

inline std::string_view textOf(Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace pyrux::fuzz
