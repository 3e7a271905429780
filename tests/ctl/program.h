#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// What a run of pyruxctl has left behind.
struct Finished {
    int exit;
    std::string out;
    std::string err;
};

/// Runs the program itself with its standard output and error in files.
class Program {
public:
    Program();
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    Finished run(const std::vector<std::string>& words, const std::string& input = "");

    /// A file in the tests' folder; its path.
    std::string file(const std::string& name, const std::string& content);

    /// Sets a variable for the runs to come; an empty one counts as not set.
    void set(const char* name, const std::string& value);

    /// The file of the made-up library.
    static std::string fakeLibrary();

private:
    std::filesystem::path folder;
    int runs = 0;
    std::map<std::string, std::string> before; ///< Variables as they were.
};

/// The lines of a text that begin so.
std::vector<std::string> linesWith(const std::string& text, const std::string& beginning);
