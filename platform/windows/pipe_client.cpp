#include "platform/pipe.h"
#include "platform/windows/handle.h"
#include "platform/windows/pipe_name.h"

#include <algorithm>

namespace pyrux::platform {
namespace {

using std::chrono::milliseconds;

DWORD toMs(milliseconds limit)
{
    return static_cast<DWORD>(std::max<milliseconds::rep>(limit.count(), 0));
}

class NamedPipeClient final : public PipeClient {
public:
    explicit NamedPipeClient(Handle opened) : pipe(std::move(opened)) {}

    bool write(std::string_view message, milliseconds limit) override
    {
        Transfer transfer{pipe.get()};
        const BOOL done = WriteFile(pipe.get(), message.data(), static_cast<DWORD>(message.size()), nullptr,
                                    &transfer.overlapped);
        return transfer.finish(done, limit) == ERROR_SUCCESS && transfer.length == message.size();
    }

    std::optional<PipePiece> read(std::span<char> buffer, milliseconds limit) override
    {
        Transfer transfer{pipe.get()};
        const BOOL done = ReadFile(pipe.get(), buffer.data(), static_cast<DWORD>(buffer.size()), nullptr,
                                   &transfer.overlapped);
        const DWORD error = transfer.finish(done, limit);
        if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA)
            return {};
        return PipePiece{transfer.length, error == ERROR_MORE_DATA};
    }

private:
    /// One overlapped read or write, which is finished or cancelled when `finish` returns.
    struct Transfer {
        explicit Transfer(HANDLE on) : file(on) { overlapped.hEvent = event.get(); }

        DWORD finish(BOOL begun, milliseconds limit)
        {
            const DWORD error = begun ? ERROR_SUCCESS : GetLastError();
            if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING && error != ERROR_MORE_DATA)
                return error;
            if (error == ERROR_IO_PENDING && WaitForSingleObject(event.get(), toMs(limit)) != WAIT_OBJECT_0)
                CancelIoEx(file, &overlapped);
            return GetOverlappedResult(file, &overlapped, &length, TRUE) ? ERROR_SUCCESS : GetLastError();
        }

        HANDLE file;
        Handle event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        OVERLAPPED overlapped{};
        DWORD length = 0;
    };

    Handle pipe;
};

} // namespace

PipeClient::Connection PipeClient::connect(std::string_view name, milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const std::string path = pipeName(name);
    const auto deadline = Clock::now() + limit;
    bool available = false;
    Handle pipe;
    do {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        // Zero would mean the server's own time limit.
        available = WaitNamedPipeA(path.c_str(), std::max<DWORD>(toMs(left), 1)) != FALSE;
        pipe = Handle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_OVERLAPPED, nullptr));
        // Another client may be faster once the pipe is free: it is waited for again.
    } while (!pipe && available && GetLastError() == ERROR_PIPE_BUSY && Clock::now() < deadline);
    if (!pipe)
        return {available, nullptr};
    // Only in this mode a read tells that a message goes on. A server of a byte pipe refuses it, and then
    // every read is a whole message.
    DWORD mode = PIPE_READMODE_MESSAGE;
    SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr);
    return {available, std::make_unique<NamedPipeClient>(std::move(pipe))};
}

} // namespace pyrux::platform
