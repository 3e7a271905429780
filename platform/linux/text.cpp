#include "platform/text.h"

#include <cstdint>

namespace pyrux::platform {
namespace {

bool isCharacter(std::uint32_t code)
{
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code <= 0x10FFFF && !surrogate;
}

void appendUtf8(std::string& out, std::uint32_t code)
{
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

} // namespace

std::string narrow(const wchar_t* text)
{
    std::string out;
    for (; text && *text; ++text) {
        const auto code = static_cast<std::uint32_t>(*text);
        appendUtf8(out, isCharacter(code) ? code : U'?');
    }
    return out;
}

} // namespace pyrux::platform
