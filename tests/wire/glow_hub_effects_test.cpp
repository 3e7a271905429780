// GLOW_HUB: effects of the ports and of the strip.

#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

namespace pyrux::test {
namespace {

using Effect = ArgbEffectParam;

class GlowHubEffects : public testing::Test {
protected:
    /// What a record is after a call, and what the call sends.
    struct Outcome {
        _error result;
        std::string record;
        std::string written;
        bool operator==(const Outcome&) const = default;
        friend void PrintTo(const Outcome& outcome, std::ostream* to)
        {
            *to << int(outcome.result) << "; " << outcome.record << "; " << outcome.written;
        }
    };

    template <class Operation>
    Outcome call(Operation operation, const std::string& text)
    {
        auto record = recordOf<Effect>(text);
        const _error result = operation(&record);
        return {result, bytesOf(record), hub.written()};
    }
    Outcome set(const std::string& record)
    {
        return call([&](Effect* effect) { return hub->setEffectParameter(effect); }, record);
    }
    Outcome get(const std::string& record)
    {
        return call([&](Effect* effect) { return hub->getEffectParameter(effect); }, record);
    }
    Outcome setRgb(const std::string& record)
    {
        return call([&](Effect* effect) { return hub->setRgbLightingEffectParameter(effect); }, record);
    }
    Outcome getRgb(const std::string& record)
    {
        return call([&](Effect* effect) { return hub->getRgbLightingEffectParameter(effect); }, record);
    }

