#include "services/hardware_names.h"

#include "tests/support/debug_log.h"

#include <gtest/gtest.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

namespace {

using namespace pyrux;
using namespace pyrux::test;
using platform::Hardware;
using platform::HardwareFacts;
using Failure = HardwareFacts::Failure;

/// Answers by part: processor, board, memory, graphics card.
using Answers = std::array<HardwareFacts, 4>;

Answers allNames()
{
    return {HardwareFacts{.texts = {"Processor 3000"}}, HardwareFacts{.texts = {"Board Maker", "B-1"}},
            HardwareFacts{.texts = {"Ram Maker", "R-1", "17179869184"}},
            HardwareFacts{.texts = {"Card 4000"}}};
}

/// What comes of answers: the result, the names, and the lines on both outputs.
struct Collected {
    explicit Collected(const Answers& answers)
    {
        testing::internal::CaptureStdout();
        lines = debugLinesOf([&] {
            result = collectHardwareNames(
                [&](Hardware part) { return answers[static_cast<std::size_t>(part)]; }, names);
        });
        console = testing::internal::GetCapturedStdout();
    }

    void expectTold(const Lines& expected) const
    {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(lines, expected);
        std::string text;
        for (const std::string& line : expected)
            text += line + "\n";
        EXPECT_EQ(console, text);
    }

    SysHardwareNames names{.cpuName = "before",
                           .gpuName = "before",
                           .ramManufacturer = "before",
                           .ramModel = "before",
                           .ramCapacityGiB = -1,
                           .boardManufacturer = "before",
                           .boardProduct = "before"};
    _error result = E_FAIL;
    Lines lines;
    std::string console;
};

HardwareFacts failed(Failure step)
{
    return {step, 0x80041010};
}

} // namespace

TEST(HardwareNames, areTakenFromFourAnswers)
{
    const Collected collected(allNames());
    collected.expectTold({});
    EXPECT_EQ(collected.names.cpuName, "Processor 3000");
    EXPECT_EQ(collected.names.gpuName, "Card 4000");
    EXPECT_EQ(collected.names.ramManufacturer, "Ram Maker");
    EXPECT_EQ(collected.names.ramModel, "R-1");
    EXPECT_EQ(collected.names.ramCapacityGiB, 16);
    EXPECT_EQ(collected.names.boardManufacturer, "Board Maker");
    EXPECT_EQ(collected.names.boardProduct, "B-1");
}

TEST(HardwareNames, cutTheCapacityToGibibytes)
{
    const auto capacity = [](const char* bytes) {
        Answers answers = allNames();
        answers[2].texts[2] = bytes;
        return Collected(answers).names.ramCapacityGiB;
    };
    EXPECT_EQ(capacity("1073741823"), 0);
    EXPECT_EQ(capacity("1073741824"), 1);
    EXPECT_EQ(capacity("34359738367"), 31);
    EXPECT_EQ(capacity("1099511627776"), 1024);
    EXPECT_EQ(capacity("0"), 0);
    EXPECT_EQ(capacity(""), 0);
    EXPECT_EQ(capacity("x"), 0);
}

TEST(HardwareNames, areEmptyForMissingParts)
{
    const Collected collected(Answers{});
    collected.expectTold({"[PYRUX]Fail to get cpu name", "[PYRUX]Fail to get gpu name"});
    EXPECT_EQ(collected.names.cpuName, "");
    EXPECT_EQ(collected.names.gpuName, "");
    EXPECT_EQ(collected.names.ramManufacturer, "");
    EXPECT_EQ(collected.names.ramModel, "");
    EXPECT_EQ(collected.names.ramCapacityGiB, 0);
    EXPECT_EQ(collected.names.boardManufacturer, "");
    EXPECT_EQ(collected.names.boardProduct, "");
}

TEST(HardwareNames, tellWhichStepToTheProcessorFailed)
{
    Answers answers = allNames();
    answers[0] = failed(Failure::locator);
    Collected(answers).expectTold({"[PYRUX]Failed to create IWbemLocator object.",
                                   "[PYRUX]Err code = 0x80041010", "[PYRUX]Fail to get cpu info"});
    answers[0] = failed(Failure::server);
    Collected(answers).expectTold(
        {"[PYRUX]Fail to connect Server", "[PYRUX]Err code = 0x80041010", "[PYRUX]Fail to get cpu info"});
    answers[0] = failed(Failure::query);
    Collected(answers).expectTold({"[PYRUX]Fail to get cpu info"});
    EXPECT_EQ(Collected(answers).names.cpuName, "");
    EXPECT_EQ(Collected(answers).names.gpuName, "Card 4000");
}

TEST(HardwareNames, tellWhichStepToTheCardFailed)
{
    Answers answers = allNames();
    answers[3] = failed(Failure::locator);
    Collected(answers).expectTold({"[PYRUX]Failed to create IWbemLocator object.",
                                   "[PYRUX]Err code = 0x80041010", "[PYRUX]Fail to get gpu info"});
    answers[3] = failed(Failure::query);
    Collected(answers).expectTold({"[PYRUX]Fail to get gpu info"});
    answers[3] = {.texts = {""}};
    Collected(answers).expectTold({"[PYRUX]Fail to get gpu name"});
}

TEST(HardwareNames, tellWhichStepToBoardAndMemoryFailed)
{
    struct Case {
        Failure step;
        const char* text;
    };
    for (const Case& each : {Case{Failure::locator, "[PYRUX]fail CoCreateInstance"},
                             Case{Failure::server, "[PYRUX]fail ConnectServer"},
                             Case{Failure::query, "[PYRUX]fail ExecQuery"}}) {
        Answers answers = allNames();
        answers[1] = failed(each.step);
        Collected(answers).expectTold(
            {each.text, "[PYRUX]error code = 0x80041010", "[PYRUX]Fail to get motherboard info"});
        answers = allNames();
        answers[2] = failed(each.step);
        Collected(answers).expectTold(
            {each.text, "[PYRUX]error code = 0x80041010", "[PYRUX]Fail to get ram info"});
        EXPECT_EQ(Collected(answers).names.ramCapacityGiB, 0);
        EXPECT_EQ(Collected(answers).names.boardProduct, "B-1");
    }
}

TEST(HardwareNames, areTheOldOnesWhenACollectorThrows)
{
    SysHardwareNames names{};
    names.cpuName = "before";
    EXPECT_EQ(debugLinesOf([&] {
                  EXPECT_EQ(collectHardwareNames(
                                [](Hardware part) -> HardwareFacts {
                                    if (part == Hardware::memory)
                                        throw std::runtime_error("no memory");
                                    return {};
                                },
                                names),
                            -3);
              }),
              (Lines{"[PYRUX][SYS]cannot get the system info"}));
    EXPECT_EQ(names.cpuName, "before");
}

TEST(HardwareNames, areAskedForOnFourThreads)
{
    std::mutex mutex;
    std::set<std::thread::id> threads{std::this_thread::get_id()};
    std::set<Hardware> parts;
    std::condition_variable changed;
    SysHardwareNames names;
    testing::internal::CaptureStdout();
    EXPECT_EQ(collectHardwareNames(
                  [&](Hardware part) {
                      std::unique_lock lock(mutex);
                      threads.insert(std::this_thread::get_id());
                      parts.insert(part);
                      changed.notify_all();
                      // All four are here at once.
                      EXPECT_TRUE(changed.wait_for(lock, std::chrono::seconds(10),
                                                   [&] { return parts.size() == 4; }));
                      return HardwareFacts{};
                  },
                  names),
              0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(threads.size(), 5u);
}
