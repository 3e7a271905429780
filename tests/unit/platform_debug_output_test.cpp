#include "platform/debug_output.h"

#include "tests/support/debug_capture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

using pyrux::platform::debugOutput;
using pyrux::test::DebugCapture;

TEST(PlatformDebugOutput, handsTextsOverInOrder)
{
    DebugCapture capture;
    debugOutput("[PYRUX][SYS]one");
    debugOutput("two");
    EXPECT_EQ(capture.texts(), (std::vector<std::string>{"[PYRUX][SYS]one", "two"}));
}

TEST(PlatformDebugOutput, keepsLinesOfManyThreadsWhole)
{
    DebugCapture capture;
    const std::string lines[]{std::string(300, 'a'), std::string(300, 'b'), std::string(300, 'c')};
    std::vector<std::thread> threads;
    for (const std::string& line : lines)
        threads.emplace_back([&line] {
            for (int i = 0; i < 100; ++i)
                debugOutput(line);
        });
    for (std::thread& thread : threads)
        thread.join();
    const auto texts = capture.texts();
    EXPECT_EQ(texts.size(), 300U);
    for (const std::string& line : lines)
        EXPECT_EQ(std::ranges::count(texts, line), 100);
}
