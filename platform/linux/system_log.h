#pragma once

#include "platform/linux/file_descriptor.h"

#include <mutex>
#include <string>
#include <string_view>

namespace pyrux::platform {

/// The socket of the system's log; tests have their own.
extern const char* systemLogSocket;

/// Writes into the system's log, in the form of syslog(3), which waits for as long as nobody reads the log.
class SystemLog {
public:
    /// @return false: the log has no room. Without a log the text is lost, as it is with syslog(3).
    bool write(std::string_view text);

private:
    bool connect();

    std::mutex mutex;
    FileDescriptor socket;
    bool stream = false;
};

} // namespace pyrux::platform
