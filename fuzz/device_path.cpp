#include "transport/device_path.h"

#include <cstdlib>
#include <string_view>

using namespace pyrux;

/// Paths come from the system, from hosts and from files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view path(reinterpret_cast<const char*>(data), size);
    const PathIdentity whole = parseDevicePath(path);
    const PathIdentity part = parseVidPid(path);
    if (part.vid != whole.vid || part.pid != whole.pid || part.interface != -1)
        std::abort();
    if (!hasDongleMark(registryKey(path)) && hasDongleMark(path))
        std::abort();
    identityOf(path);
    return 0;
}
