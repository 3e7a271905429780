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
    return {handles, 0, 0};
}
#else
namespace {

std::size_t entriesOf(const char* folder)
{
    return std::size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
}

} // namespace

Footprint footprint()
{
    return {entriesOf("/proc/self/fd"), mallinfo2().uordblks, entriesOf("/proc/self/task")};
}
#endif

} // namespace pyrux::test
