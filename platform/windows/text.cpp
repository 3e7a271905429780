#include "platform/text.h"

#include <windows.h>

namespace pyrux::platform {
namespace {

/// A half of a surrogate pair that stands alone has no place in any code page. UTF-8 as the active code page
/// would make U+FFFD of it.
std::wstring withoutLoneSurrogates(std::wstring text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IS_HIGH_SURROGATE(text[i]) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1]))
            ++i;
        else if (IS_HIGH_SURROGATE(text[i]) || IS_LOW_SURROGATE(text[i]))
            text[i] = L'?';
    }
    return text;
}

} // namespace

std::string narrow(const wchar_t* text)
{
    if (!text || !*text)
        return {};
    const std::wstring wide = withoutLoneSurrogates(text);
    // UTF-8 knows every character and refuses a replacement.
    const char* replacement = GetACP() == CP_UTF8 ? nullptr : "?";
    const auto convert = [&](char* out, int size) {
        return WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), out, size,
                                   replacement, nullptr);
    };
    std::string out(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(out.data(), static_cast<int>(out.size()));
    return out;
}

} // namespace pyrux::platform
