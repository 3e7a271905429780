#include "platform/linux/file_descriptor.h"
#include "platform/linux/runtime_folder.h"
#include "platform/linux/socket_address.h"
#include "platform/pipe.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace pyrux::platform {
namespace {

class SocketServer final : public PipeServer {
public:
    SocketServer(FileDescriptor listening, const sockaddr_un& boundTo)
        : listener(std::move(listening)), address(boundTo)
    {
    }
    ~SocketServer() override { unlink(address.sun_path); }

    bool accept() override
    {
        do {
            client = FileDescriptor{accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)};
        } while (!client && (errno == EINTR || errno == ECONNABORTED));
        return static_cast<bool>(client);
    }

    std::optional<std::size_t> read(std::span<char> buffer) override
    {
        ssize_t length = 0;
        do {
            length = recv(client.get(), buffer.data(), buffer.size(), 0);
        } while (length < 0 && errno == EINTR);
        if (length <= 0)
            return {};
        return static_cast<std::size_t>(length);
    }

    void disconnect() override { client.reset(); }

private:
    FileDescriptor listener;
    FileDescriptor client;
    sockaddr_un address;
};

/// Held while a socket is looked at and replaced, so that of two processes that find the same stale socket
/// only one replaces it. Another process's lock ends with that process.
FileDescriptor lockRuntimeFolder()
{
    FileDescriptor folder{open(runtimeFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (folder && flock(folder.get(), LOCK_EX) != 0)
        folder.reset();
    return folder;
}

/// A server is told from the socket that a dead one has left by a connection, which the living one sees come
/// and go.
bool isStale(const sockaddr_un& address)
{
    const FileDescriptor probe{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    return isTrustedSocket(address.sun_path) && connect(probe.get(), generic(address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

bool bindTo(int listener, const sockaddr_un& address)
{
    if (bind(listener, generic(address), sizeof address) == 0)
        return true;
    return errno == EADDRINUSE && isStale(address) && unlink(address.sun_path) == 0 &&
           bind(listener, generic(address), sizeof address) == 0;
}

} // namespace

std::unique_ptr<PipeServer> PipeServer::create(std::string_view name, std::size_t)
{
    const auto address = socketAddress(name);
    if (!address || !makeRuntimeFolder())
        return nullptr;
    const FileDescriptor lock = lockRuntimeFolder();
    FileDescriptor listener{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    // The mode is set in front of the bind, so that the socket never exists with a wider one. A queue of 0
    // lets one further client wait.
    if (!lock || !listener || fchmod(listener.get(), 0600) != 0 || !bindTo(listener.get(), *address) ||
        listen(listener.get(), 0) != 0)
        return nullptr;
    return std::make_unique<SocketServer>(std::move(listener), *address);
}

} // namespace pyrux::platform
