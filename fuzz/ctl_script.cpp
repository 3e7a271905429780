#include "fuzz/support/input.h"
#include "tools/pyruxctl/command_line.h"
#include "tools/pyruxctl/script.h"

#include <cstdlib>

using namespace pyrux;

/// A line of a script, up to the command that would be run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        const std::vector<std::string> words = ctl::splitWords(fuzz::textOf({data, size}));
        if (words.empty())
            return 0;
        const ctl::CommandLine line = ctl::parseScriptLine(words, {});
        if (!line.text && line.command.name.empty())
            std::abort();
    } catch (const ctl::Failure& failure) {
        if (*failure.what() == '\0')
            std::abort();
    }
    return 0;
}
