// The log: categories and sinks.

#include "core/log.h"

#include "tests/support/debug_capture.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace {

using namespace pyrux;
using namespace pyrux::test;

using Texts = std::vector<std::string>;

/// Tags by category; empty: none.
// clang-format off
const std::array<const char*, 58> tags{
    "[SYS]",
    "[RD410]", // 1
    "[PD210]", // 2
    "[QW410]", // 3
    "[HS310]", // 4
    "[GLOWHUB]", // 5
    "[TINTHUB]", // 6
    "", // 7
    "[VK530]", // 8
    "[VK410]", // 9
    "[PW520]", // 10
    "[HS410]", // 11
    "[VK320]", // 12
    "[VIEWSONIC24]", // 13
    "[VIEWSONIC35]", // 14
    "[FZ140]", // 15
    "[VOLTGRID]", // 16
    "", // 17
    "[GLOWHUB2]", // 18
    "[HS220]", // 19
    "[QT151B]", // 20
    "[HS210]", // 21
    "[QT131B]", // 22
    "[VOXDOCK]", // 23
    "[KX9]", // 24
    "[DECKPANELG]", // 25
    "[RD210]", // 26
    "[PD120M]", // 27
    "[RD215]", // 28
    "[RD415]", // 29
    "[TB310]", // 30
    "[QW205V2]", // 31
    "[QW225V2]", // 32
    "[QT122B]", // 33
    "[FZ280]", // 34
    "[RD230]", // 35
    "[QW110]", // 36
    "[STRANDHUB]", // 37
    "[QT120B]", // 38
    "[QT154]", // 39
    "[QT152]", // 40
    "[RD240]", // 41
    "[TB305]", // 42
    "[TB320]", // 43
    "[AU_LINE_550_MULTI]", // 44
    "[QT153]", // 45
    "[RD245]", // 46
    "[FZ140_OLD]", // 47
    "[QW310]", // 48
    "[RD110]", // 49
    "[QX310]", // 50
    "[RD220]", // 51
    "[RD115]", // 52
    "[TB305]", // 53
    "[STRANDHUBV2]", // 54
    "[VK950]", // 55
    "[HS110]", // 56
    "[PLAY_DOCK]", // 57
};
// clang-format on

/// Leaves the settings as they are at load, and the current directory as it was.
class Log : public testing::Test {
protected:
    Log() { std::filesystem::current_path(folder.path()); }
    ~Log() override
    {
        std::filesystem::current_path(before);
        debugEnabled = 1;
        debugType = 1;
    }

    static std::string consoleOf(int category, std::string_view text)
    {
        testing::internal::CaptureStdout();
        log(category, text);
        return testing::internal::GetCapturedStdout();
    }

