#pragma once

#include <cstddef>
#include <string>

namespace pyrux::test {

/// Takes the output reports of a device since the last call, as `wire` writes them. Waits until there are
/// `atLeast`. A report that is not 65 bytes long or has a report id stands in full in brackets.
std::string takeWritten(const std::string& path, std::size_t atLeast = 0);

/// Lanes drain in order once the queue is at work, but the first one that gets something may go out first:
/// puts the groups of a text into order. A group is one report, or the reports 00, 01 and 82 of a port.
std::string sortedGroups(const std::string& text);

} // namespace pyrux::test
