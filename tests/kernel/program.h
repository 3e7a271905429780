#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

/// @file
/// A program that a test runs beside itself.

namespace pyrux::test {

/// More than anything that is waited for can take on a loaded machine without KVM.
constexpr std::chrono::seconds patience{30};

class Program {
public:
    /// Starts the program, its standard streams joined to pipes.
    Program(std::string file, const std::vector<std::string>& arguments);
    /// Ends it in an orderly way.
    virtual ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits for the next line of its standard output. Empty: the program has closed it.
    std::string line();

    /// Waits for the next line of its standard error, likewise.
    std::string errorLine();

    /// What is left of its standard error, which must have been closed.
    std::string errors();

    void send(int signal);

    /// Closes the standard input: no further command comes.
    void closeInput();

    /// Waits for the end. @return the exit code, or the negative number of the signal
    int wait();

protected:
    using Clock = std::chrono::steady_clock;

    bool write(const std::string& text);
    /// Waits for a piece of the output; false when none has come until then, or comes any more.
    bool readMore(Clock::time_point deadline);
    /// Takes a line of the standard output.
    virtual void take(std::string one) { lines.push_back(std::move(one)); }

    std::vector<std::string> lines; ///< Those that `line` has not given yet.

private:
    pid_t process = -1;
    int input = -1;
    int output = -1;
    int error = -1;
    std::string text; ///< The beginning of a line.
};

} // namespace pyrux::test
