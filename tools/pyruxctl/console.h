#pragma once

#include <chrono>
#include <string_view>

/// @file
/// The terminal. The library writes a few lines of its own to the standard output; so that a pipe after
/// pyruxctl gets results alone, they go elsewhere.

namespace pyrux::ctl::console {

/// Takes the standard output for pyruxctl's results. What the library writes there from now on is dropped, or
/// goes to the standard error output.
void begin(bool showLibrary);

/// Writes a text and a line feed to the standard output, in one piece.
void print(std::string_view text);

/// The same to the standard error output: messages, and the bytes on the wire.
void note(std::string_view text);

/// Whether the standard output is a terminal that shows colors and can be drawn over. NO_COLOR in the
/// environment denies it.
bool isScreen();

/// From now on Ctrl-C does not end the process but makes `interrupted` true.
void catchInterrupt();
bool interrupted();

/// Sleeps. False: Ctrl-C has ended it.
bool sleepUntil(std::chrono::steady_clock::time_point end);

} // namespace pyrux::ctl::console
