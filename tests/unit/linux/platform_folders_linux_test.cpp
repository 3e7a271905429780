#include "platform/folders.h"
#include "platform/linux/runtime_folder.h"

#include "tests/support/surroundings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using pyrux::platform::commonDataFolder;
using pyrux::platform::isRuntimeFolderTrusted;
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

TEST(PlatformFoldersLinux, runtimeFolderOfOthersIsNotUsed)
{
    const TemporaryFolder parent;
    const auto folder = parent.path() / "run";
    const Variable chosen("PYRUX_RUNTIME_DIR", folder);
    EXPECT_FALSE(isRuntimeFolderTrusted()) << "is not there";
    ASSERT_TRUE(makeRuntimeFolder());
    EXPECT_TRUE(isRuntimeFolderTrusted());
    for (const mode_t open : {0777U, 0770U, 0707U, 0720U}) {
        ASSERT_EQ(chmod(folder.c_str(), open), 0);
        EXPECT_FALSE(makeRuntimeFolder()) << std::oct << open;
    }
    ASSERT_EQ(chmod(folder.c_str(), 01777), 0);
    EXPECT_TRUE(makeRuntimeFolder()) << "nobody replaces what is another's";
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    const Variable linked("PYRUX_RUNTIME_DIR", parent.path() / "link");
    std::filesystem::create_directory_symlink(folder, parent.path() / "link");
    EXPECT_TRUE(makeRuntimeFolder()) << "one's own link";
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to give something away";
    ASSERT_EQ(lchown((parent.path() / "link").c_str(), 65534, 65534), 0);
    EXPECT_FALSE(makeRuntimeFolder()) << "another's link";
    const Variable own("PYRUX_RUNTIME_DIR", folder);
    EXPECT_TRUE(makeRuntimeFolder());
    ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
    EXPECT_FALSE(makeRuntimeFolder()) << "another's folder";
}
