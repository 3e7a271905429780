#include "platform/profile_file.h"

#include <array>
#include <windows.h>

namespace pyrux::platform {
namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

int readProfileInt(const std::filesystem::path& file, const std::string& section, const std::string& key,
                   int fallback)
{
    // GetPrivateProfileIntA makes 0 of a value without a number; here that is the fallback.
    std::array<char, 32> value{};
    const std::string name = file.string();
    GetPrivateProfileStringA(section.c_str(), key.c_str(), "", value.data(), static_cast<DWORD>(value.size()),
                             name.c_str());
    if (!isDigit(value[value[0] == '-' ? 1 : 0]))
        return fallback;
    return static_cast<int>(GetPrivateProfileIntA(section.c_str(), key.c_str(), fallback, name.c_str()));
}

} // namespace pyrux::platform
