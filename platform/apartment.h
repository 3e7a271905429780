#pragma once

namespace pyrux::platform {

/// Enters the multithreaded COM apartment on the calling thread, or leaves it. Nothing on systems without
/// COM.
void enterApartment();
void leaveApartment();

} // namespace pyrux::platform
