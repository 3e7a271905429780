// TINT_HUB: effects, colors, layers, and frames of a host, which go out at once.

#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>

namespace pyrux::test {
namespace {

class TintHub : public testing::Test {
protected:
    using Color = LightingPortColorOf<4>;

    _error set(int mode, int speed, int brightness)
    {
        const std::array<std::uint8_t, 3> color{0x0A, 0x0B, 0x0C};
        return hub->setEffectParameter(std::uint8_t(mode), std::uint8_t(speed), std::uint8_t(brightness),
                                       color.data());
    }

    /// The second report of an effect that is set; the others are looked at.
    std::string effectOf(int mode, int speed, int brightness)
    {
        EXPECT_EQ(set(mode, speed, brightness), E_OK);
        const std::vector<std::string> all = reports(hub.written());
        if (all.size() != 5) {
            ADD_FAILURE() << joined(all);
            return {};
        }
        EXPECT_EQ(all[0], "41 01");
        EXPECT_EQ(all[2], wire("51 28 00 00 " + hexByte(mode)));
        EXPECT_EQ(all[3], "50 55");
        EXPECT_EQ(all[4], "41");
        return all[1];
    }

    /// What the device's reply makes of an effect: result, mode, speed, brightness, color.
    std::string effectFrom(int mode, const std::string& reply)
    {
        hub.device->answer("52 2C", "52 2C 77 " + hexByte(mode) + " " + reply);
        std::uint8_t out[6]{std::uint8_t(mode), 0xE2, 0xE3, 0xE4, 0xE5, 0xE6};
        const _error result = hub->getEffectParameter(out, out + 1, out + 2, out + 3);
        EXPECT_EQ(hub.written(), wire("52 2C 00 00 " + hexByte(mode)));
        return result ? std::to_string(int(result)) : hex(out);
    }

