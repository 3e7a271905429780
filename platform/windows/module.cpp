#include "platform/module.h"

#include <windows.h>

namespace pyrux::platform {
namespace {

const char addressInside = 0;

} // namespace

void keepLoaded()
{
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, &addressInside,
                       &module);
}

} // namespace pyrux::platform
