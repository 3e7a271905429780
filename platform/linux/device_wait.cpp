#include "platform/device_wait.h"

#include "platform/linux/file_descriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/eventfd.h>
#include <unistd.h>

namespace pyrux::platform {
namespace {

constexpr std::string_view nodes = "/dev/hidraw";

class NodeWait final : public DeviceWait {
public:
    NodeWait(FileDescriptor node, FileDescriptor wakeUp) : node(std::move(node)), wakeUp(std::move(wakeUp)) {}

    void mark() override
    {
        std::array<char, 4096> report;
        // The kernel keeps 64 reports at most; a device that is never silent ends this all the same.
        for (int i = 0; i < 128 && read(node.get(), report.data(), report.size()) > 0; ++i) {
        }
    }

    bool wait(std::chrono::milliseconds limit) override
    {
        std::array<pollfd, 2> ready{{{node.get(), POLLIN, 0}, {wakeUp.get(), POLLIN, 0}}};
        const auto time = std::clamp<std::chrono::milliseconds::rep>(limit.count(), 0, 3600'000);
        // A signal ends it too, which costs the caller one look.
        return poll(ready.data(), ready.size(), static_cast<int>(time)) != 0;
    }

    void wake() override { eventfd_write(wakeUp.get(), 1); }

private:
    FileDescriptor node;
    FileDescriptor wakeUp; ///< Never read, so that it stays readable.
};

} // namespace

std::unique_ptr<DeviceWait> DeviceWait::open(const std::string& path)
{
    if (!path.starts_with(nodes))
        return nullptr;
    FileDescriptor node{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    FileDescriptor wakeUp{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    if (!node || !wakeUp)
        return nullptr;
    return std::make_unique<NodeWait>(std::move(node), std::move(wakeUp));
}

} // namespace pyrux::platform