    HubOf<GlowHubModel> hub;
};

TEST_F(GlowHubEffects, areSetForAPortByItsMask)
{
    const std::array masks{"01", "02", "04", "08"};
    for (int port = 1; port <= 4; ++port)
        EXPECT_EQ(set(hexByte(port) + " 03 10 05 80 11 22 33"),
                  (Outcome{E_OK, hexByte(port - 1) + " 03 10 05 80 11 22 33",
                           std::string("80 01 01 | 80 0B 02 ") + masks.at(std::size_t(port - 1)) +
                               " 03 10 04 80 11 22 33"}));
}

TEST_F(GlowHubEffects, haveTwelveModesThatGoOut)
{
    for (int mode = 0; mode < 256; ++mode) {
        const std::string rest = " " + hexByte(mode) + " 01 02 03 04 05 06";
        if (mode == 12)
            EXPECT_EQ(set("02" + rest), (Outcome{E_OK, "01" + rest, "80 01 02"}));
        else if (mode == 7 || mode > 12)
            EXPECT_EQ(set("02" + rest), (Outcome{E_INVALID_MODE, "02" + rest, ""})) << mode;
        else
            EXPECT_EQ(set("02" + rest),
                      (Outcome{E_OK, "01" + rest,
                               "80 01 01 | 80 0B 02 02 " + hexByte(mode) + " 01 01 03 04 05 06"}))
                << mode;
    }
}

TEST_F(GlowHubEffects, carrySpeedsLessOne)
{
    EXPECT_EQ(set("01 00 00 00 00 00 00 01").written, "80 01 01 | 80 0B 02 01 00 00 FF 00 00 00 01");
    EXPECT_EQ(set("01 00 00 FF 00 00 00 01").written, "80 01 01 | 80 0B 02 01 00 00 FE 00 00 00 01");
    // The color goes out whatever its source.
    EXPECT_EQ(set("01 00 0F 01 FF 01 02 03").written, "80 01 01 | 80 0B 02 01 00 0F 00 FF 01 02 03");
}

TEST_F(GlowHubEffects, areRefusedForOtherPorts)
{
    for (int port : {0, 5, 6, 128, 255}) {
        const Outcome refused{E_INVALID_SET, hexByte(port + 255) + " 03 10 05 80 11 22 33", ""};
        EXPECT_EQ(set(hexByte(port) + " 03 10 05 80 11 22 33"), refused) << port;
    }
    // Counted down each time.
    auto record = recordOf<Effect>("02 03");
    EXPECT_EQ(hub->setEffectParameter(&record), E_OK);
    EXPECT_EQ(hub->setEffectParameter(&record), E_OK);
    EXPECT_EQ(hub->setEffectParameter(&record), E_INVALID_SET);
    EXPECT_EQ(record.port, 255);
    EXPECT_EQ(hub.written(), "80 01 01 | 80 0B 02 02 03 00 FF | 80 01 01 | 80 0B 02 01 03 00 FF");
}

TEST_F(GlowHubEffects, areRead)
{
    hub.device->answer("80 0B 01 08", "80 0B 03 08 05 0F 03 80 66 77 88");
    hub.device->answer("80 0B 01 02", "80 0B 03 02 06 10 04 40 66 77 88");
    EXPECT_EQ(get("04 E1 E2 E3 E4 E5 E6 E7"),
              (Outcome{E_OK, "03 05 0F 04 80 E5 E6 E7", "80 01 05 03 | 80 0B 01 08"}));
    EXPECT_EQ(get("02 E1 E2 E3 E4 E5 E6 E7"),
              (Outcome{E_OK, "01 06 10 05 40 66 77 88", "80 01 05 03 | 80 0B 01 02"}));
    hub.device->answer("80 0B 01 02", "80 0B 03 02 06 00 FF 40");
    EXPECT_EQ(get("02").record, "01 06 00 00 40 00 00 00"); // the speed wraps around
}

TEST_F(GlowHubEffects, areReadOfTheNextLowerPortBehindOneAnother)
{
    for (const char* mask : {"01", "02", "04", "08"})
        hub.device->answer(std::string("80 0B 01 ") + mask, std::string("80 0B 03 ") + mask + " 01");
    auto record = recordOf<Effect>("02");
    EXPECT_EQ(hub->getEffectParameter(&record), E_OK);
    EXPECT_EQ(hub.written(), "80 01 05 03 | 80 0B 01 02");
    EXPECT_EQ(hub->getEffectParameter(&record), E_OK);
    EXPECT_EQ(hub.written(), "80 01 05 03 | 80 0B 01 01");
    EXPECT_EQ(record.port, 0);
    EXPECT_EQ(hub->getEffectParameter(&record), E_INVALID_SET);
    EXPECT_EQ(hub.written(), "80 01 05 03"); // asked in any case
    EXPECT_EQ(record.port, 255);
    EXPECT_EQ(hub->getEffectParameter(&record), E_INVALID_SET);
    EXPECT_EQ(record.port, 254);
    hub.written();
    EXPECT_EQ(get("05 E1"), (Outcome{E_INVALID_SET, "04 E1 00 00 00 00 00 00", "80 01 05 03"}));
}

TEST_F(GlowHubEffects, areModeTwelveWhileTheHostDrivesThePorts)
{
    hub.device->answer("80 01 05", "80 01 05 99 00 01");
    EXPECT_EQ(get("03 E1 E2 E3 E4 E5 E6 E7"), (Outcome{E_OK, "03 0C E2 01 55 00 00 00", "80 01 05 03"}));
    // Not even the port counts.
    EXPECT_EQ(get("09 E1 E2 E3 E4 E5 E6 E7"), (Outcome{E_OK, "09 0C E2 01 55 00 00 00", "80 01 05 03"}));
    std::uint8_t mode = 0;
    EXPECT_EQ(hub->getEffectMode(2, &mode), E_OK);
    EXPECT_EQ(mode, 12);
}

TEST_F(GlowHubEffects, areTheDevicesOwnWithAnyOtherState)
{
    for (const char* state :
         {"80 01 05 03 00 02", "80 01 05 03 01 00", "80 01 05 03 00 00 01", "80 01 06 03 00 01"}) {
        hub.device->answer("80 01 05", state);
        EXPECT_EQ(get("02 E1").written, "80 01 05 03 | 80 0B 01 02") << state;
    }
}

TEST_F(GlowHubEffects, stayAsTheyWereWhenTheReplyIsAnother)
{
    hub.device->answer("80 0B 01", "80 0B 04 07 01 02 03");
    EXPECT_EQ(get("03 E1 E2 E3 E4 E5 E6 E7").result, E_OK);
    EXPECT_EQ(get("03 E1 E2 E3 E4 E5 E6 E7").record, "02 E1 E2 E3 E4 E5 E6 E7");
    hub.device->answer("80 0A 01", "80 0A 02 07 01 02 03");
    EXPECT_EQ(getRgb("03 E1 E2 E3 E4 E5 E6 E7").result, E_OK);
    EXPECT_EQ(getRgb("03 E1 E2 E3 E4 E5 E6 E7").record, "03 E1 E2 E3 E4 E5 E6 E7");
}

TEST_F(GlowHubEffects, areChosenByTheirMode)
{
    for (int mode = 0; mode < 256; ++mode) {
        const bool known = mode <= 12;
        EXPECT_EQ(hub->setEffectMode(3, std::uint8_t(mode)), known ? E_OK : E_INVALID_MODE) << mode;
        EXPECT_EQ(hub.written(), mode == 12 ? "80 01 02"
                                 : known    ? wire("80 01 01 | 80 20 04 " + hexByte(mode))
                                            : "")
            << mode;
    }
    for (const std::uint8_t port : {0, 5, 255})
        EXPECT_EQ(hub->setEffectMode(port, 1), E_INVALID_SET);
    EXPECT_EQ(hub.written(), "");
    EXPECT_EQ(hub->setEffectMode(1, 7), E_OK);
    EXPECT_EQ(hub->setEffectMode(2, 7), E_OK);
    EXPECT_EQ(hub->setEffectMode(4, 7), E_OK);
    EXPECT_EQ(hub.written(), "80 01 01 | 80 20 01 07 | 80 01 01 | 80 20 02 07 | 80 01 01 | 80 20 08 07");
}

TEST_F(GlowHubEffects, tellTheModeOfPortOne)
{
    hub.device->answer("80 0B 01 01", "80 0B 03 01 0B");
    for (const std::uint8_t port : {1, 4, 0, 9}) {
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(hub->getEffectMode(port, &mode), E_OK);
        EXPECT_EQ(mode, 11);
        EXPECT_EQ(hub.written(), "80 01 05 03 | 80 0B 01 01");
    }
}

TEST_F(GlowHubEffects, ofTheStripAreSet)
{
    for (const int mode : {0, 1, 2, 3, 5}) {
        const std::string head = "EE " + hexByte(mode);
        const std::string wireHead = "80 01 03 | 80 04 " + hexByte(mode);
        for (const int speed : {1, 5})
            EXPECT_EQ(setRgb(head + " 10 " + hexByte(speed) + " 80 11 22 33"),
                      (Outcome{E_OK, head + " 10 " + hexByte(speed) + " 80 11 22 33",
                               wireHead + " 10 " + hexByte(speed - 1) + " 80 11 22 33"}));
        // Without a color of its own there is none.
        EXPECT_EQ(setRgb(head + " 0F 02 80 11 22 33"),
                  (Outcome{E_OK, head + " 0F 02 80 11 22 33", wireHead + " 0F 01 80"}));
        for (const int speed : {0, 6, 255})
            EXPECT_EQ(setRgb(head + " 10 " + hexByte(speed) + " 80 11 22 33"),
                      (Outcome{E_INVALID_PARAM, head + " 10 " + hexByte(speed) + " 80 11 22 33", ""}));
    }
    EXPECT_EQ(setRgb("01 06 10 00 80 11 22 33").written, "80 01 03 | 80 04 06");
    EXPECT_EQ(setRgb("01 07 10 00 80 11 22 33").written, "80 01 04 01");
    for (int mode = 0; mode < 256; ++mode)
        if (mode == 4 || mode > 7) {
            EXPECT_EQ(setRgb("01 " + hexByte(mode) + " 10 01 80 11 22 33"),
                      (Outcome{E_INVALID_PARAM, "01 " + hexByte(mode) + " 10 01 80 11 22 33", ""}))
                << mode;
        }
}

TEST_F(GlowHubEffects, ofTheStripAreRead)
{
    hub.device->answer("80 0A 01", "80 0A 03 05 0F 03 44 55 66 77");
    EXPECT_EQ(getRgb("E0 E1 E2 E3 E4 E5 E6 E7"),
              (Outcome{E_OK, "E0 05 0F 04 E4 E5 E6 E7", "80 01 05 03 | 80 0A 01"}));
    hub.device->answer("80 0A 01", "80 0A 03 05 10 03 44 55 66 77");
    EXPECT_EQ(getRgb("E0 E1 E2 E3 E4 E5 E6 E7"),
              (Outcome{E_OK, "E0 05 10 04 44 55 66 77", "80 01 05 03 | 80 0A 01"}));
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(hub->getRgbEffectMode(9, &mode), E_OK);
    EXPECT_EQ(mode, 5);
    EXPECT_EQ(hub.written(), "80 01 05 03 | 80 0A 01");
    hub.device->answer("80 01 05", "80 01 05 03 01 00");
    EXPECT_EQ(getRgb("E0 E1 E2 E3 E4 E5 E6 E7"), (Outcome{E_OK, "E0 07 00 01 E4 E5 E6 E7", "80 01 05 03"}));
    EXPECT_EQ(hub->getRgbEffectMode(1, &mode), E_OK);
    EXPECT_EQ(mode, 7);
    hub.written();
    for (const char* state : {"80 01 05 03 02", "80 01 05 03 00 01", "80 01 04 03 01"}) {
        hub.device->answer("80 01 05", state);
        EXPECT_EQ(getRgb("E0").written, "80 01 05 03 | 80 0A 01") << state;
    }
}

TEST_F(GlowHubEffects, ofTheStripAreChosenByTheirMode)
{
    for (int mode = 0; mode < 256; ++mode) {
        EXPECT_EQ(hub->setRgbEffectMode(99, std::uint8_t(mode)), mode <= 7 ? E_OK : E_INVALID_PARAM) << mode;
        EXPECT_EQ(hub.written(), mode == 7  ? "80 01 04 01"
                                 : mode < 7 ? wire("80 01 03 | 80 21 00 " + hexByte(mode))
                                            : "")
            << mode;
    }
}

TEST_F(GlowHubEffects, needTheirRecords)
{
    EXPECT_EQ(hub->setEffectParameter(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getEffectParameter(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectMode(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->setRgbLightingEffectParameter(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getRgbLightingEffectParameter(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub->getRgbEffectMode(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub.written(), "");
}

TEST(GlowHubStart, readsTheEffectOfPortOne)
{
    const auto device = std::make_shared<ScriptedDevice>(identityOf<GlowHubModel>());
    device->silence("");
    device->answer("80 01 05", "80 01 05 03 00 01");
    const std::string path = sim::plug(device);
    auto* const host = glow_hub(path.c_str());
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(takeWritten(path), "80 01 05 03");
    sim::unplug(path);
    host->exit_device(1);
}

WAITING_TEST(GlowHubMissingReply, ofTheStateCountsAsNotDriven)
{
    HubOf<GlowHubModel> hub([](ScriptedDevice& device) { device.silence("80 01 05"); });
    auto record = recordOf<Effect>("02");
    hub.device->answer("80 0B 01 02", "80 0B 03 02 06 00 02 40");
    EXPECT_EQ(hub->getEffectParameter(&record), E_OK);
    EXPECT_EQ(bytesOf(record), "01 06 00 03 40 00 00 00");
    EXPECT_EQ(hub.written(), "80 01 05 03 | 80 0B 01 02");
}

/// An operation whose reply does not come, with its output in six bytes.
struct Missing {
    const char* silent;
    std::function<_error(PYRUX_GLOW_Base*, std::uint8_t*)> ask;
    const char* after; ///< Where not all stays as it was.
};

WAITING_TEST(GlowHubMissingReply, leavesTheOutputsAsTheyWere)
{
    using Base = PYRUX_GLOW_Base;
    const auto effect = [](std::uint8_t* at) { return reinterpret_cast<Effect*>(at); };
    const std::vector<Missing> cases{
        {"80 0B 01", [=](Base* host, std::uint8_t* at) { return host->getEffectParameter(effect(at)); },
         "01 E1 E2 E3 E4 E5 E6 E7"},
        {"80 0A 01",
         [=](Base* host, std::uint8_t* at) { return host->getRgbLightingEffectParameter(effect(at)); }, ""},
        {"80 0D 01", [](Base* host, std::uint8_t* at) { return host->getLEDSize(1, at, at + 1); }, ""},
        {"80 0C 01", [](Base* host, std::uint8_t* at) { return host->getUID(at); }, ""},
        {"80 17 01", [](Base* host, std::uint8_t* at) { return host->getMultilayerMode(at); }, ""},
    };
    std::vector<std::function<void()>> scenarios;
    for (const Missing& one : cases)
        scenarios.emplace_back([one] {
            HubOf<GlowHubModel> hub;
            hub.device->silence(one.silent);
            ByteVector output = bytes("02 E1 E2 E3 E4 E5 E6 E7");
            EXPECT_EQ(one.ask(hub.host, output.data()), E_INVALID_GET) << one.silent;
            EXPECT_EQ(hex(output), *one.after ? one.after : "02 E1 E2 E3 E4 E5 E6 E7") << one.silent;
        });
    together(scenarios);
}

} // namespace
} // namespace pyrux::test
