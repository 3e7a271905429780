// The wired mice with lights: frames of a host.

#include "tests/support/debug_log.h"
#include "tests/support/frame_pace.h"
#include "tests/support/handles.h"
#include "tests/support/led_mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Zones = std::vector<LightingLedZone>;

/// A frame of one LED whose red tells it from others.
Zones frame(std::uint8_t red)
{
    return {{1, {{0, red, 0x22, 0x33}}}};
}

template <class Model>
class LedMouseLights : public testing::Test {
protected:
    bool pausesBetween(std::chrono::milliseconds least, std::chrono::milliseconds most)
    {
        return test::pausesBetween(
            mouse.path, [&](std::uint8_t red) { EXPECT_EQ(mouse->setSyncLightingData(frame(red)), E_OK); }, 1,
            least, most);
    }

    /// The queue's thread stands in the write of a frame, for a while.
    void holdQueue()
    {
        sim::setConduct(mouse.path, {.writeTime = 150ms});
        mouse->setSyncLightingData(frame(1));
        while (sim::writersInside() == 0)
            std::this_thread::yield();
    }

    Opened<Model> mouse;
};
TYPED_TEST_SUITE(LedMouseLights, LedMouseModels, ModelName);

TYPED_TEST(LedMouseLights, areTakenOverDark)
{
    EXPECT_EQ(this->mouse->setLightingInit(), E_OK);
    EXPECT_EQ(this->mouse.written(3), wire("41 02 | C0 F0 00 00 01 | C0 00"));
}

TYPED_TEST(LedMouseLights, areTakenOverWithoutWaitingForReplies)
{
    this->mouse.device->silence("41");
    this->mouse.device->silence("C0");
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->mouse->setLightingInit(), E_OK); }), 1000);
    EXPECT_EQ(this->mouse.written(3), wire("41 02 | C0 F0 00 00 01 | C0 00"));
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->mouse->setLightingUninit(), E_OK); }), 1000);
    EXPECT_EQ(this->mouse.written(), wire("41 00"));
}

TYPED_TEST(LedMouseLights, areGivenBack)
{
    EXPECT_EQ(this->mouse->setLightingUninit(), E_OK);
    EXPECT_EQ(this->mouse.written(), wire("41 00"));
}

TYPED_TEST(LedMouseLights, areTurnedOff)
{
    EXPECT_EQ(this->mouse->setLightingTurnOff(), E_OK);
    EXPECT_EQ(this->mouse.written(1), wire("C0 00"));
}

TYPED_TEST(LedMouseLights, arePaintedOneByOne)
{
    EXPECT_EQ(this->mouse->setSyncLightingData({{1, {{2, 0x11, 0x12, 0x13}, {0, 0x21, 0x22, 0x23}}}}), E_OK);
    EXPECT_EQ(this->mouse.written(1), "C0 01 02 00 02 11 12 13 00 21 22 23");
}

TYPED_TEST(LedMouseLights, ofSeveralZonesShareAFrame)
{
    EXPECT_EQ(this->mouse->setSyncLightingData(
                  {{7, {{1, 0x11, 0x12, 0x13}}}, {0, {}}, {9, {{255, 0x21, 0x22, 0x23}}}}),
              E_OK);
    EXPECT_EQ(this->mouse.written(1), "C0 01 02 00 01 11 12 13 FF 21 22 23");
}

TYPED_TEST(LedMouseLights, areLeftOutWhereTheFrameHasNoPlaceForThem)
{
    Zones zones{{1, {{256, 0xEE, 0xEE, 0xEE}, {0xFFFFFFFF, 0xEE, 0xEE, 0xEE}}}};
    for (std::uint32_t i = 0; i < 17; ++i)
        zones[0].leds.push_back({i, std::uint8_t(0x40 + i), 0x01, 0x02});
    EXPECT_EQ(this->mouse->setSyncLightingData(zones), E_OK);
    EXPECT_EQ(this->mouse.written(1),
              "C0 01 0F 00 00 40 01 02 01 41 01 02 02 42 01 02 03 43 01 02 04 44 01 02 05 45 01 02 06 46 01 "
              "02 07 47 01 02 08 48 01 02 09 49 01 02 0A 4A 01 02 0B 4B 01 02 0C 4C 01 02 0D 4D 01 02 0E 4E "
              "01 02");
}

