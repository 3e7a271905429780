#include "platform/text.h"

#include <gtest/gtest.h>

using pyrux::platform::narrow;

TEST(PlatformText, keepsPlainTexts)
{
    EXPECT_EQ(narrow(L"RD210 mouse"), "RD210 mouse");
    EXPECT_EQ(narrow(L""), "");
}

TEST(PlatformText, makesTheEmptyTextOfNull)
{
    EXPECT_EQ(narrow(nullptr), "");
}

TEST(PlatformText, replacesHalvesOfSurrogatePairs)
{
    const wchar_t high[]{L'a', 0xD800, L'b', 0};
    const wchar_t low[]{0xDFFF, 0};
    EXPECT_EQ(narrow(high), "a?b");
    EXPECT_EQ(narrow(low), "?");
}
