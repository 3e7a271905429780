#include "fuzz/support/input.h"
#include "platform/linux/keyboard_language.h"
#include "platform/linux/system_files.h"

#include <cstdlib>

using namespace pyrux;

/// The keyboard that an X server tells of: its group, then the texts of its property.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input({data, size});
    const std::size_t group = input.byte();
    const std::string layout = platform::layoutOfGroup(fuzz::textOf(input.takeAll()), group);
    if (layout.find_first_of(std::string_view(",\0", 2)) != std::string::npos)
        std::abort();
    if (layout.empty() && platform::languageOfLayout(layout) != 0)
        std::abort();
    platform::languageOfLayout(layout);
    return 0;
}
