#include "tools/resident/answers.h"
#include "tools/resident/pipe_server.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#endif

/// @file
/// Stands in for the resident services and the control application: it serves their pipes with fixed values,
/// and shows what it is asked, until it is interrupted.

namespace {

using pyrux::peer::Answers;
using pyrux::peer::PipeServer;

#ifdef _WIN32

/// Ends the wait at Ctrl-C or Ctrl-Break.
class Interrupt {
public:
    Interrupt() { SetConsoleCtrlHandler(handle, TRUE); }
    void wait() { WaitForSingleObject(event(), INFINITE); }

private:
    static BOOL WINAPI handle(DWORD) { return SetEvent(event()); }
    static HANDLE event()
    {
        static const HANDLE own = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        return own;
    }
};

#else

/// Ends the wait at SIGINT or SIGTERM. To be made before any thread.
class Interrupt {
public:
    Interrupt()
    {
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    }
    void wait()
    {
        int which = 0;
        sigwait(&signals, &which);
    }

private:
    sigset_t signals;
};

#endif

void show(const std::string& pipe, const std::string& request, const std::string& reply)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::printf("%s: %s -> %s\n", pipe.c_str(), request.c_str(), reply.c_str());
    std::fflush(stdout);
}

PipeServer::Script scriptFor(const std::string& pipe, Answers& answers, bool quiet)
{
    return [pipe, &answers, quiet](PipeServer::Client& client) {
        const std::string request = client.receive();
        if (request.empty())
            return;
        const std::string reply = answers.to(request);
        client.send(reply);
        if (!quiet)
            show(pipe, request, reply);
        client.receive(); // until it goes
    };
}

} // namespace

int main(int argc, char** argv)
{
    Answers answers;
    bool quiet = false;
    CLI::App app("Stands in for the resident services and the control application of the PYRUX library.");
    app.add_option("--temp", answers.temperatures, "Temperatures of processor and graphics card")
        ->capture_default_str();
    app.add_option("--cores", answers.cores, "The two core counts")->capture_default_str();
    app.add_option("--record", answers.record, "The fifteen fields of the system record")
        ->capture_default_str();
    app.add_option("--service-version", answers.version, "The service's version")->capture_default_str();
    app.add_flag("--quiet", quiet, "Do not show the requests");
    app.set_version_flag("--version", PYRUX_VERSION);
    CLI11_PARSE(app, argc, argv);

    Interrupt interrupt;
    try {
        std::deque<PipeServer> servers;
        for (const char* const pipe : {"twservicepipe", "twldservicepipe", "twironwoodpipe"})
            servers.emplace_back(pipe, scriptFor(pipe, answers, quiet));
        std::puts("serving");
        std::fflush(stdout);
        interrupt.wait();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pyrux-resident: %s\n", error.what());
        return 1;
    }
    return 0;
}
