#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// @file
/// What the tests ask of the operating system.

namespace pyrux::test {

/// The lines of the debug output since the last call, one per text, without line feeds at the end. Collected
/// from the start of the process.
std::vector<std::string> takeDebugOutput();

/// A folder of this process, empty at its start and removed at its end.
const std::filesystem::path& temporaryFolder();

/// The folder of data for all users, as the library sees it in this process.
std::filesystem::path commonDataFolder();

/// The folder of named pipes; empty where they have none.
std::filesystem::path runtimeFolder();

/// What a program that has ended leaves behind.
struct Ended {
    int exitCode = -1;
    std::string output; ///< Standard output and error.
};

/// Runs this program again with other arguments and one more variable in its environment ("NAME=value").
Ended runThisProgram(const std::vector<std::string>& arguments, const std::string& variable);

/// Runs a program.
Ended runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::string& variable = "");

/// Whether the environment has a variable with this value.
bool environmentHas(const std::string& name, const std::string& value);

/// The folder of this program.
std::filesystem::path programFolder();

/// A client of a byte pipe that the library serves, such as the debug console.
class PipeWriter {
public:
    /// Waits for the pipe to be there and free. Null when that does not happen.
    static std::unique_ptr<PipeWriter> connect(const std::string& name);
    virtual ~PipeWriter() = default;
    virtual bool write(const std::string& text) = 0;
};

/// A peer of the library's command pipes: takes messages, and answers each with the same text, or not at all
/// when that is empty.
class PipePeer {
public:
    static std::unique_ptr<PipePeer> create(const std::string& name, const std::string& reply);
    virtual ~PipePeer() = default;

    /// Waits for `count` messages, and gives all so far.
    virtual std::vector<std::string> await(std::size_t count) = 0;
};

/// Processor threads of this process at the moment; 0 where that is not known.
std::size_t threadsOfProcess();

} // namespace pyrux::test