    std::string file() const
    {
        std::ifstream stream(folder.path() / "PYRUX_debug.txt", std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    bool fileExists() const { return std::filesystem::exists(folder.path() / "PYRUX_debug.txt"); }
    void makeFile(const char* content) const
    {
        std::ofstream(folder.path() / "PYRUX_debug.txt", std::ios::binary) << content;
    }

    const std::filesystem::path before = std::filesystem::current_path();
    TemporaryFolder folder;
    DebugCapture capture;
};

TEST_F(Log, isOnAtStartAndGoesToTheDebugOutput)
{
    EXPECT_EQ(debugEnabled, 1);
    EXPECT_EQ(debugType, 1);
}

TEST_F(Log, tagsItsCategories)
{
    for (std::size_t category = 0; category < tags.size(); ++category) {
        std::string tag = "before";
        const bool known = categoryTag(int(category), tag);
        EXPECT_EQ(known, std::string(tags[category]) != "") << category;
        EXPECT_EQ(tag, known ? tags[category] : "[UNKNW]") << category;
    }
    for (const int category : {58, 59, 86, 87, 255, 1000000, -1, -2147483647, 2147483647}) {
        std::string tag = "before";
        EXPECT_FALSE(categoryTag(category, tag)) << category;
        EXPECT_EQ(tag, "[UNKNW]");
    }
}

TEST_F(Log, writesToTheDebugOutput)
{
    Texts expected;
    for (std::size_t category = 0; category < tags.size(); ++category) {
        log(int(category), "text");
        if (*tags[category])
            expected.push_back(std::string("[PYRUX]") + tags[category] + "text");
    }
    log(58, "text");
    log(-1, "text");
    EXPECT_EQ(expected.size(), 56u);
    EXPECT_EQ(capture.texts(), expected);
    EXPECT_FALSE(fileExists());
}

TEST_F(Log, writesLinesToTheStandardOutput)
{
    debugType = 2;
    EXPECT_EQ(consoleOf(26, "text"), "[PYRUX][RD210]text\n");
    EXPECT_EQ(consoleOf(0, ""), "[PYRUX][SYS]\n");
    EXPECT_EQ(consoleOf(0, "%s%n"), "[PYRUX][SYS]%s%n\n");
    EXPECT_EQ(consoleOf(7, "text"), "");
    EXPECT_EQ(consoleOf(58, "text"), "");
    EXPECT_EQ(capture.texts(), Texts{});
    EXPECT_FALSE(fileExists());
}

TEST_F(Log, appendsToTheFileThatIsThere)
{
    for (const int type : {3, 0, -1, 99}) {
        debugType = type;
        makeFile("before\n");
        EXPECT_EQ(consoleOf(26, "one"), "");
        log(0, "two");
        log(17, "dropped");
        log(58, "dropped");
        EXPECT_EQ(file(), "before\n[RD210]one\r\n[SYS]two\r\n") << type;
    }
    EXPECT_EQ(capture.texts(), Texts{});
}

TEST_F(Log, makesNoFile)
{
    debugType = 3;
    log(0, "lost");
    EXPECT_FALSE(fileExists());
    std::filesystem::create_directory(folder.path() / "PYRUX_debug.txt");
    log(0, "lost too");
    EXPECT_EQ(capture.texts(), Texts{});
}

TEST_F(Log, closesTheFileBehindEachLine)
{
    debugType = 3;
    makeFile("");
    log(0, "one");
    std::filesystem::remove(folder.path() / "PYRUX_debug.txt");
    log(0, "lost");
    EXPECT_FALSE(fileExists());
    makeFile("");
    log(0, "two");
    EXPECT_EQ(file(), "[SYS]two\r\n");
}

TEST_F(Log, isSilentWhenItIsOff)
{
    debugEnabled = 0;
    bool built = false;
    makeFile("");
    for (const int type : {1, 2, 3}) {
        debugType = type;
        EXPECT_EQ(consoleOf(0, "text"), "");
        log(0, [&] {
            built = true;
            return std::string("text");
        });
        logCall(0, "name", 5);
    }
    EXPECT_FALSE(built);
    EXPECT_EQ(capture.texts(), Texts{});
    EXPECT_EQ(file(), "");
}

TEST_F(Log, namesAFunctionAndItsLine)
{
    logCall(0, "PYRUX::devNums", 123);
    logCall(26, "PYRUX::PYRUX_RD210::saveConfig", 7);
    logCall(7, "PYRUX::pd110", 7);
    EXPECT_EQ(capture.texts(),
              (Texts{"[PYRUX][SYS]PYRUX::devNums, 123", "[PYRUX][RD210]PYRUX::PYRUX_RD210::saveConfig, 7"}));
}

TEST_F(Log, doesNotSwitchTheDirectWriters)
{
    for (const int enabled : {1, 0})
        for (const int type : {1, 2, 3}) {
            debugEnabled = enabled;
            debugType = type;
            debugText("direct");
        }
    EXPECT_EQ(capture.texts(), Texts(6, "[PYRUX]direct"));
}

TEST_F(Log, writesConsoleLines)
{
    debugEnabled = 0;
    testing::internal::CaptureStdout();
    consoleLine("is a dongle dev:RD245_DONGLE");
    consoleLine("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "is a dongle dev:RD245_DONGLE\n\n");
}

TEST_F(Log, takesLinesOfManyThreads)
{
    constexpr int count = 200;
    const std::string text(100, 'z');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int line = 0; line < count; ++line)
                log(0, text);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(capture.texts(), Texts(4 * count, "[PYRUX][SYS]" + text));
}

} // namespace
