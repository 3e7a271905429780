#include "fuzz/support/memory_file.h"

#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace pyrux::fuzz {

MemoryFile::MemoryFile()
    : descriptor(memfd_create("input", MFD_CLOEXEC)), name("/proc/self/fd/" + std::to_string(descriptor))
{
    if (descriptor < 0)
        std::abort();
}

void MemoryFile::hold(Bytes bytes) const
{
    if (ftruncate(descriptor, 0) != 0 ||
        pwrite(descriptor, bytes.data(), bytes.size(), 0) != ssize_t(bytes.size()))
        std::abort();
}

} // namespace pyrux::fuzz
