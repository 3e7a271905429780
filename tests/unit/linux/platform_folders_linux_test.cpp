#include "platform/folders.h"
#include "platform/linux/runtime_folder.h"

#include "tests/support/surroundings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using pyrux::platform::commonDataFolder;
using pyrux::platform::makeRuntimeFolder;
using pyrux::platform::runtimeFolder;
using pyrux::test::TemporaryFolder;
using pyrux::test::Variable;

TEST(PlatformFoldersLinux, dataFolderIsChosenByTheVariable)
{
    const Variable chosen("PYRUX_DATA_DIR", "/srv/data");
    EXPECT_EQ(commonDataFolder(), "/srv/data");
    const Variable unset("PYRUX_DATA_DIR", "");
    EXPECT_EQ(commonDataFolder(), "/var/lib");
}

TEST(PlatformFoldersLinux, runtimeFolderIsChosenInOrder)
{
    const Variable chosen("PYRUX_RUNTIME_DIR", "/srv/run");
    const Variable session("XDG_RUNTIME_DIR", "/run/user/1000");
    EXPECT_EQ(runtimeFolder(), "/srv/run");
    const Variable unset("PYRUX_RUNTIME_DIR", "");
    EXPECT_EQ(runtimeFolder(), "/run/user/1000/pyrux");
    const Variable noSession("XDG_RUNTIME_DIR", "");
    EXPECT_EQ(runtimeFolder(), "/run/pyrux");
}

TEST(PlatformFoldersLinux, runtimeFolderIsMadeForItsOwnerAlone)
{
    const TemporaryFolder parent;
    const Variable chosen("PYRUX_RUNTIME_DIR", parent.path() / "a" / "b");
    ASSERT_TRUE(makeRuntimeFolder());
    struct stat found {};
    ASSERT_EQ(stat((parent.path() / "a" / "b").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode, S_IFDIR | 0700U);
    EXPECT_TRUE(makeRuntimeFolder()) << "when it is there already";
}

TEST(PlatformFoldersLinux, runtimeFolderKeepsTheModeThatItHas)
{
    const TemporaryFolder parent;
    ASSERT_EQ(chmod(parent.path().c_str(), 0755), 0);
    const Variable chosen("PYRUX_RUNTIME_DIR", parent.path());
    ASSERT_TRUE(makeRuntimeFolder());
    struct stat found {};
    ASSERT_EQ(stat(parent.path().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode, S_IFDIR | 0755U);
}

TEST(PlatformFoldersLinux, runtimeFolderCannotBeMadeInAFile)
{
    const Variable chosen("PYRUX_RUNTIME_DIR", pyrux::test::debugOutputFile() / "pyrux");
    EXPECT_FALSE(makeRuntimeFolder());
}
