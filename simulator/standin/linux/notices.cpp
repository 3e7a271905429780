#include "simulator/standin/notices.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace pyrux::sim {

namespace {

/// The server of PYRUX_DEVICE_NOTICES for the process that it is loaded into. The variable is set when the
/// stand-in is loaded, in front of any start of the library.
class NoticeServer {
public:
    static NoticeServer& instance()
    {
        // Never destroyed: devices may be pulled out while the process ends.
        static auto& one = *new NoticeServer;
        return one;
    }

    void send(const std::string& notice)
    {
        const std::lock_guard lock(mutex);
        acceptWaiting();
        std::erase_if(clients, [&](int client) {
            const bool taken = ::send(client, notice.data(), notice.size(), MSG_NOSIGNAL) >= 0;
            if (!taken)
                close(client);
            return !taken;
        });
    }

private:
    NoticeServer()
    {
        listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        const std::string name = "@pyrux-standin-" + std::to_string(getpid()) + "-" +
                                 std::to_string(reinterpret_cast<std::uintptr_t>(
                                     this)); // two stand-ins keep out of each other's way
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path, sizeof address.sun_path - 1);
        address.sun_path[0] = '\0';
        const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + name.size());
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
            listen(listener, mostWaiting) == 0)
            setenv("PYRUX_DEVICE_NOTICES", name.c_str(), 1);
    }

    void acceptWaiting()
    {
        for (int client; (client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            // A child process has inherited the variable, but not the bus.
            ucred peer{};
            socklen_t length = sizeof peer;
            if (getsockopt(client, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 || peer.pid != getpid()) {
                close(client);
                continue;
            }
            // A listener that has stopped taking notices must not hold the bus for ever.
            const timeval limit{.tv_sec = 5, .tv_usec = 0};
            setsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
            clients.push_back(client);
        }
    }

    static constexpr int mostWaiting = 16;

    std::mutex mutex;
    int listener = -1;
    std::vector<int> clients;
};

[[maybe_unused]] const NoticeServer& atLoad = NoticeServer::instance();

} // namespace

void announce(const std::string& path, bool plugged)
{
    NoticeServer::instance().send((plugged ? "add " : "remove ") + path);
}

} // namespace pyrux::sim
