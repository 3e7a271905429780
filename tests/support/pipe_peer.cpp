#include "tests/support/pipe_peer.h"

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

namespace pyrux::test {
namespace {

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

#else

sockaddr_un socketAddress(std::string_view name)
{
    const std::string path = std::filesystem::path(std::getenv("PYRUX_RUNTIME_DIR")) / name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

#endif

} // namespace

struct PipePeer::State {
    State(std::string name, const Script& script, Start start)
        : server(
              std::move(name),
              [this, script](Client& client) {
                  Recorded recorded{*this, client};
                  script(recorded);
              },
              start,
              [this] {
                  const std::lock_guard lock(mutex);
                  ++served;
                  changed.notify_all();
              })
    {
    }

    struct Recorded final : Client {
        Recorded(State& state, Client& client) : owner(state), of(client) {}
        std::string receive() override
        {
            std::string message = of.receive();
            const std::lock_guard lock(owner.mutex);
            if (!message.empty())
                owner.requests.push_back(message);
            return message;
        }
        void send(std::string_view message) override { of.send(message); }

        State& owner;
        Client& of;
    };

    std::mutex mutex;
    std::condition_variable changed;
    int served = 0;
    std::vector<std::string> requests;
    peer::PipeServer server; ///< Its thread uses all of the above.
};

PipePeer::PipePeer(std::string name, Script script, Start start)
    : state(std::make_unique<State>(std::move(name), script, start))
{
}

PipePeer::~PipePeer() = default;

void PipePeer::becomeFree()
{
    state->server.becomeFree();
}

std::vector<std::string> PipePeer::requests() const
{
    const std::lock_guard lock(state->mutex);
    return state->requests;
}

bool PipePeer::hasServed(int count, std::chrono::milliseconds limit) const
{
    std::unique_lock lock(state->mutex);
    return state->changed.wait_for(lock, limit, [&] { return state->served >= count; });
}

PipePeer::Script answering(std::string reply)
{
    return [reply = std::move(reply)](PipePeer::Client& client) {
        client.receive();
        client.send(reply);
        client.receive();
    };
}

PipePeer::Script silent()
{
    return [](PipePeer::Client& client) {
        while (!client.receive().empty()) {
        }
    };
}

PipePeer::Script takingAndLeaving()
{
    return [](PipePeer::Client& client) { client.receive(); };
}

#ifdef _WIN32

struct BytePipeClient::State {
    explicit State(std::string_view name)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (pipe == INVALID_HANDLE_VALUE && std::chrono::steady_clock::now() < end) {
            if (!WaitNamedPipeA(pipePath(name).c_str(), 1000))
                Sleep(1); // no event tells of a pipe that is being made
            pipe = openPipe(name);
        }
    }
    ~State() { CloseHandle(pipe); }
    bool connected() const { return pipe != INVALID_HANDLE_VALUE; }
    bool write(std::string_view bytes)
    {
        DWORD length = 0;
        return WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), &length, nullptr) &&
               length == bytes.size();
    }

    HANDLE pipe = INVALID_HANDLE_VALUE;
};

#else

struct BytePipeClient::State {
    explicit State(std::string_view name)
    {
        const sockaddr_un address = socketAddress(name);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!isConnected && std::chrono::steady_clock::now() < end) {
            isConnected = connect(descriptor, generic(address), sizeof address) == 0;
            if (!isConnected)
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a socket that is being made
        }
    }
    ~State() { close(descriptor); }
    bool connected() const { return isConnected; }
    bool write(std::string_view bytes)
    {
        return send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool isConnected = false;
};

#endif

BytePipeClient::BytePipeClient(std::string_view name) : state(std::make_unique<State>(name)) {}

BytePipeClient::~BytePipeClient() = default;

bool BytePipeClient::connected() const
{
    return state->connected();
}

bool BytePipeClient::write(std::string_view bytes)
{
    return state->write(bytes);
}

} // namespace pyrux::test
