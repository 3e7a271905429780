#include "tests/hotplug/footprint.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <filesystem>
#include <iterator>
#include <malloc.h>
#endif

namespace pyrux::test {

#ifdef _WIN32
Footprint footprint()
{
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {handles, 0};
}
#else
Footprint footprint()
{
    return {std::size_t(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {})),
            mallinfo2().uordblks};
}
#endif

} // namespace pyrux::test
