#include "platform/keyboard_language.h"

#include <windows.h>

namespace pyrux::platform {

ThreadId windowThread(void* window)
{
    return GetWindowThreadProcessId(static_cast<HWND>(window), nullptr);
}

std::uint16_t keyboardLanguage(ThreadId thread)
{
    const auto layout = reinterpret_cast<std::uintptr_t>(GetKeyboardLayout(thread));
    return PRIMARYLANGID(LOWORD(layout));
}

} // namespace pyrux::platform
