// GLOW_HUB: frames of a host.

#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <chrono>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

class GlowHubLights : public testing::Test {
protected:
    using Leds = std::vector<LightingLed>;
    using Color = LightingPortColorOf<5>;

    /// The three reports of a port with these colors of its 48 places, and 14 more in the last report.
    static std::string portFrame(int port, const std::vector<std::string>& colors)
    {
        const auto range = [&](std::size_t from, std::size_t to) {
            std::string text;
            for (std::size_t i = from; i < to; ++i)
                text += " " + (i < colors.size() ? colors[i] : "00 00 00");
            return text;
        };
        return wire("00 07 " + hexByte(port - 1) + " 30" + range(0, 20) + " | 01" + range(20, 41) + " | 82" +
                    range(41, 62));
    }
    static std::string solidFrame(int port, const std::string& color)
    {
        return portFrame(port, std::vector<std::string>(48, color));
    }

    /// The queue's thread stands in the write of a strip frame, 80 05 EE, until `release`.
    void hold()
    {
        sim::setConduct(hub.path, {.writeTime = 900ms});
        const Color strip{{}, {5, 0, 0, 0, 0}, 0xEE, 0, 0};
        EXPECT_EQ(hub->setLightingPortColor(&strip), E_OK);
        EXPECT_TRUE(sim::awaitWritersInside(1));
    }
    void release()
    {
        sim::setConduct(hub.path, {});
        sim::releaseWrites(hub.path);
    }

    HubOf<GlowHubModel> hub;
};

TEST_F(GlowHubLights, arePaintedInOneColor)
{
    for (std::uint32_t zone = 1; zone <= 4; ++zone) {
        const Color color{{}, {0, zone, 0, 9, 0}, 0x11, 0x22, 0x33};
        EXPECT_EQ(hub->setLightingPortColor(&color), E_OK);
        EXPECT_EQ(hub.written(3), solidFrame(int(zone), "11 22 33"));
    }
    const Color strip{{}, {0, 0, 0, 0, 5}, 0x44, 0x55, 0x66};
    EXPECT_EQ(hub->setLightingPortColor(&strip), E_OK);
    EXPECT_EQ(hub.written(1), "80 05 44 55 66");
}

TEST_F(GlowHubLights, arePaintedInOneColorAltogether)
{
    const Color color{{}, {5, 4, 3, 2, 1}, 0x11, 0x22, 0x33};
    EXPECT_EQ(hub->setLightingPortColor(&color), E_OK);
    std::vector<std::string> expected{"80 05 11 22 33"};
    for (int port = 1; port <= 4; ++port)
        expected.push_back(solidFrame(port, "11 22 33"));
    EXPECT_EQ(sortedGroups(hub.written(13)), sortedGroups(joined(expected)));
}

TEST_F(GlowHubLights, arePaintedOneByOne)
{
    for (const std::uint32_t index : {0, 19, 20, 40, 41, 47, 61}) {
        std::vector<std::string> colors(index + 1, "00 00 00");
        colors[index] = "0A 0B 0C";
        EXPECT_EQ(hub->setSyncLightingData({{3, Leds{{index, 10, 11, 12}}}}), E_OK);
        EXPECT_EQ(hub.written(3), portFrame(3, colors)) << index;
    }
    Leds all;
    std::vector<std::string> colors;
    for (std::uint32_t i = 0; i < 48; ++i) {
        all.push_back({47 - i, std::uint8_t(147 - i), std::uint8_t(247 - i), 7});
        colors.push_back(hexByte(100 + int(i)) + " " + hexByte(200 + int(i)) + " 07");
    }
    EXPECT_EQ(hub->setSyncLightingData({{1, all}}), E_OK);
    EXPECT_EQ(hub.written(3), portFrame(1, colors));
}

TEST_F(GlowHubLights, goDarkWhereAZoneDoesNotListThem)
{
    EXPECT_EQ(hub->setSyncLightingData({{2, Leds{{0, 1, 2, 3}, {21, 4, 5, 6}}}}), E_OK);
    hub.written(3);
    EXPECT_EQ(hub->setSyncLightingData({{2, {}}}), E_OK);
    EXPECT_EQ(hub.written(3), portFrame(2, {}));
}

