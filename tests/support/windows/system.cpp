#include "tests/support/system.h"

#include "tests/support/scripted_mouse.h"

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <windows.h>

#include <tlhelp32.h>

namespace pyrux::test {
namespace {

std::mutex debugMutex;
std::vector<std::string> debugTexts;

/// OutputDebugStringA hands its text to a debugger by an exception of this number. A handler in the process
/// sees it first, whether there is a debugger or not.
constexpr DWORD debugTextException = 0x40010006;

LONG CALLBACK takeDebugText(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != debugTextException || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    std::string text(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    if (text.ends_with('\n'))
        text.pop_back();
    const std::lock_guard lock(debugMutex);
    debugTexts.push_back(std::move(text));
    return EXCEPTION_CONTINUE_EXECUTION;
}

const struct Environment {
    Environment() { AddVectoredExceptionHandler(1, takeDebugText); }
} environment;

std::string pipeName(const std::string& name)
{
    return "\\\\.\\pipe\\" + name;
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

class HandleWriter final : public PipeWriter {
public:
    explicit HandleWriter(HANDLE pipe) : pipe(pipe) {}
    ~HandleWriter() override { CloseHandle(pipe); }
    bool write(const std::string& text) override
    {
        DWORD written = 0;
        return WriteFile(pipe, text.data(), DWORD(text.size()), &written, nullptr) && written == text.size();
    }

private:
    const HANDLE pipe;
};

class HandlePeer final : public PipePeer {
public:
    HandlePeer(std::string name, HANDLE pipe, std::string reply)
        : name(std::move(name)), pipe(pipe), reply(std::move(reply))
    {
        thread = std::thread([this] { serve(); });
    }
    ~HandlePeer() override
    {
        {
            const std::lock_guard lock(mutex);
            ending = true;
        }
        const HANDLE self = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (self != INVALID_HANDLE_VALUE)
            CloseHandle(self);
        thread.join();
        CloseHandle(pipe);
    }
    std::vector<std::string> await(std::size_t count) override
    {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, patience, [&] { return messages.size() >= count; });
        return messages;
    }

private:
    bool ended()
    {
        const std::lock_guard lock(mutex);
        return ending;
    }

    void serve()
    {
        while (!ended()) {
            if (!ConnectNamedPipe(pipe, nullptr) && GetLastError() != ERROR_PIPE_CONNECTED)
                return;
            char buffer[512];
            DWORD length = 0;
            while (ReadFile(pipe, buffer, sizeof buffer, &length, nullptr)) {
                {
                    const std::lock_guard lock(mutex);
                    messages.emplace_back(buffer, length);
                }
                arrived.notify_all();
                if (!reply.empty() && !WriteFile(pipe, reply.data(), DWORD(reply.size()), &length, nullptr))
                    break;
            }
            DisconnectNamedPipe(pipe);
        }
    }

    const std::string name;
    const HANDLE pipe;
    const std::string reply;
    std::mutex mutex;
    std::condition_variable arrived;
    bool ending = false;
    std::vector<std::string> messages;
    std::thread thread;
};

} // namespace

const std::filesystem::path& temporaryFolder()
{
    static const struct Folder {
        Folder()
        {
            path = std::filesystem::temp_directory_path() / ("pyrux-test-" + std::to_string(GetCurrentProcessId()));
            std::filesystem::remove_all(path);
            std::filesystem::create_directories(path);
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
    const std::lock_guard lock(debugMutex);
    return std::exchange(debugTexts, {});
}

std::filesystem::path commonDataFolder()
{
    const char* folder = std::getenv("ProgramData");
    return folder ? folder : "C:\\ProgramData";
}

std::filesystem::path runtimeFolder()
{
    return {};
}

Ended runThisProgram(const std::vector<std::string>& arguments, const std::string& variable)
{
    char name[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, name, sizeof name);
    return runProgram(name, arguments, variable);
}

Ended runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::string& variable)
{
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE from = nullptr;
    HANDLE to = nullptr;
    if (!CreatePipe(&from, &to, &inheritable, 0))
        return {};
    SetHandleInformation(from, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = to;
    start.hStdError = to;
    std::string line = quoted(program.string());
    for (const std::string& argument : arguments)
        line += " " + quoted(argument);
    const std::size_t equals = variable.find('=');
    const std::string name = variable.substr(0, equals);
    if (equals != std::string::npos)
        SetEnvironmentVariableA(name.c_str(), variable.c_str() + equals + 1);
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
    if (equals != std::string::npos)
        SetEnvironmentVariableA(name.c_str(), nullptr);
    CloseHandle(to);
    Ended ended;
    char buffer[4096];
    DWORD length = 0;
    while (ReadFile(from, buffer, sizeof buffer, &length, nullptr) && length > 0)
        ended.output.append(buffer, length);
    CloseHandle(from);
    if (started) {
        DWORD code = 0;
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &code);
        ended.exitCode = int(code);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    return ended;
}

bool environmentHas(const std::string& name, const std::string& value)
{
    const char* found = std::getenv(name.c_str());
    return found && value == found;
}

std::filesystem::path programFolder()
{
    char name[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, name, sizeof name);
    return std::filesystem::path(name).parent_path();
}

std::unique_ptr<PipeWriter> PipeWriter::connect(const std::string& name)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < deadline) {
        const HANDLE pipe = CreateFileA(pipeName(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        if (pipe != INVALID_HANDLE_VALUE)
            return std::make_unique<HandleWriter>(pipe);
        if (GetLastError() == ERROR_PIPE_BUSY)
            WaitNamedPipeA(pipeName(name).c_str(), 100);
        else
            Sleep(2); // Nothing tells of a pipe that comes up.
    }
    return nullptr;
}

std::unique_ptr<PipePeer> PipePeer::create(const std::string& name, const std::string& reply)
{
    const HANDLE pipe = CreateNamedPipeA(pipeName(name).c_str(), PIPE_ACCESS_DUPLEX,
                                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, 512, 512, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE)
        return nullptr;
    return std::make_unique<HandlePeer>(pipeName(name), pipe, reply);
}

std::size_t threadsOfProcess()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return 0;
    std::size_t count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

} // namespace pyrux::test