TYPED_TEST(LedMouseLights, goDarkWhereAZoneListsNone)
{
    EXPECT_EQ(this->mouse->setSyncLightingData({{1, {}}}), E_OK);
    EXPECT_EQ(this->mouse.written(1), wire("C0 01 00"));
}

TYPED_TEST(LedMouseLights, needAZone)
{
    EXPECT_EQ(this->mouse->setSyncLightingData({}), E_INVALID_SET);
    EXPECT_EQ(this->mouse->stopSurfaceLearning(), E_OK);
    EXPECT_EQ(this->mouse.written(), wire("80 01"));
}

TYPED_TEST(LedMouseLights, haveNoColorForAllZones)
{
    const LightingPortColorOf<5> color{{}, {1, 2, 3, 4, 5}, 1, 2, 3};
    EXPECT_EQ(this->mouse->setLightingPortColor(&color), E_NOT_SUPPORTED);
    EXPECT_EQ(this->mouse->setLightingPortColor(nullptr), E_NOT_SUPPORTED);
    EXPECT_EQ(this->mouse.written(), "");
}

TYPED_TEST(LedMouseLights, logOnlyWhatDoesNotRunAtFrameRate)
{
    EXPECT_EQ(
        debugLinesOf([&] {
            this->mouse->setLightingInit();
            this->mouse->setLightingPortColor(nullptr);
            this->mouse->setSyncLightingData(frame(1));
            this->mouse->setSyncLightingData({});
            this->mouse->setLightingTurnOff();
            this->mouse->setLightingUninit();
        }),
        (Lines{
            hostLine<TypeParam>("setLightingInit, #"), hostLine<TypeParam>("setLightingInit, ret = 0"),
            hostLine<TypeParam>("setLightingTurnOff, #"), hostLine<TypeParam>("setLightingTurnOff, ret = 0"),
            hostLine<TypeParam>("setLightingUninit, #"), hostLine<TypeParam>("setLightingUninit, ret = 0")}));
}

TYPED_TEST(LedMouseLights, areSlowUntilTheHostTakesThemAndWhenItGivesThemBack)
{
    EXPECT_TRUE(this->pausesBetween(100ms, 1000ms));
    this->mouse->setLightingInit();
    this->mouse.written(3);
    EXPECT_TRUE(this->pausesBetween(9ms, 90ms));
    this->mouse->setLightingUninit();
    this->mouse.written(1);
    EXPECT_TRUE(this->pausesBetween(100ms, 1000ms));
}

TYPED_TEST(LedMouseLights, showTheNewestFrameOfAFastProducer)
{
    this->mouse->setLightingInit();
    this->mouse.written(3);
    constexpr int frames = 250;
    for (int i = 1; i <= frames; ++i)
        this->mouse->setSyncLightingData(frame(std::uint8_t(i)));
    std::vector<std::string> all = reports(this->mouse.written(1));
    while (all.back() != "C0 01 01 00 00 FA 22 33") {
        const std::vector<std::string> more = reports(this->mouse.written(1));
        ASSERT_FALSE(more.empty());
        all.insert(all.end(), more.begin(), more.end());
    }
    EXPECT_LT(all.size(), std::size_t(frames) / 2);
}

TYPED_TEST(LedMouseLights, forgetFramesThatWaitWhenTheyAreTakenOver)
{
    this->holdQueue();
    this->mouse->setSyncLightingData(frame(9));
    this->mouse->setLightingInit();
    EXPECT_EQ(this->mouse.written(4), "C0 01 01 00 00 01 22 33 | 41 02 | C0 F0 00 00 01 | C0");
}

TYPED_TEST(LedMouseLights, forgetFramesThatWaitWhenTheyAreTurnedOff)
{
    this->holdQueue();
    this->mouse->setSyncLightingData(frame(9));
    this->mouse->setLightingTurnOff();
    EXPECT_EQ(this->mouse.written(2), "C0 01 01 00 00 01 22 33 | C0");
}

