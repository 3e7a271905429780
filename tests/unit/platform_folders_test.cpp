#include "platform/folders.h"

#include <gtest/gtest.h>

TEST(PlatformFolders, dataFolderIsAbsolute)
{
    EXPECT_TRUE(pyrux::platform::commonDataFolder().is_absolute()) << pyrux::platform::commonDataFolder();
}
