#pragma once

#include "platform/linux/file_descriptor.h"
#include "platform/pipe.h"

#include <memory>

namespace pyrux::platform {

/// The client's end of a pipe, on a socket of type SOCK_SEQPACKET that is connected already.
std::unique_ptr<PipeClient> clientOn(FileDescriptor connected);

} // namespace pyrux::platform
