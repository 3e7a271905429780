#include "platform/system_load.h"

#include "platform/dynamic_library.h"
#include "tests/fakes/system_fakes.h"

#include <gtest/gtest.h>

namespace {

using namespace pyrux::platform;
using namespace pyrux::test;
using Step = SystemFakes::GpuStep;

/// The fakes stand for the NVIDIA driver's library.
std::uint32_t gpuLoad()
{
    return nvidiaLoadBy(libraryFile("tw-hook").c_str());
}

} // namespace

TEST(PlatformSystemLoad, countsTheProcessorsTimes)
{
    const auto first = cpuTimes();
    ASSERT_TRUE(first);
    EXPECT_GT(first->total, 0u);
    EXPECT_LE(first->idle, first->total);
    const auto second = cpuTimes();
    ASSERT_TRUE(second);
    EXPECT_GE(second->total, first->total);
}

TEST(PlatformSystemLoad, tellsTheMemoryLoad)
{
    EXPECT_GT(memoryLoad(), 0u);
    EXPECT_LE(memoryLoad(), 100u);
}

TEST(PlatformSystemLoad, tellsTheLoadOfTheFirstNvidiaCard)
{
    SystemFakes& fakes = freshSystemFakes();
    fakes.gpuLoad = 37;
    EXPECT_EQ(gpuLoad(), 37u);
    fakes.gpuLoad = 100;
    EXPECT_EQ(gpuLoad(), 100u);
    EXPECT_EQ(fakes.gpuStarts, 0); // ended as often as started
}

TEST(PlatformSystemLoad, isZeroWhenAnyStepToTheCardFails)
{
    SystemFakes& fakes = freshSystemFakes();
    fakes.gpuLoad = 37;
    for (const Step step : {Step::start, Step::list, Step::empty, Step::load}) {
        fakes.failing = step;
        EXPECT_EQ(gpuLoad(), 0u) << static_cast<int>(step);
        EXPECT_EQ(fakes.gpuStarts, 0);
    }
    EXPECT_EQ(nvidiaLoadBy("pyrux-no-such-library"), 0u);
    fakes.failing = Step::none;
    EXPECT_EQ(gpuLoad(), 37u);
}

#ifdef _WIN32
TEST(PlatformSystemLoad, isZeroWhenTheDriverLacksAFunction)
{
    SystemFakes& fakes = freshSystemFakes();
    fakes.gpuLoad = 37;
    for (const std::uint32_t number : {0x0150E828u, 0xE5AC921Fu, 0x189A1FDFu}) {
        fakes.missing = number;
        EXPECT_EQ(gpuLoad(), 0u) << number;
    }
    fakes.missing = 0;
    EXPECT_EQ(gpuLoad(), 37u);
}
#endif

TEST(PlatformDynamicLibrary, findsFunctionsByName)
{
    const DynamicLibrary there(libraryFile("tw-hook"));
    ASSERT_TRUE(there);
    EXPECT_NE(there.find<void()>("installTWInjectHook"), nullptr);
    EXPECT_EQ(there.find<void()>("installNothing"), nullptr);
    const DynamicLibrary missing("pyrux-no-such-library");
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.find<void()>("installTWInjectHook"), nullptr);
}
