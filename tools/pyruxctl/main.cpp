#include "commands.h"
#include "console.h"
#include "script.h"

namespace {

using namespace pyrux::ctl;

Exit run(const std::vector<std::string>& words)
{
    const CommandLine line = parseCommandLine(words);
    console::begin(line.setup.debug);
    if (line.text) {
        console::print(*line.text);
        return Exit::fine;
    }
    const Command& command = line.command;
    if (command.name == "run" && command.words.size() != 1)
        throw UsageError("run takes one script, or - for the standard input");
    Session session(line.setup);
    return command.name == "run" ? runScript(session, command.words.front(), command.style)
                                 : execute(session, command, {});
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return static_cast<int>(run({argv + 1, argv + argc}));
    } catch (const Failure& failure) {
        console::note(std::string("pyruxctl: ") + failure.what());
        return static_cast<int>(failure.exit);
    }
}
