// The wired mice with lights: the effects that the device plays by itself.

#include "tests/support/bytes.h"
#include "tests/support/led_mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace pyrux::test {
namespace {

template <class Model>
class LedMouseEffects : public testing::Test {
protected:
    /// What goes out for an effect after 41 80, and before 41 80 and the mode.
    std::string parametersOf(const MouseEffectRecord& effect)
    {
        EXPECT_EQ(mouse->setGeneralEffect(&effect), E_OK);
        const std::vector<std::string> all = reports(mouse.written());
        const std::string mode = wire("51 28 00 00 " + hex(std::span(&effect.mode, 1)));
        if (all.size() != 4) {
            ADD_FAILURE() << joined(all);
            return {};
        }
        EXPECT_EQ(all[0], "41 80");
        EXPECT_EQ(all[2], "41 80");
        EXPECT_EQ(all[3], mode);
        return all[1];
    }

    /// An effect as the device's parameters tell it; bytes 4 to 12 of the reply.
    MouseEffectRecord effectOf(std::uint8_t mode, const std::string& parameters)
    {
        mouse.device->answer("52 2B", "52 2B 77 77 " + parameters);
        MouseEffectRecord effect{};
        effect.mode = mode;
        EXPECT_EQ(mouse->getGeneralEffect(&effect), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 2B 00 00 " + hex(std::span(&mode, 1))));
        return effect;
    }

    Opened<Model> mouse;
};
TYPED_TEST_SUITE(LedMouseEffects, LedMouseModels, ModelName);

TYPED_TEST(LedMouseEffects, haveTheModelsModesAndNoOthers)
{
    const ByteVector modes = bytes(TypeParam::modes);
    for (int i = 0; i < 256; ++i) {
        const auto mode = std::uint8_t(i);
        const bool known = std::ranges::count(modes, mode) != 0;
        EXPECT_EQ(this->mouse->setEffectMode(mode), known ? E_OK : E_INVALID_SET) << i;
        EXPECT_EQ(this->mouse.written(), known ? wire("41 80 | 51 28 00 00 " + hex(std::span(&mode, 1))) : "")
            << i;
        MouseEffectRecord effect{};
        effect.mode = mode;
        effect.speed = 1;
        EXPECT_EQ(this->mouse->setGeneralEffect(&effect), known ? E_OK : E_INVALID_SET) << i;
        EXPECT_EQ(reports(this->mouse.written()).size(), known ? 4U : 0U) << i;
    }
}

TYPED_TEST(LedMouseEffects, readTheMode)
{
    this->mouse.device->answer("52 28", "52 28 11 22 B0 33");
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(this->mouse->getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 0xB0);
    EXPECT_EQ(this->mouse.written(), wire("41 80 | 52 28"));
    this->mouse.device->answer("52 28", "52 28 00 00 63");
    EXPECT_EQ(this->mouse->getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 0x63); // what the device says, known or not
}

TYPED_TEST(LedMouseEffects, translateTheSpeedsOfModeOne)
{
    const std::array<const char*, 5> codes{"3C", "37", "31", "2C", "26"};
    for (std::uint8_t speed = 1; speed <= 5; ++speed) {
        const std::string code = codes[speed - 1U];
        EXPECT_EQ(this->parametersOf({1, speed, 0, 0x80, 0x11, 0x22, 0x33}),
                  "51 2B 00 00 01 " + code + " 20 FF FF 80 11 22 33");
        EXPECT_EQ(this->parametersOf({1, speed, 1, 0xFF, 0x44, 0x55, 0x66}),
                  "51 2B 00 00 01 " + code + " A0 FF FF FF 44 55 66");
        EXPECT_EQ(this->effectOf(1, "01 " + code + " 20 FF FF 80 11 22 33").speed, speed);
    }
    EXPECT_EQ(this->parametersOf({1, 1, 0x80, 1, 1, 1, 1}), "51 2B 00 00 01 3C A0 FF FF 01 01 01 01");
}

TYPED_TEST(LedMouseEffects, translateTheSpeedsOfModeTwo)
{
    const std::array<const char*, 5> codes{"32", "2D", "28", "23", "1E"};
    for (std::uint8_t speed = 1; speed <= 5; ++speed) {
        const std::string code = codes[speed - 1U];
        EXPECT_EQ(this->parametersOf({2, speed, 1, 0x80, 0x11, 0x22, 0x33}),
                  "51 2B 00 00 02 " + code + " 00 FF FF 40 11 22 33");
        EXPECT_EQ(this->effectOf(2, "02 " + code + " 00 FF FF 40 11 22 33").speed, speed);
    }
}

TYPED_TEST(LedMouseEffects, refuseOtherSpeedsBehindTheFirstCommand)
{
    for (const std::uint8_t mode : {1, 2})
        for (const std::uint8_t speed : {0, 6, 60, 255}) {
            const MouseEffectRecord effect{mode, speed, 0, 0, 0, 0, 0};
            EXPECT_EQ(this->mouse->setGeneralEffect(&effect), E_INVALID_PARAM) << int(mode) << int(speed);
            EXPECT_EQ(this->mouse.written(), "41 80");
        }
}

TYPED_TEST(LedMouseEffects, passSpeedsOfOtherModesThrough)
{
    for (const std::uint8_t mode : bytes(TypeParam::modes)) {
        if (mode == 1 || mode == 2 || mode == 4)
            continue;
        const std::string number = hex(std::span(&mode, 1));
        EXPECT_EQ(this->parametersOf({mode, 0xC8, 1, 0xFF, 0x11, 0x22, 0x33}),
                  "51 2B 00 00 " + number + " C8 00 FF FF FF 11 22 33");
        EXPECT_EQ(this->parametersOf({mode, 0, 0, 0, 0, 0, 0x01}),
                  "51 2B 00 00 " + number + " 00 00 FF FF 00 00 00 01");
        const MouseEffectRecord effect = this->effectOf(mode, number + " 3C 00 01 02 FE 04 05 06");
        EXPECT_EQ(effect.speed, 0x3C);
        EXPECT_EQ(effect.brightness, 0xFE);
    }
}

TYPED_TEST(LedMouseEffects, halveTheBrightnessOfModeTwo)
{
    for (const auto& [whole, half] :
         {std::pair{255, "7F"}, {254, "7F"}, {253, "7E"}, {100, "32"}, {2, "01"}}) {
        EXPECT_EQ(this->parametersOf({2, 1, 0, std::uint8_t(whole), 0x11, 0x22, 0x33}),
                  std::string("51 2B 00 00 02 32 00 FF FF ") + half + " 11 22 33");
    }
    EXPECT_EQ(this->parametersOf({2, 1, 0, 1, 0, 0, 9}), "51 2B 00 00 02 32 00 FF FF 00 00 00 09");
    for (const auto& [half, whole] :
         {std::pair{"00", 0}, {"01", 2}, {"32", 100}, {"7E", 252}, {"7F", 255}, {"80", 255}, {"FF", 255}})
        EXPECT_EQ(this->effectOf(2, std::string("02 32 00 FF FF ") + half + " 11 22 33").brightness, whole)
            << half;
}

TYPED_TEST(LedMouseEffects, haveNoParametersInModeFour)
{
    EXPECT_EQ(this->parametersOf({4, 0x12, 1, 0x34, 0x56, 0x78, 0x9A}),
              "51 2B 00 00 04 00 00 00 FF FF FF FF FF");
    const MouseEffectRecord effect = this->effectOf(4, "04 00 00 00 FF FF FF FF FF");
    EXPECT_EQ(effect.speed, 0);
    EXPECT_EQ(effect.direction, 0);
    EXPECT_EQ(effect.brightness, 255);
}

TYPED_TEST(LedMouseEffects, readAllParameters)
{
    const MouseEffectRecord effect = this->effectOf(1, "01 37 A0 AA BB 64 11 22 33 CC");
    EXPECT_EQ(effect.mode, 1);
    EXPECT_EQ(effect.speed, 2);
    EXPECT_EQ(effect.direction, 1);
    EXPECT_EQ(effect.brightness, 0x64);
    EXPECT_EQ(effect.red, 0x11);
    EXPECT_EQ(effect.green, 0x22);
    EXPECT_EQ(effect.blue, 0x33);
}

TYPED_TEST(LedMouseEffects, readTheDirectionFromTheHighestBit)
{
    EXPECT_EQ(this->effectOf(1, "01 3C 80").direction, 1);
    EXPECT_EQ(this->effectOf(1, "01 3C FF").direction, 1);
    EXPECT_EQ(this->effectOf(1, "01 3C 7F").direction, 0);
    EXPECT_EQ(this->effectOf(0, "00 3C 80").direction, 1);
}

TYPED_TEST(LedMouseEffects, leaveASpeedThatNoIndexHasAsItIs)
{
    EXPECT_EQ(this->effectOf(1, "01 32 20").speed, 50); // one of mode 2
    EXPECT_EQ(this->effectOf(2, "02 3C 00").speed, 60);
    EXPECT_EQ(this->effectOf(1, "01 00 20").speed, 0);
}

TYPED_TEST(LedMouseEffects, takeAReplyThatNamesAnotherMode)
{
    this->mouse.device->answer("52 2B", "52 2B 00 00 02 37 80 FF FF 40 11 22 33");
    MouseEffectRecord effect{1, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6};
    EXPECT_EQ(this->mouse->getGeneralEffect(&effect), E_OK);
    EXPECT_EQ(hex({reinterpret_cast<const std::uint8_t*>(&effect), sizeof effect}), "01 02 01 40 11 22 33");
}

TYPED_TEST(LedMouseEffects, setTheCustomColors)
{
    const std::array<std::uint8_t, 6> colors{0xA1, 0xA2, 0xA3, 0xB1, 0xB2, 0xB3};
    EXPECT_EQ(this->mouse->setCustomEffect(colors.data()), E_OK);
    EXPECT_EQ(this->mouse.written(), "41 80 | 51 A8 00 00 A1 A2 A3 B1 B2 B3 | 41 80 | 51 28 00 00 B0");
}

TYPED_TEST(LedMouseEffects, readTheCustomColors)
{
    this->mouse.device->answer("52 A8", "52 A8 77 88 A1 A2 A3 B1 B2 B3 99");
    std::array<std::uint8_t, 7> colors{};
    colors[6] = 0xEE;
    EXPECT_EQ(this->mouse->getCustomEffect(colors.data()), E_OK);
    EXPECT_EQ(hex(colors), "A1 A2 A3 B1 B2 B3 EE");
    EXPECT_EQ(this->mouse.written(), "41 80 | 52 A8");
}

TYPED_TEST(LedMouseEffects, needTheirRecords)
{
    EXPECT_EQ(this->mouse->getEffectMode(nullptr), E_INVALID_GET);
    EXPECT_EQ(this->mouse->setGeneralEffect(nullptr), E_INVALID_SET);
    EXPECT_EQ(this->mouse->getGeneralEffect(nullptr), E_INVALID_GET);
    EXPECT_EQ(this->mouse->setCustomEffect(nullptr), E_INVALID_SET);
    EXPECT_EQ(this->mouse->getCustomEffect(nullptr), E_INVALID_GET);
    EXPECT_EQ(this->mouse.written(), "");
}

// Replies that do not come. A reply that does not begin as asked for is none.

using Silent = std::function<void(ScriptedDevice&)>;

Silent without(const char* command)
{
    return [command](ScriptedDevice& device) { device.silence(command); };
}

WAITING_TEST(LedMouseMissingReply, ofTheFirstCommandIsPassedOver)
{
    Opened<RD215Model> mouse(without("41 80"));
    EXPECT_EQ(mouse->setEffectMode(1), E_OK);
    EXPECT_EQ(mouse.written(), "41 80 | 51 28 00 00 01");
}

WAITING_TEST(LedMouseMissingReply, ofTheModeFailsTheSet)
{
    Opened<RD215Model> mouse(without("51 28"));
    EXPECT_EQ(mouse->setEffectMode(1), E_INVALID_SET);
}

WAITING_TEST(LedMouseMissingReply, ofTheParametersLeavesTheModeAlone)
{
    Opened<RD215Model> mouse(without("51 2B"));
    const MouseEffectRecord effect{1, 1, 0, 1, 2, 3, 4};
    EXPECT_EQ(mouse->setGeneralEffect(&effect), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "41 80 | 51 2B 00 00 01 3C 20 FF FF 01 02 03 04");
}

WAITING_TEST(LedMouseMissingReply, ofTheModeBehindTheParametersFailsTheSet)
{
    Opened<RD110Model> mouse(without("51 28"));
    const MouseEffectRecord effect{5, 1, 0, 1, 2, 3, 4};
    EXPECT_EQ(mouse->setGeneralEffect(&effect), E_INVALID_SET);
}

WAITING_TEST(LedMouseMissingReply, ofTheColorsLeavesTheModeAlone)
{
    Opened<RD215Model> mouse(without("51 A8"));
    const std::array<std::uint8_t, 6> colors{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(mouse->setCustomEffect(colors.data()), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "41 80 | 51 A8 00 00 01 02 03 04 05 06");
}

WAITING_TEST(LedMouseMissingReply, leavesTheOutputsAsTheyWere)
{
    Opened<RD110Model> mouse([](ScriptedDevice& device) {
        device.silence("52 28");
        device.answer("52 2B", "52 2C 00 00 01 3C");
        device.answer("52 A8", "51 A8 00 00 01 02 03");
    });
    std::uint8_t mode = 0xEE;
    MouseEffectRecord effect{1, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6};
    std::array<std::uint8_t, 6> colors{0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    together({[&] { EXPECT_EQ(mouse->getEffectMode(&mode), E_INVALID_GET); },
              [&] { EXPECT_EQ(mouse->getGeneralEffect(&effect), E_INVALID_GET); },
              [&] { EXPECT_EQ(mouse->getCustomEffect(colors.data()), E_INVALID_GET); }});
    EXPECT_EQ(mode, 0xEE);
    EXPECT_EQ(hex({reinterpret_cast<const std::uint8_t*>(&effect), sizeof effect}), "01 E1 E2 E3 E4 E5 E6");
    EXPECT_EQ(hex(colors), "EE EE EE EE EE EE");
}

} // namespace
} // namespace pyrux::test
