#include "platform/text.h"

#include <gtest/gtest.h>

using pyrux::platform::narrow;

TEST(PlatformTextLinux, writesUtf8OfEveryLength)
{
    EXPECT_EQ(narrow(L"\u007F"), "\x7F");
    EXPECT_EQ(narrow(L"\u0080"), "\xC2\x80");
    EXPECT_EQ(narrow(L"\u07FF"), "\xDF\xBF");
    EXPECT_EQ(narrow(L"\u0800"), "\xE0\xA0\x80");
    EXPECT_EQ(narrow(L"\uFFFF"), "\xEF\xBF\xBF");
    EXPECT_EQ(narrow(L"\U00010000"), "\xF0\x90\x80\x80");
    EXPECT_EQ(narrow(L"\U0010FFFF"), "\xF4\x8F\xBF\xBF");
}

TEST(PlatformTextLinux, replacesWhatIsNoCharacter)
{
    const wchar_t beyond[]{0x110000, -1, L'x', 0};
    EXPECT_EQ(narrow(beyond), "??x");
}
