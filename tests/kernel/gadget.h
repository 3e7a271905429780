#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

/// @file
/// A pyrux-gadget that a test runs.

namespace pyrux::test {

/// More than anything that is waited for can take on a loaded machine without KVM.
constexpr std::chrono::seconds patience{30};

class Gadget {
public:
    /// Starts the program, its standard streams joined to pipes.
    explicit Gadget(const std::vector<std::string>& arguments);
    /// Ends it in an orderly way.
    ~Gadget();
    Gadget(const Gadget&) = delete;
    Gadget& operator=(const Gadget&) = delete;

    /// Waits for the next line that is no report. Empty: the program has closed its output.
    std::string line();

    /// Gives a command and waits for its answer.
    std::string command(const std::string& text);

    /// The reports to the device since the last call, in the form "41 80 | 51 00 00 00 04". All those are
    /// there whose reply the host has got.
    std::string takeWritten();

    /// Waits until a report to the device is there that equals `report`; those before it are forgotten.
    bool waitForWritten(const std::string& report);

    /// What the program has said on its standard error, which must have been closed.
    std::string errors();

    void send(int signal);

    /// Closes the standard input: no further command comes.
    void closeInput();

    /// Waits for the end. @return the exit code, or the negative number of the signal
    int wait();

private:
    bool readMore(std::chrono::milliseconds limit);
    void sortLines();

    pid_t process = -1;
    int input = -1;
    int output = -1;
    int error = -1;
    std::string text; ///< The beginning of a line.
    std::vector<std::string> answers;
    std::vector<std::string> written;
};

} // namespace pyrux::test
