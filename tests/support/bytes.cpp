#include "tests/support/bytes.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace pyrux::test {

ByteVector bytes(std::string_view text)
{
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits), [](unsigned char c) { return !std::isspace(c); });
    if (digits.size() % 2 != 0 ||
        !std::ranges::all_of(digits, [](unsigned char c) { return std::isxdigit(c); }))
        throw std::invalid_argument("no bytes: " + std::string(text));
    ByteVector result;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        result.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return result;
}

std::string hex(std::span<const std::uint8_t> values)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t value : values) {
        if (!text.empty())
            text += ' ';
        text += digits[value >> 4];
        text += digits[value & 15];
    }
    return text;
}

std::vector<std::string> reports(std::string_view text)
{
    std::vector<std::string> pieces;
    while (true) {
        const std::size_t bar = text.find('|');
        std::string_view piece = text.substr(0, bar);
        while (!piece.empty() && piece.front() == ' ')
            piece.remove_prefix(1);
        while (!piece.empty() && piece.back() == ' ')
            piece.remove_suffix(1);
        if (!piece.empty())
            pieces.emplace_back(piece);
        if (bar == std::string_view::npos)
            return pieces;
        text.remove_prefix(bar + 1);
    }
}

std::string shortened(std::span<const std::uint8_t> payload)
{
    while (payload.size() > 1 && payload.back() == 0)
        payload = payload.first(payload.size() - 1);
    return hex(payload);
}

std::string wire(std::string_view text)
{
    std::vector<std::string> pieces;
    for (const std::string& piece : reports(text))
        pieces.push_back(piece.starts_with('[') ? piece : shortened(bytes(piece)));
    return joined(pieces);
}

std::string joined(const std::vector<std::string>& pieces)
{
    std::string text;
    for (const std::string& piece : pieces) {
        if (!text.empty() && !piece.empty())
            text += " | ";
        text += piece;
    }
    return text;
}

std::string hexByte(int value)
{
    const auto byte = std::uint8_t(value);
    return hex({&byte, 1});
}

std::string times(std::size_t count, const std::string& bytes)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + bytes;
    return text;
}

std::string counting(int first, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + hexByte(first + int(i));
    return text;
}

} // namespace pyrux::test
