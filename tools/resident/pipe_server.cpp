#include "tools/resident/pipe_server.h"

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

namespace pyrux::peer {
namespace {

constexpr std::size_t longestMessage = 65536;

#ifdef _WIN32

std::string pipePath(std::string_view name)
{
    return "\\\\.\\pipe\\" + std::string(name);
}

HANDLE openPipe(std::string_view name)
{
    return CreateFileA(pipePath(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
}

/// One overlapped operation that a stop event ends.
class Operation {
public:
    Operation(HANDLE on, HANDLE stopEvent) : file(on), stop(stopEvent)
    {
        overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~Operation() { CloseHandle(overlapped.hEvent); }

    bool finish(BOOL begun)
    {
        if (!begun && GetLastError() == ERROR_PIPE_CONNECTED)
            return true;
        if (!begun && GetLastError() != ERROR_IO_PENDING)
            return false;
        const HANDLE either[]{overlapped.hEvent, stop};
        if (WaitForMultipleObjects(2, either, FALSE, INFINITE) != WAIT_OBJECT_0)
            CancelIoEx(file, &overlapped);
        return GetOverlappedResult(file, &overlapped, &length, TRUE) != FALSE;
    }

    OVERLAPPED overlapped{};
    DWORD length = 0;

private:
    HANDLE file;
    HANDLE stop;
};

class Connection {
public:
    Connection(HANDLE accepted, HANDLE stopEvent) : pipe(accepted), stop(stopEvent) {}

    std::string receive()
    {
        std::string message(longestMessage, '\0');
        Operation reading(pipe, stop);
        const bool read = reading.finish(
            ReadFile(pipe, message.data(), static_cast<DWORD>(message.size()), nullptr, &reading.overlapped));
        message.resize(read ? reading.length : 0);
        return message;
    }

    void send(std::string_view message)
    {
        Operation writing(pipe, stop);
        writing.finish(WriteFile(pipe, message.data(), static_cast<DWORD>(message.size()), nullptr,
                                 &writing.overlapped));
    }

private:
    HANDLE pipe;
    HANDLE stop;
};

class Listener {
public:
    Listener(std::string pipeName, bool busy) : name(std::move(pipeName)), instance(makeInstance())
    {
        if (busy)
            occupant = openPipe(name);
    }
    ~Listener()
    {
        free();
        CloseHandle(instance);
        CloseHandle(stop);
    }

    bool accept()
    {
        Operation connecting(instance, stop);
        return connecting.finish(ConnectNamedPipe(instance, &connecting.overlapped));
    }
    Connection connection() { return {instance, stop}; }

    /// The next instance is there before the old one goes, so that the pipe is never missing; and the old one
    /// is closed, not disconnected, so that its client can still read what was sent.
    void nextClient() { CloseHandle(std::exchange(instance, makeInstance())); }

    void free()
    {
        if (occupant != INVALID_HANDLE_VALUE)
            CloseHandle(std::exchange(occupant, INVALID_HANDLE_VALUE));
    }
    void end() { SetEvent(stop); }

private:
    HANDLE makeInstance() const
    {
        const HANDLE made =
            CreateNamedPipeA(pipePath(name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                             PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES,
                             longestMessage, longestMessage, 0, nullptr);
        if (made == INVALID_HANDLE_VALUE)
            throw std::runtime_error("cannot make the pipe " + name);
        return made;
    }

    std::string name;
    HANDLE instance;
    HANDLE occupant = INVALID_HANDLE_VALUE;
    HANDLE stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

#else

/// Where the library looks for sockets.
std::filesystem::path runtimeFolder()
{
    if (const char* chosen = std::getenv("PYRUX_RUNTIME_DIR"); chosen && *chosen)
        return chosen;
    if (const char* session = std::getenv("XDG_RUNTIME_DIR"); session && *session)
        return std::filesystem::path(session) / "pyrux";
    return "/run/pyrux";
}

sockaddr_un socketAddress(std::string_view name)
{
    const std::string path = runtimeFolder() / name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

/// False when the stop event came first.
bool waitReadable(int descriptor, int stop)
{
    pollfd either[]{{descriptor, POLLIN, 0}, {stop, POLLIN, 0}};
    poll(either, 2, -1);
    return either[1].revents == 0;
}

class Connection {
public:
    Connection(int accepted, int stopEvent) : socket(accepted), stop(stopEvent) {}

    std::string receive()
    {
        std::string message(longestMessage, '\0');
        const ssize_t length =
            waitReadable(socket, stop) ? recv(socket, message.data(), message.size(), 0) : 0;
        message.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        return message;
    }

    void send(std::string_view message) { ::send(socket, message.data(), message.size(), MSG_NOSIGNAL); }

private:
    int socket;
    int stop;
};

class Listener {
public:
    /// A busy server is one that does not accept.
    Listener(const std::string& name, bool) : address(socketAddress(name))
    {
        makeRoom();
        if (bind(listener, generic(address), sizeof address) != 0 || listen(listener, 5) != 0)
            throw std::runtime_error("cannot make the socket " + name);
    }
    ~Listener()
    {
        unlink(address.sun_path);
        close(listener);
        close(stop);
    }

    bool accept()
    {
        if (!waitReadable(listener, stop))
            return false;
        client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        return client >= 0;
    }
    Connection connection() { return {client, stop}; }
    void nextClient() { close(client); }
    void free() {}
    void end() { eventfd_write(stop, 1); }

private:
    /// The folder, for its owner alone; a socket that nobody serves any more is in the way.
    void makeRoom() const
    {
        std::error_code ignored;
        const std::filesystem::path folder = runtimeFolder();
        if (std::filesystem::create_directories(folder, ignored))
            std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
        const int probe = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        if (connect(probe, generic(address), sizeof address) != 0 && errno == ECONNREFUSED)
            unlink(address.sun_path);
        close(probe);
    }

    sockaddr_un address;
    int listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    int client = -1;
    int stop = eventfd(0, EFD_CLOEXEC);
};

#endif

} // namespace

struct PipeServer::State {
    State(std::string name, Script toRun, bool isBusy, std::function<void()> toTell)
        : script(std::move(toRun)), tell(std::move(toTell)), busy(isBusy), listener(std::move(name), isBusy),
          thread([this] { run(); })
    {
    }
    ~State()
    {
        {
            const std::lock_guard lock(mutex);
            ending = true;
        }
        changed.notify_all();
        listener.end();
        thread.join();
    }

    void run()
    {
        {
            std::unique_lock lock(mutex);
            const bool wasBusy = busy;
            changed.wait(lock, [&] { return !busy || ending; });
            if (ending)
                return;
            if (wasBusy)
                leaveOccupant();
        }
        while (listener.accept()) {
            Served client(listener.connection());
            script(client);
            listener.nextClient();
            if (tell)
                tell();
        }
    }

    void leaveOccupant()
    {
        listener.free();
#ifdef _WIN32
        listener.nextClient();
#endif
    }

    struct Served final : Client {
        explicit Served(Connection accepted) : connection(accepted) {}
        std::string receive() override { return connection.receive(); }
        void send(std::string_view message) override { connection.send(message); }

        Connection connection;
    };

    const Script script;
    const std::function<void()> tell;
    std::mutex mutex;
    std::condition_variable changed;
    bool busy;
    bool ending = false;
    Listener listener;
    std::thread thread;
};

PipeServer::PipeServer(std::string name, Script script, Start start, std::function<void()> served)
    : state(std::make_unique<State>(std::move(name), std::move(script), start == Start::busy,
                                    std::move(served)))
{
}

PipeServer::~PipeServer() = default;

void PipeServer::becomeFree()
{
    const std::lock_guard lock(state->mutex);
    state->busy = false;
    state->changed.notify_all();
}

} // namespace pyrux::peer
