// A child that a host forks off has none of the library's threads: whatever it calls is not there, at once.

#include "tests/support/isolated.h"
#include "tests/support/keyboard.h"
#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace pyrux::test {
namespace {

constexpr int allAsExpected = 17;

/// Runs `body` in a forked child, which a hang would end by a signal.
/// @return its exit code; -1: it did not end by itself
int exitCodeOf(const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(unsigned(patience.count()));
        std::_Exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Exits with the number of the first condition that does not hold.
int firstFailure(std::initializer_list<bool> conditions)
{
    int number = 1;
    for (const bool holds : conditions) {
        if (!holds)
            return 100 + number;
        ++number;
    }
    return allAsExpected;
}

ISOLATED_TEST(ForkedChild, getsNothing)
{
    EXPECT_EQ(pyrux_init(), 0);
    Mouse mouse;
    KeyboardOf<QW210Model> keyboard;
    SYS_INFO_Base* const info = sysInfo();
    EXPECT_EQ(exitCodeOf([&] {
                  std::array<std::uint16_t, 2> release{7, 7};
                  char text[4] = "abc";
                  std::uint8_t driver = 7;
                  std::int32_t number = 7;
                  float version = 7;
                  std::vector<DevInfoRecord> records(4);
                  getDGVersion(mouse.path.c_str(), release.data());
                  getBTVersion(mouse.path.c_str(), text);
                  getDriverVersion(mouse.path.c_str(), &driver);
                  pyrux_dprintf("nobody hears");
                  return firstFailure({mouse->changeProfileId(1) == E_CLOSED,
                                       keyboard->setSyncLightingData({}) == E_CLOSED,
                                       mouse->registerNotify(nullptr) == E_CLOSED,
                                       mouse->exit_device(0) == E_CLOSED,
                                       rd210(mouse.path.c_str()) == nullptr,
                                       qw210("") == nullptr,
                                       sysInfo() == nullptr,
                                       info->getCpuUsage(&number) == E_CLOSED,
                                       info->destroy(1) == info,
                                       devNums() == 0,
                                       devInfo(records.data()) == 0,
                                       registerDevNotify(nullptr) == E_CLOSED,
                                       getSysTemp(&number, &number) == E_CLOSED,
                                       getSysCore(&number, &number) == E_CLOSED,
                                       getVersion(&version) == E_CLOSED,
                                       fakeTempEnable() == E_CLOSED,
                                       fakeTempStep() == E_CLOSED,
                                       pyrux_init() == E_CLOSED,
                                       pyrux_exit() == E_CLOSED,
                                       release[0] == 0,
                                       release[1] == 0,
                                       text[0] == 0,
                                       driver == 0,
                                       number == 7,
                                       version == 7});
              }),
              allAsExpected);
    EXPECT_EQ(mouse->changeProfileId(1), E_OK); // the parent's device is still its own
    info->destroy(1);
}

/// Whether this process is the child of the test.
bool inChild = false;

ISOLATED_TEST(ForkedChild, ends)
{
#ifdef __SANITIZE_ADDRESS__
    // What only the parent's threads hold counts as leaked in a child: it ends before that is looked for.
    std::atexit([] {
        if (inChild)
            std::_Exit(allAsExpected);
    });
#endif
    std::atexit([] { pyrux_exit(); });
    EXPECT_EQ(pyrux_init(), 0);
    Mouse mouse;
    EXPECT_EQ(exitCodeOf([]() -> int {
                  inChild = true;
                  std::exit(allAsExpected);
              }),
              allAsExpected);
}

} // namespace
} // namespace pyrux::test
