#include "tests/support/process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;
#endif

namespace pyrux::test {

#ifdef _WIN32

std::filesystem::path thisProgram()
{
    wchar_t name[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, name, MAX_PATH);
    return name;
}

namespace {

/// A new file, which goes with the last handle to it. Programs that are started get a handle of their own.
HANDLE temporaryFile()
{
    char folder[MAX_PATH] = {};
    char name[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    GetTempFileNameA(folder, "run", 0, name);
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

} // namespace

// The output goes through a file, not a pipe: the first window of a session starts a program of the system's
// that inherits the program's handles and lives as long as this one, so that a pipe would never end.
Ended run(const std::filesystem::path& program, const std::vector<std::string>& arguments)
{
    const HANDLE file = temporaryFile();
    if (file == INVALID_HANDLE_VALUE)
        return {};
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = file;
    start.hStdError = file;
    std::string line = "\"" + program.string() + "\"";
    for (const std::string& argument : arguments)
        line += " \"" + argument + "\"";
    PROCESS_INFORMATION process{};
    Ended ended;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        DWORD code = 0;
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &code);
        ended.exitCode = static_cast<int>(code);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    char buffer[4096];
    DWORD length = 0;
    while (ReadFile(file, buffer, sizeof buffer, &length, nullptr) && length > 0)
        ended.output.append(buffer, length);
    CloseHandle(file);
    return ended;
}

#else

std::filesystem::path thisProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

Ended run(const std::filesystem::path& program, const std::vector<std::string>& arguments)
{
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    std::vector<std::string> texts{program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts)
        argv.push_back(text.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    const bool started = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    Ended ended;
    char buffer[4096];
    for (ssize_t length; (length = read(ends[0], buffer, sizeof buffer)) > 0;)
        ended.output.append(buffer, static_cast<std::size_t>(length));
    close(ends[0]);
    int status = 0;
    if (started && waitpid(child, &status, 0) == child)
        ended.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return ended;
}

#endif

} // namespace pyrux::test