TEST_F(GlowHubLights, areLeftOutWhereTheFrameHasNoPlaceForThem)
{
    const Leds leds{
        {62, 0xEE, 0xEE, 0xEE}, {255, 0xEE, 0xEE, 0xEE}, {0xFFFFFFFF, 0xEE, 0xEE, 0xEE}, {1, 1, 2, 3}};
    EXPECT_EQ(hub->setSyncLightingData({{4, leds}}), E_OK);
    EXPECT_EQ(hub.written(3), portFrame(4, {"00 00 00", "01 02 03"}));
}

TEST_F(GlowHubLights, ofTheStripAreNotPaintedOneByOne)
{
    EXPECT_EQ(hub->setSyncLightingData({{5, Leds{{0, 1, 2, 3}}}, {2, Leds{{0, 4, 5, 6}}}}), E_OK);
    EXPECT_EQ(hub.written(3), portFrame(2, {"04 05 06"}));
    EXPECT_EQ(hub->setSyncLightingData({{5, Leds{{0, 1, 2, 3}}}}), E_OK);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

TEST_F(GlowHubLights, goOutInTheOrderOfTheirLanes)
{
    hold();
    EXPECT_EQ(hub->setSyncLightingData({{4, Leds{{0, 4, 4, 4}}}, {3, Leds{{0, 3, 3, 3}}}}), E_OK);
    EXPECT_EQ(hub->setSyncLightingData({{2, Leds{{0, 2, 2, 2}}}, {1, Leds{{0, 1, 1, 1}}}}), E_OK);
    release();
    EXPECT_EQ(hub.written(13), joined({"80 05 EE", portFrame(1, {"01 01 01"}), portFrame(2, {"02 02 02"}),
                                       portFrame(3, {"03 03 03"}), portFrame(4, {"04 04 04"})}));
}

TEST_F(GlowHubLights, goOutDarkInTheOrderOfTheirLanes)
{
    hold();
    EXPECT_EQ(hub->setLightingTurnOff(), E_OK);
    release();
    EXPECT_EQ(hub.written(14), joined({"80 05 EE", portFrame(1, {}), portFrame(2, {}), portFrame(3, {}),
                                       portFrame(4, {}), "80 05"}));
}

TEST_F(GlowHubLights, replaceFramesThatWait)
{
    hold();
    for (std::uint8_t i = 1; i <= 50; ++i)
        EXPECT_EQ(hub->setSyncLightingData({{2, Leds{{0, i, i, i}}}}), E_OK);
    // Deliberate: the custom colors of port 1 share a lane with the frames of zone 2.
    const ArgbCustomBuffer buffer{};
    EXPECT_EQ(hub->setEffectCustomize(1, &buffer), E_OK);
    release();
    EXPECT_EQ(hub.written(4), "80 05 EE | 00 10 02 00 30 | 01 | 82");
    hold();
    EXPECT_EQ(hub->setEffectCustomize(1, &buffer), E_OK);
    EXPECT_EQ(hub->setSyncLightingData({{2, Leds{{0, 8, 8, 8}}}}), E_OK);
    release();
    EXPECT_EQ(hub.written(4), joined({"80 05 EE", portFrame(2, {"08 08 08"})}));
}

TEST_F(GlowHubLights, doNotRememberOtherFrames)
{
    EXPECT_EQ(hub->setSyncLightingData({{1, Leds{{0, 1, 2, 3}}}, {1, Leds{{1, 4, 5, 6}}}}), E_OK);
    const std::string older = portFrame(1, {"01 02 03"});
    const std::string newer = portFrame(1, {"00 00 00", "04 05 06"});
    std::string all = hub.written(3);
    if (all != newer) { // the older one went out before it was replaced
        while (all.size() < joined({older, newer}).size())
            all = joined({all, hub.written(1)});
        EXPECT_EQ(all, joined({older, newer}));
    }
}

WAITING_TEST(GlowHubStalled, countsEveryWriteAsDone)
{
    HubOf<GlowHubModel> hub;
    sim::setConduct(hub.path, {.writeTime = 60s});
    EXPECT_EQ(hub->setIdentify(1), E_OK);
    EXPECT_EQ(hub->setEffectMode(1, 12), E_OK);
    EXPECT_EQ(hub->setLightingUninit(), E_OK);
    sim::releaseWrites(hub.path);
}

} // namespace
} // namespace pyrux::test
