#pragma once

#include "tools/resident/pipe_server.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Programs at the other ends of the library's pipes.

namespace pyrux::test {

/// The server of a message pipe, such as a resident service, that keeps what it was asked.
class PipePeer {
public:
    using Client = peer::PipeServer::Client;
    using Script = peer::PipeServer::Script;
    using Start = peer::PipeServer::Start;

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
