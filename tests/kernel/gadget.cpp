#include "tests/kernel/gadget.h"

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

using Clock = std::chrono::steady_clock;

std::chrono::milliseconds until(Clock::time_point deadline)
{
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()),
                    std::chrono::milliseconds(0));
}

} // namespace

Gadget::Gadget(const std::vector<std::string>& arguments)
{
    const Pipe in;
    const Pipe out;
    const Pipe err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.readEnd, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.writeEnd, STDERR_FILENO);
    std::string program = PYRUX_GADGET;
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers{program.data()};
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int failed = posix_spawn(&process, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    for (const int theirs : {in.readEnd, out.writeEnd, err.writeEnd})
        close(theirs);
    input = in.writeEnd;
    output = out.readEnd;
    error = err.readEnd;
    if (failed)
        throw std::system_error(failed, std::generic_category(), program);
}

Gadget::~Gadget()
{
    if (process > 0) {
        send(SIGTERM);
        wait();
    }
    closeInput();
    close(output);
    close(error);
}

bool Gadget::readMore(std::chrono::milliseconds limit)
{
    pollfd file{.fd = output, .events = POLLIN, .revents = 0};
    if (poll(&file, 1, int(limit.count())) <= 0)
        return false;
    std::array<char, 4096> piece;
    const ssize_t count = read(output, piece.data(), piece.size());
    if (count <= 0)
        return false;
    text.append(piece.data(), std::size_t(count));
    sortLines();
    return true;
}

void Gadget::sortLines()
{
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
        const std::string one = text.substr(0, end);
        if (one.starts_with("> "))
            written.push_back(one.substr(2));
        else if (!one.starts_with("< "))
            answers.push_back(one);
    }
}

std::string Gadget::line()
{
    const auto deadline = Clock::now() + patience;
    while (answers.empty())
        if (!readMore(until(deadline)))
            return "";
    const std::string first = answers.front();
    answers.erase(answers.begin());
    return first;
}

std::string Gadget::command(const std::string& words)
{
    const std::string whole = words + "\n";
    if (write(input, whole.data(), whole.size()) != ssize_t(whole.size()))
        return "";
    return line();
}

std::string Gadget::takeWritten()
{
    while (readMore(std::chrono::milliseconds(0)))
        ;
    std::string joined;
    for (const std::string& one : written)
        joined += (joined.empty() ? "" : " | ") + one;
    written.clear();
    return joined;
}

bool Gadget::waitForWritten(const std::string& report)
{
    const auto deadline = Clock::now() + patience;
    for (;;) {
        const auto found = std::ranges::find(written, report);
        if (found != written.end()) {
            written.erase(written.begin(), found + 1);
            return true;
        }
        if (!readMore(until(deadline)))
            return false;
    }
}

std::string Gadget::errors()
{
    std::string all;
    std::array<char, 512> piece;
    for (ssize_t count; (count = read(error, piece.data(), piece.size())) > 0;)
        all.append(piece.data(), std::size_t(count));
    return all;
}

void Gadget::send(int signal)
{
    kill(process, signal);
}

void Gadget::closeInput()
{
    if (input >= 0)
        close(input);
    input = -1;
}

int Gadget::wait()
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR)
        ;
    process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace pyrux::test
