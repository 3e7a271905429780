#include "tests/kernel/program.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern char** environ;

namespace pyrux::test {

namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    Pipe()
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe2");
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

/// Whether something can be read before the deadline, or the other side has closed.
bool awaitInput(int file, std::chrono::steady_clock::time_point deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waiting{.fd = file, .events = POLLIN, .revents = 0};
    return poll(&waiting, 1, int(std::max<std::chrono::milliseconds::rep>(left.count(), 0))) > 0;
}

} // namespace

Program::Program(std::string file, const std::vector<std::string>& arguments)
{
    const Pipe in;
    const Pipe out;
    const Pipe err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.readEnd, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.writeEnd, STDERR_FILENO);
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers{file.data()};
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int failed = posix_spawn(&process, file.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    for (const int theirs : {in.readEnd, out.writeEnd, err.writeEnd})
        close(theirs);
    input = in.writeEnd;
    output = out.readEnd;
    error = err.readEnd;
    if (failed)
        throw std::system_error(failed, std::generic_category(), file);
}

Program::~Program()
{
    if (process > 0) {
        send(SIGTERM);
        wait();
    }
    closeInput();
    close(output);
    close(error);
}

bool Program::write(const std::string& whole)
{
    return ::write(input, whole.data(), whole.size()) == ssize_t(whole.size());
}

bool Program::readMore(Clock::time_point deadline)
{
    if (!awaitInput(output, deadline))
        return false;
    std::array<char, 4096> piece;
    const ssize_t count = read(output, piece.data(), piece.size());
    if (count <= 0)
        return false;
    text.append(piece.data(), std::size_t(count));
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
        take(text.substr(0, end));
    return true;
}

std::string Program::line()
{
    const auto deadline = Clock::now() + patience;
    while (lines.empty())
        if (!readMore(deadline))
            return "";
    const std::string first = lines.front();
    lines.erase(lines.begin());
    return first;
}

std::string Program::errorLine()
{
    const auto deadline = Clock::now() + patience;
    std::string one;
    for (char c = 0; awaitInput(error, deadline) && read(error, &c, 1) == 1 && c != '\n';)
        one += c;
    return one;
}

std::string Program::errors()
{
    std::string all;
    std::array<char, 512> piece;
    for (ssize_t count; (count = read(error, piece.data(), piece.size())) > 0;)
        all.append(piece.data(), std::size_t(count));
    return all;
}

void Program::send(int signal)
{
    kill(process, signal);
}

void Program::closeInput()
{
    if (input >= 0)
        close(input);
    input = -1;
}

int Program::wait()
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR)
        ;
    process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace pyrux::test
