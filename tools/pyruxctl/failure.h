#pragma once

#include <stdexcept>
#include <string>

namespace pyrux::ctl {

/// What pyruxctl tells the shell.
enum class Exit {
    fine = 0,
    refused = 1,   ///< The operation gave an error code, or a script found something else than it expected.
    usage = 2,     ///< Wrong words on the command line or in a record.
    noDevice = 3,  ///< The device is not there or cannot be opened.
    notLoaded = 4, ///< The library or the simulator cannot be loaded.
};

/// Ends a command with a message and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(Exit why, const std::string& message) : std::runtime_error(message), exit(why) {}
    Exit exit;
};

class UsageError : public Failure {
public:
    explicit UsageError(const std::string& message) : Failure(Exit::usage, message) {}
};

} // namespace pyrux::ctl
