// The lighting controllers against their firmware models: what is set reads back, frames are seen.

#include "simulator/models/glow_hub.h"
#include "simulator/models/glow_hub2.h"
#include "simulator/models/play_dock.h"
#include "simulator/models/tint_hub.h"
#include "tests/support/debug_log.h"
#include "tests/support/hub.h"
#include "tests/support/simulated_device.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

std::vector<sim::Light> solid(std::size_t leds, sim::Light color)
{
    return std::vector<sim::Light>(leds, color);
}

/// Four ports and a strip.
sim::Picture hubPicture(std::size_t leds, const std::array<sim::Light, 5>& colors)
{
    return {{"port 1", solid(leds, colors[0])},
            {"port 2", solid(leds, colors[1])},
            {"port 3", solid(leds, colors[2])},
            {"port 4", solid(leds, colors[3])},
            {"strip", {colors[4]}}};
}

// GLOW_HUB

class SimulatedGlowHub : public Simulated<sim::GlowHubFirmware, GlowHubModel> {
protected:
    ArgbEffectParam read(std::uint8_t port)
    {
        ArgbEffectParam record{port, 0, 0, 0, 0, 0, 0, 0};
        EXPECT_EQ(host->getEffectParameter(&record), E_OK);
        return record;
    }
};

TEST_F(SimulatedGlowHub, keepsEffects)
{
    for (std::uint8_t port = 1; port <= 4; ++port) {
        ArgbEffectParam record{port, std::uint8_t(port + 1), 16, port, std::uint8_t(50 * port), 1, 2, port};
        EXPECT_EQ(host->setEffectParameter(&record), E_OK);
    }
    for (std::uint8_t port = 1; port <= 4; ++port) {
        const ArgbEffectParam expected{
            std::uint8_t(port - 1), std::uint8_t(port + 1), 16, port, std::uint8_t(50 * port), 1, 2, port};
        EXPECT_EQ(bytesOf(read(port)), bytesOf(expected));
    }
    EXPECT_EQ(host->setEffectMode(3, 7), E_OK);
    EXPECT_EQ(+read(3).mode, 7);
    EXPECT_EQ(host->setEffectMode(1, 11), E_OK);
    std::uint8_t mode = 0;
    EXPECT_EQ(host->getEffectMode(4, &mode), E_OK);
    EXPECT_EQ(mode, 11);
}

TEST_F(SimulatedGlowHub, followsTheBoard)
{
    EXPECT_EQ(host->setEffectMode(2, 12), E_OK);
    EXPECT_EQ(+read(3).mode, 12);
    EXPECT_EQ(device->portDriver(), sim::GlowHubFirmware::Driver::board);
    EXPECT_EQ(host->setRgbEffectMode(1, 7), E_OK);
    std::uint8_t mode = 0;
    EXPECT_EQ(host->getRgbEffectMode(1, &mode), E_OK);
    EXPECT_EQ(mode, 7);
    // Custom colors end it.
    const ArgbCustomBuffer buffer{};
    EXPECT_EQ(host->setEffectCustomize(1, &buffer), E_OK);
    EXPECT_EQ(+read(3).mode, 0);
}

