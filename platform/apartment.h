#pragma once

namespace pyrux::platform {

/// Enters the multithreaded COM apartment on the calling thread. Nothing on systems without COM.
void enterApartment();

/// Leaves it. Does nothing on a thread that has not entered: a host's own apartment stays as the host made
/// it.
void leaveApartment();

} // namespace pyrux::platform
