#pragma once

#include "call.h"
#include "command_line.h"
#include "failure.h"

namespace pyrux::ctl {

/// Runs one command and shows its results.
Exit execute(Session& session, const Command& command, const Documents& documents);

/// An operation's result: its code, and what it gave.
struct Result {
    std::int32_t code = 0;
    Json outputs; ///< By name.
};

/// Calls an operation of a model and shows nothing. Throws Failure.
Result callOperation(Session& session, const Command& command, const Documents& documents);

/// Shows what an operation gave; an error code goes to the standard error output.
void showResult(const Command& command, const Result& result);

/// The one output, several outputs by name, or null.
Json valueOf(const Result& result);

/// "rd210 changeDpiLevel: -2 E_INVALID_SET"
std::string resultLine(const Command& command, std::int32_t code);

/// One output under its name; a record field by field. Without the line feed at the end.
std::string outputText(const std::string& name, const Json& value);

/// Shows an event as one line.
void showEvent(const Session& session, const Event& event, const Style& style);

} // namespace pyrux::ctl
