#include "text.h"

#include <algorithm>

namespace pyrux::ctl {

namespace {

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

std::string upperCase(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), upper);
    return result;
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, upper, upper);
}

std::string hexadecimal(std::uint32_t value, int digits)
{
    std::string text;
    while (digits-- > 0)
        text += "0123456789abcdef"[value >> (4 * digits) & 15];
    return text;
}

} // namespace pyrux::ctl