    HubOf<TintHubModel> hub;
};

constexpr std::array brightnessCodes{"3F", "5A", "7F", "99", "FF"};

TEST_F(TintHub, translatesSpeeds)
{
    const std::array<const char*, 5> ones{"3C", "37", "31", "2C", "26"};
    const std::array<const char*, 5> twos{"96", "8C", "80", "6E", "68"};
    const std::array<const char*, 5> threes{"46", "41", "3C", "37", "32"};
    for (int level = 1; level <= 5; ++level) {
        const auto at = std::size_t(level - 1);
        EXPECT_EQ(effectOf(0, level, 3), "51 2B 00 00 00 " + hexByte(level) + " 00 FF FF 7F 0A 0B 0C");
        EXPECT_EQ(effectOf(1, level, 3), std::string("51 2B 00 00 01 ") + ones[at] + " 20 FF FF 7F 0A 0B 0C");
        EXPECT_EQ(effectOf(2, level, 3), std::string("51 2B 00 00 02 ") + twos[at] + " 00 FF FF 7F FF FF FF");
        EXPECT_EQ(effectOf(3, level, 3),
                  std::string("51 2B 00 00 03 ") + threes[at] + " 00 19 FF 7F 0A 0B 0C");
        EXPECT_EQ(effectOf(4, level, 3), "51 2B 00 00 04 " + hexByte(level) + " 00 FF FF 03 0A 0B 0C");
        EXPECT_EQ(effectOf(255, level, 3), "51 2B 00 00 FF " + hexByte(level) + " 00 FF FF 03 0A 0B 0C");
    }
}

TEST_F(TintHub, translatesBrightness)
{
    for (int level = 1; level <= 5; ++level) {
        const std::string code = brightnessCodes[std::size_t(level - 1)];
        EXPECT_EQ(effectOf(0, 1, level), "51 2B 00 00 00 01 00 FF FF " + code + " 0A 0B 0C");
        EXPECT_EQ(effectOf(1, 1, level), "51 2B 00 00 01 3C 20 FF FF " + code + " 0A 0B 0C");
        EXPECT_EQ(effectOf(2, 1, level),
                  "51 2B 00 00 02 96 00 FF FF " + (level == 5 ? "DF" : code) + " FF FF FF");
        EXPECT_EQ(effectOf(3, 1, level), "51 2B 00 00 03 46 00 19 FF " + code + " 0A 0B 0C");
    }
    for (const int level : {0, 1, 5, 6, 63, 255})
        EXPECT_EQ(effectOf(9, 1, level), "51 2B 00 00 09 01 00 FF FF " + hexByte(level) + " 0A 0B 0C");
}

TEST_F(TintHub, refusesLevelsBehindTheFirstReport)
{
    for (const int mode : {0, 1, 2, 3, 4, 200})
        for (const int speed : {0, 6, 60, 255}) {
            EXPECT_EQ(set(mode, speed, 3), E_INVALID_PARAM) << mode << ' ' << speed;
            EXPECT_EQ(hub.written(), "41 01");
        }
    for (const int mode : {0, 1, 2, 3})
        for (const int brightness : {0, 6, 63, 255}) {
            EXPECT_EQ(set(mode, 1, brightness), E_INVALID_PARAM) << mode << ' ' << brightness;
            EXPECT_EQ(hub.written(), "41 01");
        }
}

TEST_F(TintHub, readsEffects)
{
    // Bytes 4 to 11 of the reply: speed, three that do not matter, brightness, color.
    EXPECT_EQ(effectFrom(0, "04 99 99 99 5A 1A 1B 1C"), "00 04 02 1A 1B 1C");
    EXPECT_EQ(effectFrom(1, "2C 20 FF FF FF 1A 1B 1C"), "01 04 05 1A 1B 1C");
    EXPECT_EQ(effectFrom(2, "68 00 FF FF DF 1A 1B 1C"), "02 05 05 1A 1B 1C");
    EXPECT_EQ(effectFrom(3, "46 00 19 FF 3F 1A 1B 1C"), "03 01 01 1A 1B 1C");
    EXPECT_EQ(effectFrom(9, "46 00 19 FF 3F 1A 1B 1C"), "09 46 3F 1A 1B 1C");
}

TEST_F(TintHub, translatesSpeedsBack)
{
    const auto speed = [&](int mode, int code) {
        return effectFrom(mode, hexByte(code) + " 00 00 00 7F").substr(3, 2);
    };
    const std::array<std::array<int, 5>, 3> codes{
        {{60, 55, 49, 44, 38}, {150, 140, 128, 142, 104}, {70, 65, 60, 55, 50}}};
    for (int mode = 1; mode <= 3; ++mode)
        for (int level = 1; level <= 5; ++level)
            EXPECT_EQ(speed(mode, codes[std::size_t(mode - 1)][std::size_t(level - 1)]), hexByte(level))
                << mode << ' ' << level;
    // Deliberate: level 4 of mode 2 goes out as 110 and comes back as it is.
    EXPECT_EQ(effectOf(2, 4, 1).substr(0, 17), "51 2B 00 00 02 6E");
    EXPECT_EQ(speed(2, 110), "6E");
    EXPECT_EQ(speed(1, 70), "46"); // of another mode
    EXPECT_EQ(speed(3, 0), "00");
    EXPECT_EQ(speed(0, 60), "3C");
}

TEST_F(TintHub, translatesBrightnessBack)
{
    for (const int mode : {0, 1, 2, 3})
        for (int level = 1; level <= 5; ++level) {
            const std::string code = mode == 2 && level == 5 ? "DF" : brightnessCodes[std::size_t(level - 1)];
            EXPECT_EQ(effectFrom(mode, "00 00 00 00 " + code).substr(6, 2), hexByte(level)) << mode;
        }
    EXPECT_EQ(effectFrom(1, "3C 00 00 00 DF"), "-6"); // mode 2's
    EXPECT_EQ(effectFrom(2, "96 00 00 00 FF"), "-6");
    EXPECT_EQ(effectFrom(0, "01 00 00 00 05"), "-6");
    EXPECT_EQ(effectFrom(3, "46 00 00 00 00"), "-6");
    EXPECT_EQ(effectFrom(4, "46 00 00 00 00").substr(6, 2), "00");
}

TEST_F(TintHub, readsItsMode)
{
    hub.device->answer("52 28", "52 28 77 09 88");
    std::uint8_t mode = 0;
    EXPECT_EQ(hub->getEffectStandardMode(&mode), E_OK);
    EXPECT_EQ(mode, 9);
    EXPECT_EQ(hub.written(), "52 28");
}

TEST_F(TintHub, needsItsRecords)
{
    std::uint8_t byte = 0xEE;
    EXPECT_EQ(hub->setEffectParameter(1, 1, 1, nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getEffectParameter(nullptr, &byte, &byte, &byte), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectParameter(&byte, nullptr, &byte, &byte), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectParameter(&byte, &byte, nullptr, &byte), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectParameter(&byte, &byte, &byte, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectStandardMode(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->setPortMultiColor(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getPortMultiColor(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->setEffectMultilayer(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->setLightingPortColor(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub.written(), "");
    EXPECT_EQ(byte, 0xEE);
}

/// What goes out for the four colors 21 to 2C.
std::string multiColor(const std::string& brightness)
{
    return "41 80 | 51 28 00 00 04 | 51 30 | 51 A8 00 00 " + counting(0x21, 12) +
           " | 51 2C 00 00 04 00 00 FF FF " + brightness + " FF FF FF 00 00 00 " + times(48, "FF");
}

TEST_F(TintHub, setsAColorForEachPort)
{
    for (int level = 0; level <= 6; ++level) {
        const auto colors = recordOf<TintMultiColor>(counting(0x21, 12) + " " + hexByte(level));
        EXPECT_EQ(hub->setPortMultiColor(&colors), E_OK);
        EXPECT_EQ(hub.written(),
                  multiColor(level >= 1 && level <= 5 ? brightnessCodes[std::size_t(level - 1)] : "FF"))
            << level;
    }
}

TEST_F(TintHub, storesTheColorsOnceAtTheEnd)
{
    const auto colors = recordOf<TintMultiColor>(counting(0x21, 12) + " 03");
    EXPECT_EQ(hub->setPortMultiColor(&colors), E_OK);
    EXPECT_EQ(hub->setPortMultiColor(&colors), E_OK);
    hub.written();
    EXPECT_EQ(hub->exit_device(0), E_OK);
    EXPECT_EQ(hub.written(), wire("50 55 | 41 00"));
}

TEST_F(TintHub, storesTheColorsOfADeviceThatHasGoneNowhere)
{
    const auto colors = recordOf<TintMultiColor>(counting(0x21, 12) + " 03");
    EXPECT_EQ(hub->setPortMultiColor(&colors), E_OK);
    hub.written();
    EXPECT_EQ(hub->exit_device(1), E_OK);
    EXPECT_EQ(hub.written(), "");
}

TEST_F(TintHub, readsTheColorsOfThePorts)
{
    hub.device->answer("52 A8", "52 A8 77 " + counting(0x31, 13));
    hub.device->answer("52 2C", "52 2C 77 04 01 02 03 04 99 05");
    auto colors = recordOf<TintMultiColor>("");
    EXPECT_EQ(hub->getPortMultiColor(&colors), E_OK);
    EXPECT_EQ(bytesOf(colors), counting(0x31, 12) + " 04");
    EXPECT_EQ(hub.written(), "41 80 | 52 A8 | 52 2C FF FF 04 " + times(59, "FF"));
    for (int level = 1; level <= 5; ++level) {
        hub.device->answer("52 2C",
                           std::string("52 2C 77 04 01 02 03 04 ") + brightnessCodes[std::size_t(level - 1)]);
        EXPECT_EQ(hub->getPortMultiColor(&colors), E_OK);
        EXPECT_EQ(colors.brightness, level);
    }
}

WAITING_TEST(TintHubMissingReply, leavesTheOutputsAsTheyWere)
{
    together({
        [] {
            HubOf<TintHubModel> hub;
            auto colors = recordOf<TintMultiColor>(times(13, "EE"));
            EXPECT_EQ(hub->getPortMultiColor(&colors), E_OK); // in any case
            EXPECT_EQ(bytesOf(colors), times(13, "EE"));
            EXPECT_EQ(hub.written(), "41 80 | 52 A8 | 52 2C FF FF 04 " + times(59, "FF"));
        },
        [] {
            HubOf<TintHubModel> hub;
            hub.device->answer("52 2C", "52 2C 77 04 01 02 03 04 5A");
            auto colors = recordOf<TintMultiColor>(times(13, "EE"));
            EXPECT_EQ(hub->getPortMultiColor(&colors), E_OK);
            EXPECT_EQ(bytesOf(colors), times(12, "EE") + " 02");
        },
        [] {
            HubOf<TintHubModel> hub;
            std::uint8_t out[6]{1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6};
            EXPECT_EQ(hub->getEffectParameter(out, out + 1, out + 2, out + 3), E_INVALID_GET);
            EXPECT_EQ(hex(out), "01 E2 E3 E4 E5 E6");
        },
    });
}

TEST_F(TintHub, setsLayers)
{
    const auto layers =
        recordOf<TintMultilayer>("04 01 11 12 13 09 05 21 22 23 FF 02 31 32 33 80 03 41 42 43 51 52 53 54");
    EXPECT_EQ(hub->setEffectMultilayer(&layers), E_OK);
    const auto layer = [](const std::string& mode, const std::string& speed, const std::string& color) {
        return "41 01 | 51 2B 01 00 " + mode + " " + speed + " 00 FF FF FF " + color + " | 51 28 00 00 " +
               mode + " | 50 55 | 41 00";
    };
    EXPECT_EQ(hub.written(),
              wire(joined({layer("04", "01", "11 12 13"), layer("09", "05", "21 22 23"),
                           layer("FF", "02", "31 32 33"), layer("80", "03", "41 42 43"),
                           "41 01 | 51 A0 01 00 00 01 00 00 51 52 53 54 | 51 28 00 00 E0 | 50 55 | 41 00"})));
}

TEST_F(TintHub, leavesOutLayersThatAreRefused)
{
    const auto layers =
        recordOf<TintMultilayer>("00 01 11 12 13 03 05 21 22 23 05 00 31 32 33 05 06 41 42 43");
    EXPECT_EQ(hub->setEffectMultilayer(&layers), E_OK);
    EXPECT_EQ(hub.written(), wire("41 01 | 41 01 | 41 01 | 41 01 | "
                                  "41 01 | 51 A0 01 00 00 01 | 51 28 00 00 E0 | 50 55 | 41 00"));
}

TEST_F(TintHub, takesItsLightsOver)
{
    EXPECT_EQ(hub->setLightingInit(), E_OK);
    EXPECT_EQ(hub.written(), "41 03 | C0 F0 | C0 02");
    const Color color{{}, {0, 3, 0, 9}, 0x11, 0x22, 0x33};
    EXPECT_EQ(hub->setLightingPortColor(&color), E_OK);
    EXPECT_EQ(hub.written(), "C0 02 00 00 00 00 00 00 00 00 11 22 33");
    // Ports that are not named keep their colors.
    const Color two{{}, {4, 1, 4, 0xFFFFFFFF}, 0x44, 0x55, 0x66};
    EXPECT_EQ(hub->setLightingPortColor(&two), E_OK);
    EXPECT_EQ(hub.written(), "C0 02 00 00 44 55 66 00 00 00 11 22 33 44 55 66");
    EXPECT_EQ(hub->setLightingTurnOff(), E_OK);
    EXPECT_EQ(hub.written(), "C0 02");
    const Color none{{}, {0, 0, 5, 0}, 0x77, 0x88, 0x99};
    EXPECT_EQ(hub->setLightingPortColor(&none), E_OK);
    EXPECT_EQ(hub.written(), "C0 02 00 00 44 55 66 00 00 00 11 22 33 44 55 66");
    EXPECT_EQ(hub->setLightingInit(), E_OK);
    hub.written();
    EXPECT_EQ(hub->setLightingPortColor(&none), E_OK);
    EXPECT_EQ(hub.written(), "C0 02");
    EXPECT_EQ(hub->setLightingUninit(), E_OK);
    EXPECT_EQ(hub.written(), "41");
}

TEST_F(TintHub, doesNothingWithSingleLeds)
{
    EXPECT_EQ(hub->setSyncLightingData({{1, {{0, 1, 2, 3}}}}), E_OK);
    EXPECT_EQ(hub->setSyncLightingData({}), E_OK);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

} // namespace
} // namespace pyrux::test