TYPED_TEST(LedMouseLights, forgetFramesThatWaitWhenTheyAreGivenBack)
{
    this->holdQueue();
    this->mouse->setSyncLightingData(frame(9));
    this->mouse->setLightingUninit();
    this->mouse->setSyncLightingData(frame(10));
    EXPECT_EQ(this->mouse.written(3), "C0 01 01 00 00 01 22 33 | 41 | C0 01 01 00 00 0A 22 33");
}

TYPED_TEST(LedMouseLights, sendNothingMoreToADeviceThatHasGone)
{
    this->holdQueue();
    this->mouse->setSyncLightingData(frame(9));
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->mouse->exit_device(1), E_OK); }), 5000);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (sim::openHandles() != 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(sim::openHandles(), 0);
    EXPECT_EQ(this->mouse.written(), "C0 01 01 00 00 01 22 33");
}

TYPED_TEST(LedMouseLights, doNotHoldUpTheEnd)
{
    const int before = sim::openHandles();
    this->pausesBetween(0ms, 1000ms);
    this->mouse.forget();
    this->mouse->setSyncLightingData(frame(9)); // in the queue's pause
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->mouse->exit_device(0), E_OK); }), 5000);
    EXPECT_TRUE(awaitHandles(before - 2));
    std::vector<std::string> commands = reports(this->mouse.written());
    std::erase_if(commands, [](const std::string& report) { return report.starts_with("C0"); });
    EXPECT_EQ(joined(commands), wire("41 01 | 41 00"));
}

TYPED_TEST(LedMouseLights, areRefusedByAClosedObject)
{
    this->mouse->exit_device(1);
    this->mouse.written();
    EXPECT_EQ(this->mouse->setLightingInit(), E_CLOSED);
    EXPECT_EQ(this->mouse->setLightingUninit(), E_CLOSED);
    EXPECT_EQ(this->mouse->setLightingPortColor(nullptr), E_CLOSED);
    EXPECT_EQ(this->mouse->setSyncLightingData(frame(1)), E_CLOSED);
    EXPECT_EQ(this->mouse->setSyncLightingData({}), E_CLOSED);
    EXPECT_EQ(this->mouse->setLightingTurnOff(), E_CLOSED);
    EXPECT_EQ(this->mouse.written(), "");
}

TYPED_TEST(LedMouseLights, runBesideCommandsWithReplies)
{
    this->mouse.device->answer("52 28", "52 28 00 00 04");
    this->mouse->setLightingInit();
    std::atomic<bool> stop{false};
    std::thread animation([&] {
        for (std::uint8_t i = 0; !stop; ++i)
            this->mouse->setSyncLightingData(frame(i));
    });
    for (int i = 0; i < 200; ++i) {
        std::uint8_t mode = 0;
        EXPECT_EQ(this->mouse->getEffectMode(&mode), E_OK);
        EXPECT_EQ(mode, 4);
    }
    stop = true;
    animation.join();
}

TEST(LedMouseStalled, endsWithAFrameInTheAir)
{
    Opened<RD215Model> mouse;
    sim::setConduct(mouse.path, {.writeTime = 60s});
    mouse->setSyncLightingData(frame(1));
    while (sim::writersInside() == 0)
        std::this_thread::yield();
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->exit_device(1), E_OK); }), 5000);
    EXPECT_EQ(mouse->setLightingTurnOff(), E_CLOSED);
    sim::releaseWrites(mouse.path);
}

WAITING_TEST(LedMouseStalled, tellsOfReportsThatAreNotTaken)
{
    Opened<RD215Model> mouse;
    sim::setConduct(mouse.path, {.writeTime = 60s});
    EXPECT_EQ(mouse->setLightingInit(), E_WRITE_TIMEOUT);
    EXPECT_EQ(mouse->setLightingUninit(), E_WRITE_TIMEOUT);
    EXPECT_EQ(mouse->setSyncLightingData(frame(1)), E_OK);
    sim::releaseWrites(mouse.path);
}

} // namespace
} // namespace pyrux::test
