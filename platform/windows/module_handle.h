#pragma once

#include <windows.h>

namespace pyrux::platform {

/// The module that this code is in.
inline HMODULE ownModule()
{
    static const char inside = 0;
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       &inside, &module);
    return module;
}

} // namespace pyrux::platform
