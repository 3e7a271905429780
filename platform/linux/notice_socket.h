#pragma once

#include "platform/device_notices.h"
#include "platform/linux/file_descriptor.h"

#include <optional>
#include <string>
#include <string_view>

namespace pyrux::platform {

/// One device notice.
struct Notice {
    std::string name;
    DeviceChange change = DeviceChange::arrival;
};

/// A message of the notice socket: "add " or "remove ", and a device interface name. No value: anything else.
std::optional<Notice> parseNotice(std::string_view message);

/// The end of a server of notices that stands beside udev, for devices that are not on the kernel's USB. It
/// is a socket of the type SOCK_SEQPACKET, one notice per message, at the path that PYRUX_DEVICE_NOTICES
/// holds,
/// "@" in front of a name without a file.
class NoticeSocket {
public:
    /// Connects to the server, if the variable names one.
    NoticeSocket();

    /// -1 while there is no server.
    int descriptor() const { return connection.get(); }

    /// Takes a message. No value: none is waiting, it makes no sense, or the server has gone.
    std::optional<Notice> take();

private:
    FileDescriptor connection;
};

} // namespace pyrux::platform
