#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// What passes between a host and a power supply: short texts in brackets.

namespace pyrux::test {

/// A text as bytes in hexadecimal, for a scripted device: "[MQ]" is "5B 4D 51 5D".
std::string ascii(std::string_view text);

/// Takes the reports to a supply since the last call as texts, one from the next by " | ": "[M5] | [MQ]".
/// Waits until there are `atLeast`. One that is not 17 bytes long, has a report id, or has anything but zeros
/// after the text stands in full in braces, in hexadecimal.
std::string takeTexts(const std::string& path, std::size_t atLeast = 0);

} // namespace pyrux::test
