#include "tests/support/data_folder.h"

#include <cstdlib>

namespace pyrux::test {

std::filesystem::path dataFolder()
{
#ifdef _WIN32
    const char* folder = std::getenv("ProgramData");
    return folder ? folder : "C:\\ProgramData";
#else
    return std::getenv("PYRUX_DATA_DIR");
#endif
}

} // namespace pyrux::test
