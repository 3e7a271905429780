#pragma once

#include <stdexcept>
#include <string>

namespace pyrux::gadget {

/// What pyrux-gadget tells the shell.
enum class Exit {
    fine = 0,         ///< Ended by "quit" or a signal, everything taken down.
    refused = 1,      ///< The system refused something, named in the message.
    usage = 2,        ///< Wrong words on the command line.
    noController = 3, ///< This machine cannot present a device: no gadget interface, no controller, no right.
};

/// Ends the program with a message and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(Exit why, const std::string& message) : std::runtime_error(message), exit(why) {}
    Exit exit;
};

} // namespace pyrux::gadget
