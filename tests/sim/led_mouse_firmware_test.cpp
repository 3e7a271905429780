#include "simulator/models/led_mouse.h"
#include "tests/sim/hex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

/// A model on the table, without a bus.
template <class Mouse>
class LedMouseFirmwareTest : public testing::Test {
protected:
    LedMouseFirmwareTest()
    {
        mouse.connect([this](Bytes report) { reports.push_back(textOf(report)); });
    }

    /// What the device says to a payload, without the zeros at the end; empty: nothing.
    std::string ask(const std::string& payload)
    {
        reports.clear();
        mouse.output(bytesOf(payload));
        EXPECT_LE(reports.size(), 1U);
        return reports.empty() ? "" : reports.front();
    }

    std::string happen(const std::string& event, int value)
    {
        reports.clear();
        EXPECT_TRUE(mouse.happen(event, {value})) << event;
        return reports.empty() ? "" : reports.front();
    }

    Mouse mouse;
    std::vector<std::string> reports;
};

using Color = LedMouseFirmware::Color;
using Picture = LedMouseFirmware::Picture;
using RD215FirmwareTest = LedMouseFirmwareTest<RD215Firmware>;
using RD240FirmwareTest = LedMouseFirmwareTest<RD240Firmware>;

TEST(LedMouseFirmwareIdentity, isTheModels)
{
    const auto check = [](const Firmware& mouse, std::uint16_t pid, const char* name) {
        EXPECT_EQ(mouse.identity().vid, 0x3A7E);
        EXPECT_EQ(mouse.identity().pid, pid);
        EXPECT_EQ(mouse.identity().product, name);
        EXPECT_EQ(mouse.identity().serial, std::string(name) + "-000001");
        EXPECT_EQ(mouse.identity().controlInterface, 1);
        EXPECT_EQ(mouse.identity().collections.size(), 2U);
    };
    check(RD215Firmware(), 0x0101, "RD215");
    check(RD230Firmware(), 0x0141, "RD230");
    check(RD240Firmware(), 0x0165, "RD240");
    check(RD110Firmware(), 0x015F, "RD110");
}

TEST_F(RD215FirmwareTest, isTheWiredMouseToo)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 00 00 00 03"), "51");
    EXPECT_EQ(ask("52 00"), "52 00 00 00 03");
    EXPECT_EQ(mouse.profile(), 3);
    EXPECT_EQ(ask("42 00 00 00 01 00 00 01 01"), "42");
    EXPECT_EQ(ask("42 10 00 00 01 00 00 01 01"), "42 10");
    EXPECT_EQ(mouse.profileAcknowledgements(), 1);
}

TEST_F(RD215FirmwareTest, keepsItsEffectMode)
{
    EXPECT_EQ(ask("52 28"), "");
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 01");
    for (const char* mode : {"00", "01", "02", "04", "B0", "FE"}) {
        EXPECT_EQ(ask(std::string("51 28 00 00 ") + mode), "51 28");
        EXPECT_EQ(ask("52 28"), mode == std::string("00") ? "52 28" : std::string("52 28 00 00 ") + mode);
    }
    EXPECT_EQ(ask("51 28 00 00 05"), "");
    EXPECT_EQ(ask("51 28 00 00 03"), "");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 FE");
}

TEST_F(RD240FirmwareTest, hasOneModeMore)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 05"), "51 28");
    EXPECT_EQ(ask("51 2B 00 00 05 01 02 03"), "51 2B 00 00 05");
    EXPECT_EQ(ask("51 28 00 00 06"), "");
}

TEST_F(RD215FirmwareTest, keepsTheParametersOfEachEffect)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 2B 00 00 01 3C A0 FF FF 80 11 22 33"), "51 2B 00 00 01");
    EXPECT_EQ(ask("51 2B 00 00 02 32 00 FF FF 40 44 55 66"), "51 2B 00 00 02");
    EXPECT_EQ(ask("52 2B 00 00 01"), "52 2B 00 00 01 3C A0 FF FF 80 11 22 33");
    EXPECT_EQ(ask("52 2B 00 00 02"), "52 2B 00 00 02 32 00 FF FF 40 44 55 66");
    EXPECT_EQ(ask("52 2B 00 00 04"), "52 2B 00 00 04 00 00 FF FF FF FF FF FF");
    EXPECT_EQ(ask("52 2B 00 00 05"), "");
    EXPECT_EQ(ask("51 2B 00 00 05"), "");
}

