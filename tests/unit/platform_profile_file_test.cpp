#include "platform/profile_file.h"

#include "tests/support/surroundings.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

using pyrux::platform::readProfileInt;

class PlatformProfileFile : public testing::Test {
protected:
    int read(const std::string& content, int fallback = -1)
    {
        const auto file = folder.path() / "localdevice.ini";
        std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
        return readProfileInt(file, "VK950_VERSION", "version", fallback);
    }

    pyrux::test::TemporaryFolder folder;
};

} // namespace

TEST_F(PlatformProfileFile, readsTheKeyOfItsSection)
{
    EXPECT_EQ(
        read("[OTHER]\r\nversion=1\r\n[VK950_VERSION]\r\nolder=2\r\nversion=37\r\n[LAST]\r\nversion=3\r\n"),
        37);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=5"), 5);
}

TEST_F(PlatformProfileFile, doesNotRegardCase)
{
    EXPECT_EQ(read("[vk950_Version]\nVERSION=12\n"), 12);
}

TEST_F(PlatformProfileFile, dropsBlanks)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversion \t=  12 \n"), 12);
    EXPECT_EQ(read("  [VK950_VERSION]\n  other=4\n\t version = 13\n"), 13);
}

TEST_F(PlatformProfileFile, readsTheLeadingDigits)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversion=12abc\n"), 12);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=3.86\n"), 3);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=007\n"), 7);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=9 ; new\n"), 9);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=-4\n"), -4);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=\"21\"\n"), 21);
    EXPECT_EQ(read("[VK950_VERSION]\nversion='22'\n"), 22);
}

TEST_F(PlatformProfileFile, fallsBackWithoutANumber)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversion=\n", 8), 8);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=v2\n", 8), 8);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=-\n", 8), 8);
    EXPECT_EQ(read("[VK950_VERSION]\nversion\n", 8), 8);
}

TEST_F(PlatformProfileFile, fallsBackWithoutTheEntry)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversions=3\n[OTHER]\nversion=4\n", 8), 8);
    EXPECT_EQ(read("version=3\n", 8), 8);
    EXPECT_EQ(read("", 8), 8);
    EXPECT_EQ(readProfileInt(folder.path() / "missing.ini", "VK950_VERSION", "version", 8), 8);
    EXPECT_EQ(readProfileInt(folder.path(), "VK950_VERSION", "version", 8), 8);
}

TEST_F(PlatformProfileFile, skipsComments)
{
    EXPECT_EQ(read("; [OTHER]\n[VK950_VERSION]\n;version=3\nversion=4\n"), 4);
}

TEST_F(PlatformProfileFile, takesTheFirstOfTwoEntries)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversion=3\nversion=4\n"), 3);
}

TEST_F(PlatformProfileFile, endsAKeyAtTheEqualsSignAlone)
{
    EXPECT_EQ(read("[VK950_VERSION]\nversion:7\nversion:x=8\nversion=9\n"), 9);
}

TEST_F(PlatformProfileFile, survivesLongLines)
{
    const std::string rubbish(5000, 'x');
    EXPECT_EQ(read("[VK950_VERSION]\n" + rubbish + "\n" + rubbish + "=1\nversion=6\n"), 6);
    EXPECT_EQ(read("[VK950_VERSION]\nversion=6" + rubbish + "\n"), 6);
    for (int length = 150; length < 250; ++length)
        EXPECT_EQ(read("[VK950_VERSION]\n" + rubbish.substr(0, length) + "version=1\nversion=6\n"), 6)
            << length;
}

TEST_F(PlatformProfileFile, takesAColonIntoASectionsName)
{
    read("[OTHER]\nversion=1\n[A:B]\nversion=2\n[A]\nversion=3\n");
    EXPECT_EQ(readProfileInt(folder.path() / "localdevice.ini", "a:b", "version", -1), 2);
}
