#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

/// @file
/// Reports as text, the way in which a protocol's description writes them.

namespace pyrux::sim {

/// "51 00 00 00 04" as bytes.
inline std::vector<std::uint8_t> bytesOf(const std::string& text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3)
        bytes.push_back(std::uint8_t(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

/// Bytes as such a text, without the zeros at the end.
inline std::string textOf(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty() && bytes.back() == 0)
        bytes = bytes.first(bytes.size() - 1);
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        if (!text.empty())
            text += ' ';
        text += digits;
    }
    return text;
}

} // namespace pyrux::sim
