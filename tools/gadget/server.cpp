#include "server.h"

#include "command.h"
#include "failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace pyrux::gadget {

namespace {

constexpr std::size_t longestLine = 4096;
constexpr int mostClientsWaiting = 8;

[[noreturn]] void refuse(const std::string& what)
{
    throw Failure(Exit::refused, what + ": " + std::strerror(errno));
}

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw Failure(Exit::usage, path + " is too long for a socket");
    std::ranges::copy(path, address.sun_path);
    return address;
}

FileDescriptor makeSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// A socket file that its process has left behind.
bool isAbandoned(const std::string& path, const sockaddr_un& address)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return false;
    const FileDescriptor probe = makeSocket();
    return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

int bindTo(const FileDescriptor& file, const sockaddr_un& address)
{
    const mode_t before = umask(0177);
    const int result = bind(file.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(before);
    return result;
}

} // namespace

ControlSocket::ControlSocket(const std::string& at) : file(makeSocket())
{
    const sockaddr_un address = addressOf(at);
    if (isAbandoned(at, address))
        unlink(at.c_str());
    if (bindTo(file, address) != 0)
        refuse(at);
    path = at;
    if (listen(file.get(), mostClientsWaiting) != 0)
        refuse(at);
}

ControlSocket::~ControlSocket()
{
    if (!path.empty())
        unlink(path.c_str());
}

FileDescriptor endingSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return FileDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

Server::Server(ServedModel& served, const FileDescriptor& endSignals, const ControlSocket& control)
    : device(served), signals(endSignals), socket(control)
{
    peers.push_back({.owned = {}, .in = STDIN_FILENO, .out = STDOUT_FILENO, .text = {}});
}

std::vector<pollfd> Server::files() const
{
    const auto file = [](int number, short events) {
        return pollfd{.fd = number, .events = events, .revents = 0};
    };
    std::vector<pollfd> all{file(device.wakeUp(), POLLIN), file(signals.get(), POLLIN),
                            file(socket.get(), POLLIN)};
    for (std::size_t port = 0; port < device.ports(); ++port)
        all.push_back(file(device.port(port), device.hasReports(port) ? POLLIN | POLLOUT : POLLIN));
    for (const Peer& peer : peers)
        all.push_back(file(peer.in, POLLIN));
    return all;
}

void Server::run()
{
    enum Place { wakeUp, signal, listener, firstPort };
    const std::size_t firstPeer = firstPort + device.ports();
    while (!ending) {
        std::vector<pollfd> ready = files();
        if (poll(ready.data(), ready.size(), -1) < 0) {
            if (errno == EINTR)
                continue;
            refuse("poll");
        }

        if (ready[signal].revents)
            return;
        if (ready[wakeUp].revents)
            device.clearWakeUp();
        for (std::size_t port = 0; port < device.ports(); ++port) {
            if (ready[firstPort + port].revents & POLLIN)
                device.takeReports(port);
            if (device.port(port) >= 0)
                device.sendReports(port);
        }
        // From the last one, so that those that go leave the others in their places.
        for (std::size_t i = ready.size() - firstPeer; i-- > 0;)
            if (ready[firstPeer + i].revents && !hear(peers[i]))
                peers.erase(peers.begin() + std::ptrdiff_t(i));
        if (ready[listener].revents)
            accept();
    }
}

void Server::accept()
{
    FileDescriptor client(accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client)
        return;
    const int number = client.get();
    peers.push_back({.owned = std::move(client), .in = number, .out = number, .text = {}});
}

bool Server::hear(Peer& peer)
{
    std::array<char, 512> piece;
    const ssize_t count = read(peer.in, piece.data(), piece.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    if (count > 0)
        peer.text.append(piece.data(), std::size_t(count));
    else if (!peer.text.empty())
        peer.text += '\n'; // a last line without an end
    for (std::size_t end; !ending && (end = peer.text.find('\n')) != std::string::npos;) {
        carryOut(peer.text.substr(0, end), peer);
        peer.text.erase(0, end + 1);
    }
    return count > 0 && peer.text.size() <= longestLine;
}

void Server::carryOut(const std::string& line, const Peer& peer)
{
    const Answer answer = execute(line, device);
    ending = answer.quit;
    if (answer.text.empty())
        return;
    const std::string text = answer.text + "\n";
    // Who gives commands and does not read the answers misses them.
    [[maybe_unused]] const ssize_t ignored = write(peer.out, text.data(), text.size());
}

} // namespace pyrux::gadget
