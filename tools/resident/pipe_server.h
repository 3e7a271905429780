#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace pyrux::peer {

/// The server of a message pipe that the library is a client of. Serves one client after the other on a
/// thread of its own, by a script.
class PipeServer {
public:
    /// What the script can do with its client.
    class Client {
    public:
        virtual ~Client() = default;
        /// The next message; empty when the client has gone or the server ends.
        virtual std::string receive() = 0;
        virtual void send(std::string_view message) = 0;
    };
    using Script = std::function<void(Client&)>;

    enum class Start { serving, busy };

    /// Makes the pipe. Throws std::runtime_error when that is not possible.
    /// @param served  called when a client has been served and its connection closed
    PipeServer(std::string name, Script script, Start start = Start::serving,
               std::function<void()> served = {});
    ~PipeServer();
    PipeServer(const PipeServer&) = delete;
    PipeServer& operator=(const PipeServer&) = delete;

    /// Ends being busy.
    void becomeFree();

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace pyrux::peer
