// The strand controllers: one walk through what they do.

#include "pyrux/pyrux.h"
#include "tests/support/bytes.h"
#include "tests/support/debug_log.h"
#include "tests/support/opened_device.h"

#include <gtest/gtest.h>

#include <string>

namespace pyrux::test {
namespace {

/// A strand controller that is opened. It echoes what the test has no answer for.
template <auto make>
class StrandOf : public OpenedDevice<typename ModelOf<make>::Interface> {
public:
    StrandOf() : OpenedDevice<typename ModelOf<make>::Interface>(make, identityOf<ModelOf<make>>()) {}
};
using Strand = StrandOf<&strandhub>;

TEST(Strand, setsAndReadsAnEffect)
{
    Strand strand;
    strand.device->answer("80 03 02", "80 03 03");
    const StrandEffectParam set{.effect = 7,
                                .reserved = 0,
                                .speed = 3,
                                .parameterA = 0xA1,
                                .parameterB = 0xB1,
                                .red = 1,
                                .green = 2,
                                .blue = 3,
                                .port = 3,
                                .subPort = 5};
    EXPECT_EQ(strand->setEffectParameter(&set), E_OK);
    EXPECT_EQ(strand.written(), "80 03 02 04 10 07 02 A1 01 02 03 B1");
    strand.device->answer("80 03 01", "80 03 03 FF FF 07 02 A1 01 02 03 B1");
    StrandEffectParam read{};
    read.port = read.subPort = 255;
    EXPECT_EQ(strand->getEffectParameter(&read), E_OK);
    EXPECT_EQ(strand.written(), "80 03 01 FF FF");
    EXPECT_EQ(+read.speed, 3);
    EXPECT_EQ(+read.parameterB, 0xB1);
}

TEST(Strand, logsARefusalUnderTheOperationsName)
{
    Strand strand;
    strand.device->answer("80 B0", "80 B0 04 11");
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(strand->saveConfig(), E_INVALID_GET); }),
              (Lines{"[PYRUX][STRANDHUB]PYRUX::PYRUX_STRANDHUB::saveConfig, #",
                     "[PYRUX][STRANDHUB]PYRUX::PYRUX_STRANDHUB::saveConfig, error code = 17",
                     "[PYRUX][STRANDHUB]PYRUX::PYRUX_STRANDHUB::saveConfig, ret = -3"}));
    strand.device->answer("80 B0", "80 B0 05");
    EXPECT_EQ(strand->saveConfig(), E_WRONG_REPLY);
}

TEST(Strand, cutsCustomColorsOverFrames)
{
    Strand strand;
    strand.device->answer("80 06 01", "80 06 03 01 04 05"); // port 1 has 20 LEDs
    StrandGen1Size size{.port = 1, .chainLength = 0, .leds = 0};
    EXPECT_EQ(strand->getGen1Size(&size), E_OK);
    strand.forget();
    strand.device->answer("00 08", "00 08 03");
    strand.device->answer("81 08", "81 08 03");
    StrandCustomBuffer buffer{};
    for (RgbColor& led : buffer.leds)
        led = {1, 2, 3};
    EXPECT_EQ(strand->setEffectCustomize(1, &buffer), E_OK);
    std::string first = "00 08 02 01 00";
    for (int i = 0; i < 59; ++i)
        first += " 0" + std::to_string(i % 3 + 1);
    EXPECT_EQ(strand.written(), first + " | 81 08 02 01 00 03");

    strand.device->answer("00 08 01", "00 08 03" + first.substr(8));
    strand.device->answer("81 08 01", "81 08 03 01 00 09");
    EXPECT_EQ(strand->getEffectCustomize(1, &buffer), E_OK);
    EXPECT_EQ(strand.written(), "00 08 01 01 | 81 08 01 01");
    EXPECT_EQ(+buffer.leds[19].blue, 9);
}

TEST(Strand, paintsZonesInFramesOfSixtyLeds)
{
    Strand strand;
    StrandPortColor color{};
    color.zone[1] = 23;
    color.zone[2] = 17; // ends the walk
    color.zone[3] = 10;
    color.red = 1;
    color.green = 2;
    color.blue = 3;
    EXPECT_EQ(strand->setLightingPortColor(&color), E_OK);
    std::string parts[3]{"00 09 02 04 3C", "01 09", "82 09"};
    for (int i = 0; i < 180; ++i)
        parts[i < 59 ? 0 : i < 121 ? 1 : 2] += " 0" + std::to_string(i % 3 + 1);
    EXPECT_EQ(strand.written(3), parts[0] + " | " + parts[1] + " | " + parts[2]);
    EXPECT_EQ(strand->setSyncLightingData({{36, {{59, 4, 5, 6}, {60, 9, 9, 9}}}}), E_OK);
    std::string last = "82 09";
    for (int i = 0; i < 56; ++i)
        last += " 00";
    EXPECT_EQ(strand.written(3), wire("00 09 04 20 3C | 01 09 | " + last + " 04 05 06"));
}

TEST(Strand, secondModelIsTheSame)
{
    StrandOf<&strandhubv2> strand;
    strand.device->answer("80 06 02", "80 06 03");
    const StrandGen1Size size{.port = 2, .chainLength = 7, .leds = 10};
    EXPECT_EQ(strand->setGen1Size(&size), E_OK);
    EXPECT_EQ(strand.written(), "80 06 02 01 07 08");
    EXPECT_EQ(strand->exit_device(0), E_OK);
    EXPECT_EQ(strand->saveConfig(), E_CLOSED);
    EXPECT_EQ(strand.written(), "");
}

} // namespace
} // namespace pyrux::test
