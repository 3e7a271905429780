#include "platform/profile_file.h"

#include "fuzz/support/memory_file.h"

#include <cstdlib>

using namespace pyrux;

/// INI files lie where hosts and users write them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile& file = *new fuzz::MemoryFile;
    file.hold({data, size});
    const int number = platform::readProfileInt(file.path(), "PYRUX", "debug", -7);
    // Names mean the same in any case, and what is found does not depend on what else would do.
    if (platform::readProfileInt(file.path(), "pyrux", "DEBUG", -7) != number)
        std::abort();
    const int other = platform::readProfileInt(file.path(), "PYRUX", "debug", 9);
    if (other != number && (other != 9 || number != -7))
        std::abort();
    // No line can hold this name.
    if (platform::readProfileInt(file.path(), "PYRUX", "de\nbug", 3) != 3)
        std::abort();
    return 0;
}
