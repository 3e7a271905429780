#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// @file
/// The debug console: a pipe "mypip" through which a technician switches the log while the host runs.
/// Commands go in by the pipe, replies come out at the debug output.

namespace pyrux {

namespace platform {
class PipeServer;
}

/// The log's settings as a command finds them.
struct ConsoleSettings {
    std::int32_t enabled = 1;
    std::int32_t type = 1;
};

/// What a command does.
struct ConsoleEffect {
    std::optional<std::int32_t> enabled; ///< New value of `debugEnabled`.
    std::optional<std::int32_t> type;    ///< New value of `debugType`.
    std::optional<std::string> reply;    ///< No value: no such command.

    bool operator==(const ConsoleEffect&) const = default;
};

/// Interprets one command. Queries are compared as a whole, settings by their first characters, so that a
/// line feed after "debug=1" does no harm and one after "debug?" makes it unknown; deliberate.
ConsoleEffect interpretConsoleCommand(std::string_view command, ConsoleSettings now);

/// Answers the commands of one client until it has gone.
void serveConsoleClient(platform::PipeServer& server);

/// Starts the console's thread, which lives to the end of the process. Without the pipe the thread ends at
/// once.
/// @return false when the thread cannot be created
bool startDebugConsole();

} // namespace pyrux
