#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pyrux::ctl {

/// ASCII only: device paths.
std::string upperCase(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// A number as so many lower-case hexadecimal digits.
std::string hexadecimal(std::uint32_t value, int digits);

} // namespace pyrux::ctl
