#pragma once

#include <filesystem>
#include <memory>
#include <string>

/// @file
/// What a test run needs around it. Linking this file's source keeps the whole run away from the machine's
/// log, runtime folder and desktop: the debug output goes into a file, and no session is to be seen.

namespace pyrux::test {

/// A fresh folder, removed with the object, or at the latest when the process exits.
class TemporaryFolder {
public:
    TemporaryFolder();
    explicit TemporaryFolder(const std::filesystem::path& parent);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

/// Sets an environment variable for the object's life.
class Variable {
public:
    Variable(std::string variable, const std::string& value);
    ~Variable();
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    std::string name;
    std::string before;
};

/// The named pipes to itself: on Linux a runtime folder of its own, on Windows, where a pipe's name is known
/// to all, a lock that other test processes wait for.
class OwnPipes {
public:
    OwnPipes();
    ~OwnPipes();
    OwnPipes(const OwnPipes&) = delete;
    OwnPipes& operator=(const OwnPipes&) = delete;

    /// Linux: where the sockets are.
    std::filesystem::path folder() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// Where the debug output goes. Linux only.
std::filesystem::path debugOutputFile();

} // namespace pyrux::test
