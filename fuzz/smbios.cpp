#include "platform/linux/smbios.h"

#include <cstdlib>

using namespace pyrux::platform;

/// The tables come from the firmware.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto module = firstMemoryModule({data, size});
    if (module &&
        (module->bytes == 0 || module->manufacturer.size() > size || module->partNumber.size() > size))
        std::abort();
    return 0;
}