TEST_F(RD215FirmwareTest, keepsItsCustomColors)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("52 A8"), "52 A8");
    EXPECT_EQ(ask("51 A8 00 00 01 02 03 04 05 06 07"), "51 A8");
    EXPECT_EQ(ask("52 A8"), "52 A8 00 00 01 02 03 04 05 06");
}

TEST_F(RD215FirmwareTest, keepsEffectsByProfile)
{
    EXPECT_EQ(ask("41 80"), "41 80");
    EXPECT_EQ(ask("51 28 00 00 04"), "51 28");
    EXPECT_EQ(ask("51 00 00 00 02"), "51");
    EXPECT_EQ(ask("52 28"), "52 28 00 00 01");
    EXPECT_EQ(ask("51 28 00 00 02"), "51 28");
    EXPECT_EQ(mouse.effects(0).mode, 4);
    EXPECT_EQ(mouse.effects(2).mode, 2);
    EXPECT_EQ(mouse.savedEffects(0).mode, 1);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 55"), "50 55");
    EXPECT_EQ(mouse.savedEffects(0).mode, 4);
    EXPECT_EQ(ask("50 10 00 00 00"), "50 10"); // profile 2
    EXPECT_EQ(mouse.effects(2).mode, 1);
    EXPECT_EQ(mouse.effects(0).mode, 4);
    mouse.powerOn();
    EXPECT_EQ(mouse.effects(2).mode, 2);
    EXPECT_EQ(ask("41 01"), "41 01");
    EXPECT_EQ(ask("50 10 00 00 FF"), "50 10");
    EXPECT_EQ(mouse.effects(0).mode, 1);
    EXPECT_EQ(mouse.savedEffects(2).mode, 1);
}

TEST_F(RD215FirmwareTest, showsTheFramesOfAHost)
{
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_EQ(mouse.picture(), Picture{});
    EXPECT_EQ(ask("41 02"), "41 02");
    EXPECT_EQ(mouse.state(), RD210Firmware::State::live);
    EXPECT_FALSE(mouse.driven());
    EXPECT_EQ(ask("C0 F0 00 00 01"), "");
    EXPECT_TRUE(mouse.driven());
    EXPECT_EQ(ask("C0 00 00 00 01 02 03"), "");
    EXPECT_EQ(mouse.picture(), (Picture{Color{1, 2, 3}, Color{1, 2, 3}}));
    EXPECT_EQ(ask("C0 01 02 00 01 0A 0B 0C 07 FF FF FF"), ""); // it has no LED 7
    EXPECT_EQ(mouse.picture(), (Picture{Color{}, Color{10, 11, 12}}));
    EXPECT_EQ(ask("C0 01 10 00 00 01 01 01"), "");
    EXPECT_EQ(mouse.picture(), (Picture{Color{}, Color{10, 11, 12}}));
    EXPECT_EQ(ask("C0 01"), "");
    EXPECT_EQ(mouse.picture(), Picture{});
    EXPECT_EQ(mouse.frames(), 3);
    EXPECT_EQ(ask("52 28"), ""); // no configuration meanwhile
    EXPECT_EQ(ask("41 00"), "41");
    EXPECT_FALSE(mouse.driven());
}

TEST_F(RD215FirmwareTest, tellsWhatItHasDone)
{
    EXPECT_EQ(happen("effect", 176), "42 20 00 00 00 00 00 01");
    EXPECT_EQ(mouse.effects(0).mode, 176);
    EXPECT_EQ(happen("brightness", 77), "42 20 00 00 00 00 00 00 01");
    EXPECT_EQ(mouse.effects(0).parameters.at(176)[4], 77);
    EXPECT_EQ(happen("switch", 3), "42 20 00 03 01 00 00 01 01");
    EXPECT_EQ(mouse.profile(), 3);
    EXPECT_EQ(happen("profile", 1), "42 20 00 01 01");
    EXPECT_FALSE(mouse.happen("effect", {5}));
    EXPECT_FALSE(mouse.happen("effect", {1, 2}));
    EXPECT_FALSE(mouse.happen("brightness", {256}));
    EXPECT_FALSE(mouse.happen("switch", {5}));
    EXPECT_EQ(mouse.events().back(), "switch N");
    EXPECT_EQ(mouse.events().front(), "dpi LEVEL");
}

} // namespace

} // namespace pyrux::sim
