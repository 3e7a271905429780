#pragma once

#include <string>
#include <string_view>

namespace pyrux::platform {

inline std::string pipeName(std::string_view name)
{
    return "\\\\.\\pipe\\" + std::string(name);
}

} // namespace pyrux::platform
