#pragma once

#include <string>

namespace pyrux::platform {

/// Narrows a wide text to the system's code page: the active one on Windows, UTF-8 on Linux. Null gives the
/// empty text; a character without a place there becomes "?".
std::string narrow(const wchar_t* text);

} // namespace pyrux::platform
