#include "core/debug_console.h"

#include <cstdlib>

using namespace pyrux;

/// Commands come from whoever opens the console's pipe.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view command(reinterpret_cast<const char*>(data), size);
    const ConsoleEffect effect = interpretConsoleCommand(command, {1, 1});
    const bool changes = effect.enabled || effect.type;
    if (changes && !effect.reply)
        std::abort();
    if (effect.enabled && *effect.enabled != 0 && *effect.enabled != 1)
        std::abort();
    if (effect.type && *effect.type != 1 && *effect.type != 2)
        std::abort();
    return 0;
}
