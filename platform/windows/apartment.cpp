#include "platform/apartment.h"

#include <objbase.h>
#include <windows.h>

namespace pyrux::platform {
namespace {

thread_local int entered = 0;

} // namespace

void enterApartment()
{
    // Fails where the host has put the thread into a single-threaded apartment; COM then counts no entry.
    if (SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
        ++entered;
}

void leaveApartment()
{
    if (entered == 0)
        return;
    --entered;
    CoUninitialize();
}

} // namespace pyrux::platform
