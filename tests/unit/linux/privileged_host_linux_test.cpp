#include "platform/debug_output.h"
#include "platform/folders.h"
#include "platform/linux/notice_socket.h"
#include "platform/linux/runtime_folder.h"
#include "platform/linux/system_log.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>
#include <sys/auxv.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace pyrux::platform;
using namespace pyrux::test;

constexpr uid_t nobody = 65534;

int boundSocket(const std::string& path, int type)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, type | SOCK_NONBLOCK, 0);
    EXPECT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return made;
}

/// In a program with more rights than its user, in whose environment all variables are set.
void expectNoVariableToCount()
{
    const Variable session("XDG_RUNTIME_DIR", "/run/user/1000");
    for (const char* const name :
         {"PYRUX_RUNTIME_DIR", "XDG_RUNTIME_DIR", "PYRUX_DATA_DIR", "PYRUX_DEBUG_OUTPUT"})
        EXPECT_TRUE(std::getenv(name)) << name;
    EXPECT_EQ(runtimeFolder(), "/run/pyrux");
    EXPECT_EQ(commonDataFolder(), "/var/lib");

    const TemporaryFolder folder;
    const std::string logPath = folder.path() / "log";
    const int log = boundSocket(logPath, SOCK_DGRAM);
    systemLogSocket = logPath.c_str();
    debugOutput("text");
    char first = 0;
    EXPECT_EQ(recv(log, &first, 1, 0), 1) << "the system's log is the default";
    EXPECT_EQ(std::filesystem::file_size(debugOutputFile()), 0U);

    const std::string noticePath = folder.path() / "notices";
    const int notices = boundSocket(noticePath, SOCK_SEQPACKET);
    listen(notices, 1);
    const Variable variable("PYRUX_DEVICE_NOTICES", noticePath);
    EXPECT_EQ(NoticeSocket().descriptor(), -1);
    close(log);
    close(notices);
}

TEST(PrivilegedHost, readsNothingFromItsEnvironment)
{
    if (getauxval(AT_SECURE)) {
        expectNoVariableToCount();
        return;
    }
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to start a program with more rights than its user";
    // As root's set-user-ID program that another user starts.
    const std::string program = thisProgram();
    const pid_t child = fork();
    if (child == 0) {
        if (setresuid(nobody, 0, 0) == 0)
            execl(program.c_str(), program.c_str(),
                  "--gtest_filter=PrivilegedHost.readsNothingFromItsEnvironment", "--gtest_output=", nullptr);
        _exit(2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