TEST_F(SimulatedGlowHub, keepsTheStripsEffect)
{
    const ArgbEffectParam set{9, 5, 16, 4, 99, 1, 2, 3};
    EXPECT_EQ(host->setRgbLightingEffectParameter(&set), E_OK);
    ArgbEffectParam got{9, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(host->getRgbLightingEffectParameter(&got), E_OK);
    EXPECT_EQ(bytesOf(got), bytesOf(set));
}

TEST_F(SimulatedGlowHub, keepsCustomColors)
{
    for (std::uint8_t port = 1; port <= 4; ++port) {
        const auto set = recordOf<ArgbCustomBuffer>("00 00 00 00 " + counting(port, 144));
        EXPECT_EQ(host->setEffectCustomize(port, &set), E_OK);
        ArgbCustomBuffer got{};
        // They go through the queue.
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (bytesOf(got) != bytesOf(set) && std::chrono::steady_clock::now() < deadline)
            EXPECT_EQ(host->getEffectCustomize(port, &got), E_OK);
        EXPECT_EQ(bytesOf(got), bytesOf(set)) << int(port);
    }
}

TEST_F(SimulatedGlowHub, keepsItsOtherSettings)
{
    EXPECT_EQ(host->setLEDSize(3, 2, 30), E_OK);
    std::uint8_t a = 0, b = 0;
    EXPECT_EQ(host->getLEDSize(3, &a, &b), E_OK);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(b, 30);
    const ByteVector owner = bytes(counting(1, 32));
    EXPECT_EQ(host->setUID(owner.data()), E_OK);
    ByteVector got(32);
    EXPECT_EQ(host->getUID(got.data()), E_OK);
    EXPECT_EQ(got, owner);
    EXPECT_EQ(host->setMultilayerMode(5), E_OK);
    std::uint8_t layers = 0;
    EXPECT_EQ(host->getMultilayerMode(&layers), E_OK);
    EXPECT_EQ(layers, 5);
    std::uint16_t version = 0;
    EXPECT_EQ(host->getVersion(&version), E_OK);
    EXPECT_EQ(version, 0x0203);
    EXPECT_EQ(host->setIdentify(15), E_OK);
    EXPECT_EQ(device->identified(), 15);
}

TEST_F(SimulatedGlowHub, savesAndResets)
{
    EXPECT_EQ(host->setEffectMode(1, 5), E_OK);
    EXPECT_EQ(host->saveConfig(), E_OK);
    EXPECT_EQ(host->setEffectMode(1, 6), E_OK);
    powerCycle();
    EXPECT_EQ(+read(1).mode, 5);
    EXPECT_EQ(host->resetConfig(1), E_OK);
    EXPECT_EQ(+read(1).mode, 0);
    EXPECT_EQ(device->savedSettings().ports[0].effect[0], 5);
    EXPECT_EQ(host->resetData(), E_OK);
    EXPECT_EQ(device->savedSettings(), sim::GlowHubFirmware::Settings());
    EXPECT_EQ(+read(1).mode, 0);
}

TEST_F(SimulatedGlowHub, showsTheFramesOfTheHost)
{
    EXPECT_EQ(host->setLightingInit(), E_OK);
    awaitFrames(5);
    awaitPicture(hubPicture(48, {}));
    const LightingPortColorOf<5> color{{}, {1, 3, 5, 0, 0}, 1, 2, 3};
    EXPECT_EQ(host->setLightingPortColor(&color), E_OK);
    sim::Picture expected = hubPicture(48, {{{1, 2, 3}, {}, {1, 2, 3}, {}, {1, 2, 3}}});
    awaitPicture(expected);
    EXPECT_EQ(host->setSyncLightingData({{4, {{0, 1, 0, 0}, {20, 2, 0, 0}, {41, 3, 0, 0}, {47, 4, 5, 6}}}}),
              E_OK);
    expected[3].leds[0] = {1, 0, 0};
    expected[3].leds[20] = {2, 0, 0};
    expected[3].leds[41] = {3, 0, 0};
    expected[3].leds[47] = {4, 5, 6};
    awaitPicture(expected);
    EXPECT_EQ(host->setLightingTurnOff(), E_OK);
    awaitPicture(hubPicture(48, {}));
    EXPECT_EQ(host->setLightingUninit(), E_OK);
    EXPECT_EQ(device->portDriver(), sim::GlowHubFirmware::Driver::device);
    EXPECT_EQ(device->stripDriver(), sim::GlowHubFirmware::Driver::device);
}

TEST_F(SimulatedGlowHub, showsTheLastFrameOfAnAnimation)
{
    EXPECT_EQ(host->setLightingInit(), E_OK);
    for (int i = 1; i <= 200; ++i) {
        const auto part = std::uint8_t(i);
        const LightingPortColorOf<5> color{{}, {1, 2, 3, 4, 5}, part, std::uint8_t(255 - part), 7};
        EXPECT_EQ(host->setLightingPortColor(&color), E_OK);
    }
    const sim::Light last{200, 55, 7};
    awaitPicture(hubPicture(48, {last, last, last, last, last}));
    EXPECT_LT(device->frames(), 500);
}

TEST_F(SimulatedGlowHub, tellsOfItsButtons)
{
    using Notify = ByValue<ArgbEffectNotify>;
    ArgbEffectParam record{1, 1, 16, 5, 128, 1, 2, 3};
    EXPECT_EQ(host->setEffectParameter(&record), E_OK);
    EXPECT_EQ(host->registerNotify(Notify::callback), E_OK);
    Notify::clear();
    EXPECT_TRUE(device->happen("effect", {9}));
    EXPECT_EQ(Notify::await(1), "00 09 10 05 80 01 00 00");
    EXPECT_TRUE(device->happen("rgb", {3}));
    EXPECT_EQ(Notify::await(2), "00 09 10 05 80 01 00 00 | 01 03 00 03 00 00 00 00");
}

// GLOW_HUB2

using SimulatedGlowHub2 = Simulated<sim::GlowHub2Firmware, GlowHub2Model>;

TEST_F(SimulatedGlowHub2, keepsWhatIsSet)
{
    for (std::uint8_t effect = 0; effect < 9; ++effect) {
        EXPECT_EQ(host->setARGBEffectParameter(2, {effect, std::uint8_t(effect % 8), 4, 1}, 3), E_OK);
        ByteVector got(5);
        EXPECT_EQ(host->getARGBEffectParameter(4, got.data()), E_OK);
        EXPECT_EQ(got, (ByteVector{effect, std::uint8_t(effect % 8), 4, 1, 3}));
    }
    EXPECT_EQ(host->setARGBEffectParameter(1, {3, 0, 1, 0}, 1), E_OK); // the parameter wraps around and back
    ByteVector effect(5);
    EXPECT_EQ(host->getARGBEffectParameter(1, effect.data()), E_OK);
    EXPECT_EQ(effect, (ByteVector{3, 0, 1, 0, 1}));

    std::array<std::uint8_t, 3> got{};
    EXPECT_EQ(host->setRGBEffectParameter(6, 7, 5), E_OK);
    EXPECT_EQ(host->getRGBEffectParameter(&got[0], &got[1], &got[2]), E_OK);
    EXPECT_EQ(hex(got), "06 07 05");
    const std::array<std::uint8_t, 3> color{1, 2, 3};
    EXPECT_EQ(host->setRGBCustomize(color.data()), E_OK);
    EXPECT_EQ(host->getRGBCustomize(got.data()), E_OK);
    EXPECT_EQ(got, color);
    EXPECT_EQ(device->settings().strip[0], 4);
    EXPECT_EQ(host->setLayerSelect(2), E_OK);
    EXPECT_EQ(host->setRGBFollowParameter(1, 1, 5), E_OK);
    got = {0xE1, 0xE2, 0xE3};
    EXPECT_EQ(host->getRGBFollowParameter(&got[0], &got[1], &got[2]), E_OK);
    EXPECT_EQ(hex(got), "E1 E2 E3"); // deliberate: it looks for the layer's reply
    EXPECT_EQ(device->settings().layer, 2);
    EXPECT_EQ(device->settings().follow, (std::array<std::uint8_t, 3>{1, 1, 4}));
}

TEST_F(SimulatedGlowHub2, keepsCustomColors)
{
    const ByteVector set = bytes(counting(1, 36));
    EXPECT_EQ(host->setARGBCustomize(3, set.data()), E_OK);
    ByteVector got(36);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (got != set && std::chrono::steady_clock::now() < deadline)
        EXPECT_EQ(host->getARGBCustomize(1, got.data()), E_OK);
    EXPECT_EQ(got, set);
}

TEST_F(SimulatedGlowHub2, showsTheFramesOfTheHost)
{
    EXPECT_FALSE(device->driven());
    EXPECT_EQ(host->setLightingInit(), E_OK);
    awaitFrames(5);
    awaitPicture(hubPicture(12, {}));
    const LightingPortColorOf<5> color{{}, {1, 0, 5, 4, 0}, 1, 2, 3};
    EXPECT_EQ(host->setLightingPortColor(&color), E_OK);
    awaitPicture(hubPicture(12, {{{1, 2, 3}, {}, {}, {1, 2, 3}, {1, 2, 3}}}));
    EXPECT_EQ(host->setSyncLightingData({{2, {{3, 4, 5, 6}}}, {5, {{0, 7, 8, 9}}}}), E_OK);
    awaitPicture(hubPicture(12, {{{1, 2, 3}, {4, 5, 6}, {}, {1, 2, 3}, {7, 8, 9}}}));
    EXPECT_EQ(host->setLightingTurnOff(), E_OK);
    awaitPicture(hubPicture(12, {}));
    EXPECT_EQ(host->setLightingUninit(), E_OK);
    EXPECT_FALSE(device->driven());
}

TEST_F(SimulatedGlowHub2, tellsOfItsButtons)
{
    using Notify = ByValue<GlowHub2Notify>;
    EXPECT_EQ(host->registerNotify(Notify::callback), E_OK);
    Notify::clear();
    EXPECT_TRUE(device->happen("effect", {8}));
    EXPECT_EQ(Notify::await(1), "00 08 00 03 00 04 00 00 01 00 01");
    EXPECT_TRUE(device->happen("rgb", {6}));
    EXPECT_EQ(Notify::await(2), "00 08 00 03 00 04 00 00 01 00 01 | 01 00 00 01 00 01 06 00 03 00 01");
}

// TINT_HUB

using SimulatedTintHub = Simulated<sim::TintHubFirmware, TintHubModel>;

TEST_F(SimulatedTintHub, keepsEffects)
{
    const std::array<std::uint8_t, 3> color{10, 20, 30};
    for (const std::uint8_t mode : {0, 1, 2, 3, 9})
        for (std::uint8_t level = 1; level <= 5; ++level) {
            EXPECT_EQ(host->setEffectParameter(mode, level, level, color.data()), E_OK);
            std::uint8_t got[6]{mode, 0, 0, 0, 0, 0};
            EXPECT_EQ(host->getEffectParameter(got, got + 1, got + 2, got + 3), E_OK);
            EXPECT_EQ(got[0], mode);
            EXPECT_EQ(got[1], mode == 2 && level == 4 ? 110 : level) << int(mode); // deliberate
            EXPECT_EQ(got[2], level) << int(mode);
            EXPECT_EQ(hex(std::span(got).subspan(3)), mode == 2 ? "FF FF FF" : "0A 14 1E") << int(mode);
            std::uint8_t current = 0;
            EXPECT_EQ(host->getEffectStandardMode(&current), E_OK);
            EXPECT_EQ(current, mode);
        }
    EXPECT_EQ(device->savedSettings(), device->settings());
    EXPECT_EQ(device->session(), sim::TintHubFirmware::Session::none);
    awaitPicture({{"port 1", {{10 * 5 / 255, 20 * 5 / 255, 30 * 5 / 255}}},
                  {"port 2", {{}}},
                  {"port 3", {{}}},
                  {"port 4", {{}}}});
}

TEST_F(SimulatedTintHub, keepsTheColorsOfItsPorts)
{
    for (std::uint8_t level = 1; level <= 5; ++level) {
        const auto set = recordOf<TintMultiColor>(counting(level, 12) + " " + hexByte(level));
        EXPECT_EQ(host->setPortMultiColor(&set), E_OK);
        auto got = recordOf<TintMultiColor>("");
        EXPECT_EQ(host->getPortMultiColor(&got), E_OK);
        EXPECT_EQ(bytesOf(got), bytesOf(set));
    }
    awaitPicture({{"port 1", {{5, 6, 7}}},
                  {"port 2", {{8, 9, 10}}},
                  {"port 3", {{11, 12, 13}}},
                  {"port 4", {{14, 15, 16}}}});
    EXPECT_EQ(device->stores(), 0);
    EXPECT_EQ(host->exit_device(0), E_OK);
    EXPECT_EQ(device->stores(), 1);
    EXPECT_EQ(device->savedSettings(), device->settings());
}

TEST_F(SimulatedTintHub, keepsLayers)
{
    const auto layers =
        recordOf<TintMultilayer>("04 01 01 02 03 02 05 04 05 06 05 02 07 08 09 06 03 0A 0B 0C 51 52 53 54");
    EXPECT_EQ(host->setEffectMultilayer(&layers), E_OK);
    std::uint8_t mode = 0;
    EXPECT_EQ(host->getEffectStandardMode(&mode), E_OK);
    EXPECT_EQ(mode, 0xE0);
    const sim::TintHubFirmware::Settings settings = device->savedSettings();
    ASSERT_EQ(settings.layers.size(), 3U); // mode 2 is left out
    EXPECT_EQ(settings.layers[0].mode, 4);
    EXPECT_EQ(settings.layers[1].mode, 5);
    EXPECT_EQ(settings.layers[2].mode, 6);
    EXPECT_EQ(settings.layersEnd, (std::array<std::uint8_t, 4>{0x51, 0x52, 0x53, 0x54}));
}

TEST_F(SimulatedTintHub, showsTheFramesOfTheHost)
{
    EXPECT_EQ(host->setLightingInit(), E_OK);
    EXPECT_TRUE(device->driven());
    EXPECT_EQ(device->frames(), 1);
    const LightingPortColorOf<4> color{{}, {2, 4, 0, 0}, 1, 2, 3};
    EXPECT_EQ(host->setLightingPortColor(&color), E_OK);
    EXPECT_EQ(
        device->picture(),
        (sim::Picture{{"port 1", {{}}}, {"port 2", {{1, 2, 3}}}, {"port 3", {{}}}, {"port 4", {{1, 2, 3}}}}));
    EXPECT_EQ(host->setLightingTurnOff(), E_OK);
    EXPECT_EQ(device->picture(),
              (sim::Picture{{"port 1", {{}}}, {"port 2", {{}}}, {"port 3", {{}}}, {"port 4", {{}}}}));
    EXPECT_EQ(host->setLightingUninit(), E_OK);
    EXPECT_FALSE(device->driven());
}

// PLAY_DOCK

using SimulatedPlayDock = Simulated<sim::PlayDockFirmware, PlayDockModel>;

TEST_F(SimulatedPlayDock, keepsEffects)
{
    const auto effect = [](int number) {
        return recordOf<PlayDockEffect>("EE " + hexByte(number) + " " +
                                        (number == 0 ? "00" : hexByte(number % 4)) + " 0A 0B 0C " +
                                        counting(number, 22) + " E1 E2 E3 " + (number == 0 ? "05" : "00"));
    };
    for (int number = 0; number < 9; ++number) {
        const PlayDockEffect set = effect(number);
        EXPECT_EQ(host->setEffectParameter(&set), E_OK);
        auto got = recordOf<PlayDockEffect>("EE " + times(27, "00") + " E1 E2 E3");
        EXPECT_EQ(host->getEffectParameter(&got), E_OK);
        EXPECT_EQ(bytesOf(got), bytesOf(set)) << number;
    }
    for (int number = 0; number < 9; ++number) {
        auto got = recordOf<PlayDockEffect>("EE " + hexByte(number) + " " + times(26, "00") + " E1 E2 E3");
        EXPECT_EQ(host->getAnyEffectParameter(&got), E_OK);
        EXPECT_EQ(bytesOf(got), bytesOf(effect(number)));
        EXPECT_EQ(host->setEffectMode(0, std::uint8_t(number)), E_OK);
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(host->getEffectMode(0, &mode), E_OK);
        EXPECT_EQ(mode, number);
    }
}

TEST_F(SimulatedPlayDock, keepsSavesAndResets)
{
    const std::array<std::uint8_t, 3> set{1, 2, 3};
    std::array<std::uint8_t, 3> got{};
    EXPECT_EQ(host->setBottomEffectParameter(set.data()), E_OK);
    EXPECT_EQ(host->getBottomEffectParameter(got.data()), E_OK);
    EXPECT_EQ(got, set);
    EXPECT_EQ(host->saveConfig(), E_OK);
    const std::array<std::uint8_t, 3> other{4, 5, 6};
    EXPECT_EQ(host->setBottomEffectParameter(other.data()), E_OK);
    EXPECT_EQ(host->resetConfig(0), E_OK);
    EXPECT_EQ(host->getBottomEffectParameter(got.data()), E_OK);
    EXPECT_EQ(got, set);
    EXPECT_EQ(host->setBottomEffectParameter(other.data()), E_OK);
    powerCycle();
    EXPECT_EQ(host->getBottomEffectParameter(got.data()), E_OK);
    EXPECT_EQ(got, set);
    EXPECT_EQ(host->resetData(), E_OK);
    EXPECT_EQ(device->savedSettings(), sim::PlayDockFirmware::Settings());
    std::uint16_t version = 0;
    EXPECT_EQ(host->getVersion(&version), E_OK);
    EXPECT_EQ(version, 0x0107);
}

TEST_F(SimulatedPlayDock, showsTheFramesOfTheHost)
{
    const auto picture = [](sim::Light one, sim::Light two, sim::Light three) {
        return sim::Picture{
            {"zone 1", {one}}, {"zone 2", {two}}, {"zone 3", {three}}, {"bottom", {{255, 255, 255}}}};
    };
    EXPECT_EQ(host->setLightingInit(), E_OK);
    EXPECT_TRUE(device->driven());
    awaitFrames(3);
    awaitPicture(picture({}, {}, {}));
    const LightingPortColorOf<3> color{{}, {3, 1, 0}, 1, 2, 3};
    EXPECT_EQ(host->setLightingPortColor(&color), E_OK);
    awaitPicture(picture({1, 2, 3}, {}, {1, 2, 3}));
    EXPECT_EQ(device->flag(), 1);
    EXPECT_EQ(host->setSyncLightingData({{2, {{0, 7, 7, 7}, {1, 4, 5, 6}}}}), E_OK);
    awaitPicture(picture({1, 2, 3}, {4, 5, 6}, {1, 2, 3}));
    EXPECT_EQ(device->flag(), 0);
    EXPECT_EQ(host->setLightingTurnOff(), E_OK);
    awaitPicture(picture({}, {}, {}));
    EXPECT_EQ(host->setLightingUninit(), E_OK);
    EXPECT_FALSE(device->driven());
}

TEST_F(SimulatedPlayDock, tellsOfItsButtons)
{
    using Notify = ByValue<PlayDockNotify>;
    EXPECT_EQ(host->registerNotify(Notify::callback), E_OK);
    Notify::clear();
    EXPECT_TRUE(device->happen("effect", {4}));
    EXPECT_EQ(Notify::await(1).substr(0, 20), "00 FF 04 02 FF FF FF");
    Notify::clear();
    EXPECT_TRUE(device->happen("speed", {3}));
    EXPECT_EQ(Notify::await(1).substr(0, 20), "00 FF 04 04 FF FF FF"); // deliberate: not 0, as a get has it
    Notify::clear();
    EXPECT_TRUE(device->happen("bottom", {1, 2, 3}));
    EXPECT_EQ(Notify::await(1), "01 FF FF FF 01 02 03 " + times(26, "FF"));
}

} // namespace
} // namespace pyrux::test
