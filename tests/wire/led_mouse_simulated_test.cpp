// The wired mice with lights against their firmware models: what is set reads back, frames are seen.

#include "simulator/models/led_mouse.h"
#include "tests/support/led_mouse.h"
#include "tests/support/simulated_device.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <thread>

namespace pyrux::test {
namespace {

template <class Model>
class SimulatedLedMouse : public Simulated<sim::LedMouseFirmware, Model> {
};
TYPED_TEST_SUITE(SimulatedLedMouse, LedMouseModels, ModelName);

TYPED_TEST(SimulatedLedMouse, keepsItsEffects)
{
    for (const std::uint8_t mode : bytes(TypeParam::modes)) {
        const MouseEffectRecord set{mode, 4, std::uint8_t(mode == 1 ? 1 : 0), 200, 10, 20, 30};
        ASSERT_EQ(this->host->setGeneralEffect(&set), E_OK) << int(mode);
        std::uint8_t current = 0xEE;
        EXPECT_EQ(this->host->getEffectMode(&current), E_OK);
        EXPECT_EQ(current, mode);
        MouseEffectRecord got{};
        got.mode = mode;
        EXPECT_EQ(this->host->getGeneralEffect(&got), E_OK);
        if (mode != 4) { // which has no parameters
            EXPECT_EQ(std::memcmp(&set, &got, sizeof set), 0) << int(mode);
        }
    }
    const std::array<std::uint8_t, 6> set{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(this->host->setCustomEffect(set.data()), E_OK);
    std::array<std::uint8_t, 6> got{};
    EXPECT_EQ(this->host->getCustomEffect(got.data()), E_OK);
    EXPECT_EQ(got, set);
    EXPECT_EQ(this->device->effects(0).mode, 176);
}

TYPED_TEST(SimulatedLedMouse, showsTheFramesOfTheHost)
{
    const auto leds = [](sim::Light first, sim::Light second) {
        return sim::Picture{{"mouse", {first, second}}};
    };
    EXPECT_EQ(this->host->setLightingInit(), E_OK);
    this->awaitFrames(1);
    EXPECT_TRUE(this->device->driven());
    EXPECT_EQ(this->host->setSyncLightingData({{1, {{0, 1, 2, 3}, {1, 4, 5, 6}}}}), E_OK);
    this->awaitFrames(2);
    EXPECT_EQ(this->device->picture(), leds({1, 2, 3}, {4, 5, 6}));
    EXPECT_EQ(this->host->setSyncLightingData({{1, {{1, 7, 8, 9}}}}), E_OK);
    this->awaitFrames(3);
    EXPECT_EQ(this->device->picture(), leds({}, {7, 8, 9}));
    EXPECT_EQ(this->host->setLightingTurnOff(), E_OK);
    this->awaitFrames(4);
    EXPECT_EQ(this->device->picture(), leds({}, {}));
    EXPECT_EQ(this->host->setLightingUninit(), E_OK);
    EXPECT_EQ(this->host->stopRecordMacro(), E_OK); // its reply comes after
    EXPECT_FALSE(this->device->driven());
}

TYPED_TEST(SimulatedLedMouse, doesWhatTheWiredMouseDoes)
{
    EXPECT_EQ(this->host->changeProfileId(2), E_OK);
    EXPECT_EQ(this->host->changeDpiLevel(5), E_OK);
    EXPECT_EQ(this->host->setKeyMapping(4, 0x1234), E_OK);
    EXPECT_EQ(this->device->profile(), 2);
    EXPECT_EQ(this->device->level(), 5);
    EXPECT_EQ(this->device->key(4), 0x1234);
    EXPECT_EQ(this->host->saveConfig(), E_OK);
    EXPECT_EQ(this->device->savedProfile(), 2);
}

TEST(SimulatedRD110, tellsAllItsMacros)
{
    const auto device = sim::makeFirmware("rd110");
    const std::string path = sim::plug(device);
    PYRUX_RD110_Base* const host = rd110(path.c_str());
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(host->test(), E_OK);
    for (const std::uint8_t button : {9, 3, 6}) {
        MouseMacroRecord macro{};
        macro.button = button;
        macro.mode = std::uint8_t(button % 3);
        macro.name[0] = char('a' + button);
        macro.count = 20;
        for (std::uint8_t i = 0; i < macro.count; ++i)
            macro.events[i] = {std::uint16_t(button + i), std::uint8_t(i % 2), i};
        EXPECT_EQ(host->setMacro(&macro), E_OK);
    }
    const auto list = std::make_unique<MouseMacroList>();
    EXPECT_EQ(host->getMacroAll(list.get()), E_OK);
    ASSERT_EQ(+list->count, 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        const MouseMacroRecord& macro = list->macros[i];
        EXPECT_EQ(macro.button, 3 + 3 * i);
        EXPECT_EQ(macro.mode, macro.button % 3);
        EXPECT_EQ(macro.name[0], 'a' + macro.button);
        ASSERT_EQ(macro.count, 20);
        EXPECT_EQ(+macro.events[19].code, macro.button + 19);
    }
    sim::unplug(path);
    host->exit_device(1);
}

} // namespace
} // namespace pyrux::test
