#include "platform/debug_output.h"

#include <windows.h>

namespace pyrux::platform {

void debugOutput(const std::string& text)
{
    OutputDebugStringA(text.c_str());
}

} // namespace pyrux::platform
