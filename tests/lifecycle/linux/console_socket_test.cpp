// The debug console's socket.

#include "tests/support/debug_capture.h"
#include "tests/support/isolated.h"
#include "tests/support/mouse.h"
#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace pyrux::test {
namespace {

void expectConsole()
{
    BytePipeClient console("mypip");
    ASSERT_TRUE(console.connected());
    DebugCapture capture;
    EXPECT_TRUE(console.write("debug?"));
    EXPECT_TRUE(capture.waitFor("[PYRUX][Debug]Debug=1"));
}

ISOLATED_TEST(ConsoleSocket, standsInAFolderForItsOwnerAlone)
{
    const TemporaryFolder parent;
    const auto folder = parent.path() / "deeper" / "run";
    const Variable variable("PYRUX_RUNTIME_DIR", folder.string());
    EXPECT_EQ(pyrux_init(), 0);
    expectConsole();
    EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(std::filesystem::is_socket(folder / "mypip"));
}

ISOLATED_TEST(ConsoleSocket, replacesOneThatNobodyServes)
{
    const TemporaryFolder folder;
    const Variable variable("PYRUX_RUNTIME_DIR", folder.path().string());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder.path() / "mypip").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int stale = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(stale, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(stale);
    EXPECT_EQ(pyrux_init(), 0);
    expectConsole();
}

ISOLATED_TEST(ConsoleSocket, isNotNeededToStart)
{
    const Variable variable("PYRUX_RUNTIME_DIR", "/proc/no-place-for-a-folder");
    EXPECT_EQ(pyrux_init(), 0);
    Mouse mouse;
    EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    EXPECT_EQ(pyrux_exit(), 0);
}

} // namespace
} // namespace pyrux::test
