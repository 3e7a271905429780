#pragma once

#include "transport/report.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace pyrux {

/// The digits of a text, in their order.
class Digits {
public:
    constexpr void add(std::uint8_t digit) { digits.at(used++) = digit; }
    constexpr std::uint8_t operator[](std::size_t place) const { return digits.at(place); }

    /// The number that the digits from `first` on make up.
    constexpr int number(std::size_t first) const
    {
        int value = 0;
        for (std::size_t i = first; i < used; ++i)
            value = value * 10 + digits[i];
        return value;
    }

private:
    std::array<std::uint8_t, 8> digits{};
    std::size_t used = 0;
};

/// The digit that a character stands for.
constexpr std::optional<std::uint8_t> digitOf(std::uint8_t character)
{
    if (character < '0' || character > '9')
        return std::nullopt;
    return std::uint8_t(character - '0');
}

/// A text with its digits put in the place of each '#', as a report.
constexpr Report textReport(std::string_view text, std::initializer_list<int> digits = {})
{
    Report report;
    const int* digit = digits.begin();
    for (std::size_t i = 0; i < text.size(); ++i)
        report = report.at(i + 1, text[i] == '#' ? std::uint8_t('0' + *digit++) : std::uint8_t(text[i]));
    return report;
}

/// The digits that stand in a report in the place of each '#' of a text; none when it is another text.
constexpr std::optional<Digits> digitsIn(const Reply& reply, std::string_view text)
{
    Digits digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '#') {
            if (reply[i] != std::uint8_t(text[i]))
                return std::nullopt;
        } else if (const auto digit = digitOf(reply[i])) {
            digits.add(*digit);
        } else {
            return std::nullopt;
        }
    }
    return digits;
}

} // namespace pyrux
