#include "tests/support/system.h"

#include "tests/support/scripted_mouse.h"

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <mutex>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace pyrux::test {
namespace {

std::filesystem::path debugFile()
{
    return temporaryFolder() / "debug_output";
}

/// The environment in which the library of this process runs. Set before it is first called.
const struct Environment {
    Environment()
    {
        setenv("PYRUX_DEBUG_OUTPUT", debugFile().c_str(), 1);
        setenv("PYRUX_DATA_DIR", (temporaryFolder() / "data").c_str(), 1);
        setenv("PYRUX_RUNTIME_DIR", runtimeFolder().c_str(), 1);
        // No test reaches the desktop's own settings.
        unsetenv("XDG_CURRENT_DESKTOP");
        setenv("GSETTINGS_BACKEND", "memory", 1);
        signal(SIGPIPE, SIG_IGN);
    }
} environment;

sockaddr_un socketAddress(const std::string& name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = runtimeFolder() / name;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

class SocketWriter final : public PipeWriter {
public:
    explicit SocketWriter(int descriptor) : descriptor(descriptor) {}
    ~SocketWriter() override { close(descriptor); }
    bool write(const std::string& text) override
    {
        return ::write(descriptor, text.data(), text.size()) == ssize_t(text.size());
    }

private:
    const int descriptor;
};

class SocketPeer final : public PipePeer {
public:
    SocketPeer(int listener, std::string reply) : listener(listener), reply(std::move(reply))
    {
        thread = std::thread([this] { serve(); });
    }
    ~SocketPeer() override
    {
        shutdown(listener, SHUT_RDWR);
        thread.join();
        close(listener);
    }
    std::vector<std::string> await(std::size_t count) override
    {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, patience, [&] { return messages.size() >= count; });
        return messages;
    }

private:
    void serve()
    {
        while (true) {
            const int client = accept(listener, nullptr, nullptr);
            if (client < 0)
                return;
            char buffer[512];
            ssize_t length = 0;
            while ((length = read(client, buffer, sizeof buffer)) > 0) {
                {
                    const std::lock_guard lock(mutex);
                    messages.emplace_back(buffer, std::size_t(length));
                }
                arrived.notify_all();
                if (!reply.empty() && ::write(client, reply.data(), reply.size()) < 0)
                    break;
            }
            close(client);
        }
    }

    const int listener;
    const std::string reply;
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<std::string> messages;
    std::thread thread;
};

} // namespace

const std::filesystem::path& temporaryFolder()
{
    static const struct Folder {
        Folder()
        {
            std::string name = std::filesystem::temp_directory_path() / "pyrux-test-XXXXXX";
            path = mkdtemp(name.data());
        }
        ~Folder()
        {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::filesystem::path path;
    } folder;
    return folder.path;
}

std::vector<std::string> takeDebugOutput()
{
    static std::streamoff position = 0;
    std::ifstream file(debugFile(), std::ios::binary);
    file.seekg(position);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    position += std::streamoff(start);
    return lines;
}

std::filesystem::path commonDataFolder()
{
    return temporaryFolder() / "data";
}

std::filesystem::path runtimeFolder()
{
    return temporaryFolder() / "run";
}

Ended runThisProgram(const std::vector<std::string>& arguments, const std::string& variable)
{
    return runProgram(std::filesystem::read_symlink("/proc/self/exe"), arguments, variable);
}

Ended runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::string& variable)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);

    std::vector<std::string> texts{program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts)
        argv.push_back(text.data());
    argv.push_back(nullptr);
    std::string extra = variable;
    std::vector<char*> envp;
    for (char** entry = environ; *entry; ++entry)
        envp.push_back(*entry);
    if (!extra.empty())
        envp.push_back(extra.data());
    envp.push_back(nullptr);

    pid_t child = 0;
    const int failed = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    Ended ended;
    char buffer[4096];
    ssize_t length = 0;
    while ((length = read(ends[0], buffer, sizeof buffer)) > 0)
        ended.output.append(buffer, std::size_t(length));
    close(ends[0]);
    int status = 0;
    if (!failed && waitpid(child, &status, 0) == child)
        ended.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return ended;
}

bool environmentHas(const std::string& name, const std::string& value)
{
    const char* found = std::getenv(name.c_str());
    return found && value == found;
}

std::filesystem::path programFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::unique_ptr<PipeWriter> PipeWriter::connect(const std::string& name)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const sockaddr_un address = socketAddress(name);
    while (std::chrono::steady_clock::now() < deadline) {
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return std::make_unique<SocketWriter>(descriptor);
        close(descriptor);
        // Nothing tells of a socket that comes up.
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return nullptr;
}

std::unique_ptr<PipePeer> PipePeer::create(const std::string& name, const std::string& reply)
{
    std::filesystem::create_directories(runtimeFolder());
    const sockaddr_un address = socketAddress(name);
    const int listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 4) != 0) {
        close(listener);
        return nullptr;
    }
    return std::make_unique<SocketPeer>(listener, reply);
}

std::size_t threadsOfProcess()
{
    return std::size_t(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

} // namespace pyrux::test
