#pragma once

#include "session.h"

#include <optional>
#include <string>
#include <vector>

namespace pyrux::ctl {

/// How a command shows what it has to say.
struct Style {
    bool json = false;
    bool quiet = false;
};

/// One command: on the command line, or a line of a script.
struct Command {
    std::string name;               ///< "list", "info", "watch", "lights", "run", or a model.
    std::vector<std::string> words; ///< An operation and its arguments; the script of "run".
    std::string device;             ///< Path; empty: the only one.
    std::optional<double> seconds;  ///< A command that goes on ends after these ...
    std::optional<unsigned> count;  ///< ... or after so many events or measurements.
    Style style;
};

struct CommandLine {
    Setup setup;
    Command command;
    std::optional<std::string> text; ///< To be shown instead: help or version.
};

/// Takes a command line apart. Throws UsageError.
CommandLine parseCommandLine(const std::vector<std::string>& words);

/// The same for a line of a script, which has the devices and the style that the script was given.
CommandLine parseScriptLine(const std::vector<std::string>& words, const Style& style);

} // namespace pyrux::ctl
