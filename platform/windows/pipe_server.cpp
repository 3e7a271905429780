#include "platform/pipe.h"
#include "platform/windows/handle.h"
#include "platform/windows/pipe_name.h"

namespace pyrux::platform {
namespace {

class NamedPipeServer final : public PipeServer {
public:
    explicit NamedPipeServer(Handle made) : pipe(std::move(made)) {}

    bool accept() override
    {
        if (ConnectNamedPipe(pipe.get(), nullptr))
            return true;
        switch (GetLastError()) {
        case ERROR_PIPE_CONNECTED: // came in before the call
        case ERROR_NO_DATA:        // and has gone again, which the first read tells
            return true;
        default:
            return false;
        }
    }

    std::optional<std::size_t> read(std::span<char> buffer) override
    {
        DWORD length = 0;
        if (!ReadFile(pipe.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &length, nullptr))
            return {};
        return length;
    }

    void disconnect() override { DisconnectNamedPipe(pipe.get()); }

private:
    Handle pipe;
};

} // namespace

std::unique_ptr<PipeServer> PipeServer::create(std::string_view name, std::size_t bufferSize)
{
    const auto size = static_cast<DWORD>(bufferSize);
    Handle pipe{CreateNamedPipeA(pipeName(name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                 PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, size, size, 0, nullptr)};
    if (!pipe)
        return nullptr;
    return std::make_unique<NamedPipeServer>(std::move(pipe));
}

} // namespace pyrux::platform
