#include "program.h"

#include "tools/pyruxctl/loader.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)
constexpr auto programName = "pyruxctl.exe";

/// As the C runtime of the program takes it apart again.
std::string quoted(const std::string& word)
{
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        backslashes = c == '\\' ? backslashes + 1 : 0;
        if (c == '"')
            text += '\\';
        text += c;
    }
    return text + std::string(backslashes, '\\') + "\"";
}
int exitCode(int status)
{
    return status;
}
std::string shellCommand(const std::string& command)
{
    return "\"" + command + "\"";
}
#else
constexpr auto programName = "pyruxctl";

std::string quoted(const std::string& word)
{
    std::string text = "'";
    for (const char c : word)
        text += c == '\'' ? "'\\''" : std::string(1, c);
    return text + "'";
}
int exitCode(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
std::string shellCommand(const std::string& command)
{
    return command;
}
#endif

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

Program::Program()
{
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    folder = fs::temp_directory_path() / ("pyruxctl-" + std::to_string(ticks));
    fs::create_directories(folder);
    set("PYRUX_RUNTIME_DIR", (folder / "run").string());
    set("PYRUX_DATA_DIR", (folder / "data").string());
    set("PYRUX_LIBRARY", "");
    set("PYRUX_SIMULATOR", "");
    set("PYRUX_DEBUG_OUTPUT", "");
}

Program::~Program()
{
    for (const auto& [name, value] : before)
        pyrux::ctl::setEnvironment(name.c_str(), value.c_str());
    std::error_code none;
    fs::remove_all(folder, none);
}

Finished Program::run(const std::vector<std::string>& words, const std::string& input)
{
    // A file of its own for each run: what a program starts in the background may keep its streams open.
    const std::string number = std::to_string(++runs);
    const fs::path out = folder / ("out" + number), err = folder / ("err" + number);
    std::string command = quoted((pyrux::ctl::programFolder() / programName).string());
    for (const std::string& word : words)
        command += " " + quoted(word);
    command += " <" + quoted(file("in" + number, input)) + " >" + quoted(out.string()) + " 2>" +
               quoted(err.string());
    const int status = std::system(shellCommand(command).c_str());
    return {exitCode(status), contentOf(out), contentOf(err)};
}

std::string Program::file(const std::string& name, const std::string& content)
{
    const fs::path path = folder / name;
    std::ofstream(path) << content;
    return path.string();
}

void Program::set(const char* name, const std::string& value)
{
    const char* const now = std::getenv(name);
    before.emplace(name, now ? now : "");
    pyrux::ctl::setEnvironment(name, value.c_str());
}

std::string Program::fakeLibrary()
{
    return (pyrux::ctl::programFolder() / "pyrux-fake.lib").string();
}

std::vector<std::string> linesWith(const std::string& text, const std::string& beginning)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (line.starts_with(beginning))
            lines.push_back(line);
    return lines;
}
