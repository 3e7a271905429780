#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Programs at the other ends of the library's pipes.

namespace pyrux::test {

/// The server of a message pipe, such as a resident service. Serves one client after the other on a thread of
/// its own, by a script.
class PipePeer {
public:
    /// What the script can do with its client.
    class Client {
    public:
        virtual ~Client() = default;
        /// The next message; empty when the client has gone. It is also put down for `requests`.
        virtual std::string receive() = 0;
        virtual void send(std::string_view message) = 0;
    };
    using Script = std::function<void(Client&)>;

    enum class Start { serving, busy };

    PipePeer(std::string name, Script script, Start start = Start::serving);
    ~PipePeer();
    PipePeer(const PipePeer&) = delete;
    PipePeer& operator=(const PipePeer&) = delete;

    /// Ends being busy.
    void becomeFree();

    /// The messages so far.
    std::vector<std::string> requests() const;

    /// Waits until `count` scripts have run to their ends; false when that takes longer than `limit`.
    bool hasServed(int count, std::chrono::milliseconds limit) const;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// Scripts: takes a request and answers; or says nothing; or goes at once. The first two stay until the
/// client goes.
PipePeer::Script answering(std::string reply);
PipePeer::Script silent();
PipePeer::Script takingAndLeaving();

/// A client of the library's byte pipe.
class BytePipeClient {
public:
    /// Connects, and waits for the pipe if it is not there yet.
    explicit BytePipeClient(std::string_view name);
    ~BytePipeClient();
    BytePipeClient(const BytePipeClient&) = delete;
    BytePipeClient& operator=(const BytePipeClient&) = delete;

    bool connected() const;
    bool write(std::string_view bytes);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace pyrux::test
