// GLOW_HUB2: effects, colors, following, frames of a host.

#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <future>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Base = PYRUX_GLOW2_Base;

class GlowHub2 : public testing::Test {
protected:
    GlowHub2()
    {
        hub.device->answer("80 0B 02", "80 0B 03");
        hub.device->answer("80 0A 02", "80 0A 03");
    }

    /// Port, effect, param, speed, flag, level.
    _error setEffect(const std::array<std::uint8_t, 6>& a)
    {
        return hub->setARGBEffectParameter(a[0], {a[1], a[2], a[3], a[4]}, a[5]);
    }

    HubOf<GlowHub2Model> hub;
};

TEST_F(GlowHub2, setsTheEffectOfAllPorts)
{
    for (std::uint8_t port = 1; port <= 4; ++port) {
        EXPECT_EQ(setEffect({port, 8, 7, 5, 1, 4}), E_OK);
        EXPECT_EQ(hub.written(), "80 0B 02 0F 08 07 04 01 03");
        EXPECT_EQ(setEffect({port, 0, 0, 1, 0, 1}), E_OK);
        EXPECT_EQ(hub.written(), "80 0B 02 0F");
    }
    // Deliberate: effect 3 counts its parameter from another number.
    EXPECT_EQ(setEffect({1, 3, 7, 2, 0, 2}), E_OK);
    EXPECT_EQ(hub.written(), "80 0B 02 0F 03 06 01 00 01");
    EXPECT_EQ(setEffect({1, 3, 0, 2, 0, 2}), E_OK);
    EXPECT_EQ(hub.written(), "80 0B 02 0F 03 FF 01 00 01");
}

