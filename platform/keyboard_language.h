#pragma once

#include "platform/thread_messages.h"

#include <cstdint>

/// @file
/// The language of the keyboard that a window has.

namespace pyrux::platform {

/// The thread that a window belongs to; 0 when the window is none, and on Linux, where windows have none.
ThreadId windowThread(void* window);

/// The primary language id (Windows' numbers) of a thread's keyboard layout; on Linux, where all windows have
/// one, that of the X server's current layout, or of the layout that the system is set up with. 0: not known.
std::uint16_t keyboardLanguage(ThreadId thread);

} // namespace pyrux::platform
