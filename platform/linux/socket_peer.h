#pragma once

namespace pyrux::platform {

/// True once the server has accepted the connection of this client's socket. A Unix-domain socket is
/// connected, and can be written to, as soon as it stands in the server's queue; the kernel's socket
/// diagnosis tells the difference. Also true where the kernel does not offer that, or the peer has gone
/// already.
bool isAccepted(int socket);

} // namespace pyrux::platform