TEST_F(GlowHub2, refusesValuesOutOfRange)
{
    const std::array<std::uint8_t, 6> good{1, 0, 0, 1, 0, 1};
    const std::array<std::vector<std::uint8_t>, 6> bad{
        {{0, 5, 255}, {9, 255}, {8, 255}, {0, 6, 255}, {2, 255}, {0, 5, 255}}};
    for (std::size_t place = 0; place < bad.size(); ++place)
        for (const std::uint8_t value : bad[place]) {
            auto arguments = good;
            arguments[place] = value;
            EXPECT_EQ(setEffect(arguments), E_INVALID_SET) << place << ": " << int(value);
        }
    EXPECT_EQ(setEffect({1, 3, 8, 1, 0, 1}), E_INVALID_SET);
    for (const std::uint8_t port : {0, 5, 255}) {
        ByteVector output(36, 0xEE);
        EXPECT_EQ(hub->setARGBCustomize(port, output.data()), E_INVALID_SET);
        EXPECT_EQ(hub->getARGBEffectParameter(port, output.data()), E_INVALID_GET);
        EXPECT_EQ(hub->getARGBCustomize(port, output.data()), E_INVALID_GET);
        EXPECT_EQ(output, ByteVector(36, 0xEE));
    }
    for (const auto& [mode, param, speed] : std::initializer_list<std::array<std::uint8_t, 3>>{{7, 0, 1},
                                                                                               {255, 0, 1},
                                                                                               {0, 5, 1},
                                                                                               {1, 8, 1},
                                                                                               {6, 8, 1},
                                                                                               {0, 0, 0},
                                                                                               {0, 0, 6},
                                                                                               {1, 255, 1},
                                                                                               {1, 1, 255}})
        EXPECT_EQ(hub->setRGBEffectParameter(mode, param, speed), E_INVALID_SET) << int(mode) << int(param);
    for (const auto& [flag, speed] :
         std::initializer_list<std::array<std::uint8_t, 2>>{{2, 1}, {255, 1}, {0, 0}, {1, 6}})
        EXPECT_EQ(hub->setRGBFollowParameter(0, flag, speed), E_INVALID_SET) << int(flag) << int(speed);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

TEST_F(GlowHub2, needsItsRecords)
{
    std::uint8_t byte = 0xEE;
    EXPECT_EQ(hub->getARGBEffectParameter(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->setARGBCustomize(1, nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getARGBCustomize(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->getRGBEffectParameter(nullptr, &byte, &byte), E_INVALID_GET);
    EXPECT_EQ(hub->getRGBEffectParameter(&byte, nullptr, &byte), E_INVALID_GET);
    EXPECT_EQ(hub->getRGBEffectParameter(&byte, &byte, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->setRGBCustomize(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getRGBCustomize(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->getRGBFollowParameter(nullptr, &byte, &byte), E_INVALID_GET);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
    EXPECT_EQ(byte, 0xEE);
}

TEST_F(GlowHub2, readsTheEffectOfAllPorts)
{
    for (std::uint8_t port = 1; port <= 4; ++port) {
        hub.device->answer("80 0B 01", "80 0B 03 0F 08 07 04 01 03 99");
        ByteVector output(6, 0xEE);
        EXPECT_EQ(hub->getARGBEffectParameter(port, output.data()), E_OK);
        EXPECT_EQ(hex(output), "08 07 05 01 04 EE");
        EXPECT_EQ(hub.written(), "80 0B 01 0F");
        hub.device->answer("80 0B 01", "80 0B 03 0F 03 FF 00 00 00");
        EXPECT_EQ(hub->getARGBEffectParameter(port, output.data()), E_OK);
        EXPECT_EQ(hex(output), "03 00 01 00 01 EE");
        hub.written();
    }
}

TEST_F(GlowHub2, leavesOutputsAsTheyWereWhenTheReplyIsAnother)
{
    ByteVector output(36, 0xEE);
    for (const char* command : {"80 0B", "80 10", "80 0A", "80 11"})
        for (const char* operation : {"02", "04"})
            hub.device->answer(std::string(command) + " 01",
                               std::string(command) + " " + operation + " 01 02 03 04");
    EXPECT_EQ(hub->getARGBEffectParameter(1, output.data()), E_OK);
    EXPECT_EQ(hub->getARGBCustomize(1, output.data()), E_OK);
    EXPECT_EQ(hub->getRGBEffectParameter(&output[0], &output[1], &output[2]), E_OK);
    EXPECT_EQ(hub->getRGBCustomize(output.data()), E_OK);
    EXPECT_EQ(output, ByteVector(36, 0xEE));
    // A refused set is answered too.
    hub.device->answer("80 0B 02", "80 0B 04 01");
    EXPECT_EQ(setEffect({1, 0, 0, 1, 0, 1}), E_OK);
}

TEST_F(GlowHub2, carriesTwelveColors)
{
    const ByteVector set = bytes(counting(0x41, 37));
    for (std::uint8_t port = 1; port <= 4; ++port) {
        EXPECT_EQ(hub->setARGBCustomize(port, set.data()), E_OK);
        EXPECT_EQ(hub.written(1), "80 10 02 0F 0C " + counting(0x41, 36));
        hub.device->answer("80 10 01", "80 10 03 77 88 " + counting(0x81, 37));
        ByteVector got(37, 0xEE);
        EXPECT_EQ(hub->getARGBCustomize(port, got.data()), E_OK);
        EXPECT_EQ(hex(got), counting(0x81, 36) + " EE");
        EXPECT_EQ(hub.written(), "80 10 01 0F 0C");
    }
}

TEST_F(GlowHub2, setsTheEffectOfTheStrip)
{
    for (std::uint8_t mode = 0; mode < 7; ++mode) {
        const std::uint8_t param = mode == 0 ? 4 : 7;
        EXPECT_EQ(hub->setRGBEffectParameter(mode, param, 5), E_OK);
        EXPECT_EQ(hub.written(), "80 0A 02 " + hexByte(mode) + " " + hexByte(param) + " 04");
        EXPECT_EQ(hub->setRGBEffectParameter(mode, 0, 1), E_OK);
        EXPECT_EQ(hub.written(), wire("80 0A 02 " + hexByte(mode)));
    }
    hub.device->answer("80 0A 01", "80 0A 03 06 07 04 99");
    std::array<std::uint8_t, 3> output{};
    EXPECT_EQ(hub->getRGBEffectParameter(&output[0], &output[1], &output[2]), E_OK);
    EXPECT_EQ(hex(output), "06 07 05");
    EXPECT_EQ(hub.written(), "80 0A 01");
}

TEST_F(GlowHub2, setsTheStripsColorAndShowsIt)
{
    const std::array<std::uint8_t, 3> color{0x0A, 0x0B, 0x0C};
    EXPECT_EQ(hub->setRGBCustomize(color.data()), E_OK);
    EXPECT_EQ(hub.written(), "80 11 02 0A 0B 0C | 80 0A 02 04");
    hub.device->answer("80 11 01", "80 11 03 1A 1B 1C 1D");
    ByteVector got(4, 0xEE);
    EXPECT_EQ(hub->getRGBCustomize(got.data()), E_OK);
    EXPECT_EQ(hex(got), "1A 1B 1C EE");
    EXPECT_EQ(hub.written(), "80 11 01");
}

TEST_F(GlowHub2, choosesALayerWithoutAnOperation)
{
    for (const int value : {1, 2, 255}) {
        EXPECT_EQ(hub->setLayerSelect(std::uint8_t(value)), E_OK);
        EXPECT_EQ(hub.written(), "80 17 " + hexByte(value));
    }
}

TEST_F(GlowHub2, followsASource)
{
    EXPECT_EQ(hub->setRGBFollowParameter(200, 1, 5), E_OK);
    EXPECT_EQ(hub.written(), "80 18 02 C8 01 04");
    EXPECT_EQ(hub->setRGBFollowParameter(0, 0, 1), E_OK);
    EXPECT_EQ(hub.written(), "80 18 02");
    // Deliberate: the reply of the device itself is looked at as if another command had asked.
    hub.device->answer("80 18 01", "80 18 03 01 01 04");
    std::array<std::uint8_t, 3> output{0xE1, 0xE2, 0xE3};
    EXPECT_EQ(hub->getRGBFollowParameter(&output[0], &output[1], &output[2]), E_OK);
    EXPECT_EQ(hex(output), "E1 E2 E3");
    EXPECT_EQ(hub.written(), "80 18 01");
}

TEST_F(GlowHub2, takesTheReplyOfTheLayerForAFollowingSource)
{
    // It reaches the younger of two requests, whose count the first byte fills up.
    std::array<std::uint8_t, 3> first{0xE1, 0xE2, 0xE3};
    std::array<std::uint8_t, 3> second = first;
    const auto ask = [&](std::array<std::uint8_t, 3>& to) {
        return std::async(std::launch::async,
                          [&] { return hub->getRGBFollowParameter(&to[0], &to[1], &to[2]); });
    };
    auto older = ask(first);
    ASSERT_TRUE(hub.device->awaitCommands("80 18 01"));
    auto younger = ask(second);
    ASSERT_TRUE(hub.device->awaitCommands("80 18 01", 2));
    hub.device->send("80 17 03 09 01 04");
    EXPECT_EQ(younger.get(), E_OK);
    EXPECT_EQ(hex(second), "09 01 05");
    hub.device->send("80 18 03 09 01 04");
    EXPECT_EQ(older.get(), E_OK);
    EXPECT_EQ(hex(first), "E1 E2 E3");
}

TEST_F(GlowHub2, paintsItsZonesInOneColor)
{
    for (std::uint32_t zone = 1; zone <= 4; ++zone) {
        const LightingPortColorOf<5> color{{}, {0, 0, zone, 0, 6}, 0x11, 0x22, 0x33};
        EXPECT_EQ(hub->setLightingPortColor(&color), E_OK);
        EXPECT_EQ(hub.written(1), "80 16 02 02 " + hexByte(int(zone) - 1) + " 11 22 33");
    }
    const LightingPortColorOf<5> strip{{}, {5, 0, 0, 0, 0}, 0x11, 0x22, 0x33};
    EXPECT_EQ(hub->setLightingPortColor(&strip), E_OK);
    EXPECT_EQ(hub.written(1), "80 16 02 01 00 11 22 33");
}

TEST_F(GlowHub2, paintsAZoneLikeItsFirstLed)
{
    EXPECT_EQ(hub->setSyncLightingData({{3, {{7, 1, 2, 3}, {0, 4, 5, 6}}}}), E_OK);
    EXPECT_EQ(hub.written(1), "80 16 02 02 02 01 02 03");
    EXPECT_EQ(hub->setSyncLightingData({{5, {{9, 7, 8, 9}, {0, 4, 5, 6}}}}), E_OK);
    EXPECT_EQ(hub.written(1), "80 16 02 01 00 07 08 09");
    EXPECT_EQ(hub->setSyncLightingData({{1, {}}, {5, {}}}), E_OK); // zones without LEDs
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

TEST_F(GlowHub2, sendsItsLanesInOrder)
{
    sim::setConduct(hub.path, {.writeTime = 900ms});
    EXPECT_EQ(hub->setSyncLightingData({{5, {{0, 0xEE, 0, 0}}}}), E_OK);
    EXPECT_TRUE(sim::awaitWritersInside(1));
    EXPECT_EQ(hub->setSyncLightingData({{4, {{0, 4, 4, 4}}}, {3, {{0, 3, 3, 3}}}, {2, {{0, 2, 2, 2}}}}),
              E_OK);
    // The custom colors of a port have the lane of the next zone; the newer one goes out.
    const ByteVector colors(36, 0x55);
    EXPECT_EQ(hub->setARGBCustomize(1, colors.data()), E_OK);
    EXPECT_EQ(hub->setSyncLightingData({{1, {{0, 1, 1, 1}}}}), E_OK);
    sim::setConduct(hub.path, {});
    sim::releaseWrites(hub.path);
    EXPECT_EQ(hub.written(5), "80 16 02 01 00 EE | 80 16 02 02 00 01 01 01 | 80 10 02 0F 0C " +
                                  times(36, "55") + " | 80 16 02 02 02 03 03 03 | 80 16 02 02 03 04 04 04");
}

/// An operation whose reply does not come, with its output in 36 bytes.
struct Missing {
    const char* silent;
    std::function<_error(Base*, std::uint8_t*)> ask;
};

WAITING_TEST(GlowHub2MissingReply, failsRequestsAndLeavesTheirOutputs)
{
    const std::vector<Missing> cases{
        {"80 0B 02",
         [](Base* host, std::uint8_t*) {
             return host->setARGBEffectParameter(1, {1, 1, 1, 1}, 1);
         }},
        {"80 0B 01", [](Base* host, std::uint8_t* at) { return host->getARGBEffectParameter(1, at); }},
        {"80 10 01", [](Base* host, std::uint8_t* at) { return host->getARGBCustomize(1, at); }},
        {"80 0A 02", [](Base* host, std::uint8_t*) { return host->setRGBEffectParameter(1, 1, 1); }},
        {"80 0A 02", [](Base* host, std::uint8_t* at) { return host->setRGBCustomize(at); }},
        {"80 0A 01",
         [](Base* host, std::uint8_t* at) { return host->getRGBEffectParameter(at, at + 1, at + 2); }},
        {"80 11 01", [](Base* host, std::uint8_t* at) { return host->getRGBCustomize(at); }},
        {"80 18 01",
         [](Base* host, std::uint8_t* at) { return host->getRGBFollowParameter(at, at + 1, at + 2); }},
    };
    std::vector<std::function<void()>> scenarios;
    for (const Missing& one : cases)
        scenarios.emplace_back([one] {
            HubOf<GlowHub2Model> hub;
            hub.device->silence(one.silent);
            ByteVector output(36, 0xEE);
            EXPECT_EQ(one.ask(hub.host, output.data()), E_INVALID_GET) << one.silent;
            EXPECT_EQ(output, ByteVector(36, 0xEE)) << one.silent;
        });
    // A reply that would fit does not reach a request that is alone.
    scenarios.emplace_back([] {
        HubOf<GlowHub2Model> hub;
        hub.device->answer("80 18 01", "80 17 03 01 01 04");
        std::array<std::uint8_t, 3> output{0xE1, 0xE2, 0xE3};
        EXPECT_EQ(hub->getRGBFollowParameter(&output[0], &output[1], &output[2]), E_INVALID_GET);
        EXPECT_EQ(hex(output), "E1 E2 E3");
    });
    together(scenarios);
}

} // namespace
} // namespace pyrux::test
