#include "tests/support/surroundings.h"

#include <atomic>
#include <cstdlib>
#include <fstream>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace pyrux::test {
namespace {

#ifdef _WIN32
unsigned long processId()
{
    return GetCurrentProcessId();
}

void setVariable(const std::string& name, const std::string& value)
{
    _putenv_s(name.c_str(), value.c_str()); // an empty value removes it
}
#else
int processId()
{
    return getpid();
}

void setVariable(const std::string& name, const std::string& value)
{
    if (value.empty())
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value.c_str(), 1);
}
#endif

std::string variable(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value ? value : "";
}

/// Set up before the first test, so also before the first line of debug output.
class Surroundings {
public:
    Surroundings()
    {
        std::ofstream(debugFile()).flush();
        setVariable("PYRUX_DEBUG_OUTPUT", debugFile().string());
        setVariable("XDG_RUNTIME_DIR", folder.path().string());
        setVariable("PYRUX_RUNTIME_DIR", (folder.path() / "pyrux").string());
        setVariable("PYRUX_DATA_DIR", (folder.path() / "data").string());
        setVariable("XDG_CURRENT_DESKTOP", "");
        setVariable("DBUS_SESSION_BUS_ADDRESS", "");
    }
    std::filesystem::path debugFile() const { return folder.path() / "debug.txt"; }
    const std::filesystem::path& root() const { return folder.path(); }

private:
    TemporaryFolder folder{std::filesystem::temp_directory_path()};
};

const Surroundings surroundings;

} // namespace

TemporaryFolder::TemporaryFolder() : TemporaryFolder(surroundings.root()) {}

TemporaryFolder::TemporaryFolder(const std::filesystem::path& parent)
{
    static std::atomic<unsigned> count{0};
    do {
        folder = parent / ("pyrux-test-" + std::to_string(processId()) + "-" + std::to_string(count++));
    } while (!std::filesystem::create_directory(folder));
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

Variable::Variable(std::string variableName, const std::string& value)
    : name(std::move(variableName)), before(variable(name))
{
    setVariable(name, value);
}

Variable::~Variable()
{
    setVariable(name, before);
}

std::filesystem::path debugOutputFile()
{
    return surroundings.debugFile();
}

#ifdef _WIN32
struct OwnPipes::State {
    HANDLE lock = CreateMutexA(nullptr, FALSE, "pyrux-test-pipes");
    State() { WaitForSingleObject(lock, INFINITE); }
    ~State()
    {
        ReleaseMutex(lock);
        CloseHandle(lock);
    }
};

std::filesystem::path OwnPipes::folder() const
{
    return {};
}
#else
struct OwnPipes::State {
    TemporaryFolder folder;
    Variable variable{"PYRUX_RUNTIME_DIR", folder.path().string()};
};

std::filesystem::path OwnPipes::folder() const
{
    return state->folder.path();
}
#endif

OwnPipes::OwnPipes() : state(std::make_unique<State>()) {}

OwnPipes::~OwnPipes() = default;

} // namespace pyrux::test
