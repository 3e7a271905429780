#pragma once

#include "file_descriptor.h"
#include "served_model.h"

#include <poll.h>
#include <string>
#include <vector>

/// @file
/// The loop that carries reports and takes commands.

namespace pyrux::gadget {

/// A socket of the file system, gone with the object.
class ControlSocket {
public:
    ControlSocket() = default; ///< None.
    /// Takes the place of a socket on which nobody listens any more.
    explicit ControlSocket(const std::string& path);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    int get() const { return file.get(); }

private:
    std::string path;
    FileDescriptor file;
};

/// SIGINT, SIGTERM and SIGHUP as a file, so that they end the loop and not the process.
FileDescriptor endingSignals();

class Server {
public:
    Server(ServedModel& device, const FileDescriptor& signals, const ControlSocket& socket);

    /// Serves until "quit" or a signal. The end of the standard input ends only that way of giving commands.
    void run();

private:
    /// One who gives commands.
    struct Peer {
        FileDescriptor owned; ///< None for the standard streams.
        int in = -1;
        int out = -1;
        std::string text; ///< The beginning of a line.
    };

    std::vector<pollfd> files() const; ///< What the loop waits for.
    void accept();
    bool hear(Peer& peer); ///< False: the peer has gone.
    void carryOut(const std::string& line, const Peer& peer);

    ServedModel& device;
    const FileDescriptor& signals;
    const ControlSocket& socket;
    std::vector<Peer> peers;
    bool ending = false;
};

} // namespace pyrux::gadget
