// The power supplies: one walk through what they do. Texts on the wire are written as they stand.

#include "pyrux/pyrux.h"
#include "tests/support/bytes.h"
#include "tests/support/mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

namespace pyrux::test {
namespace {

sim::Identity supply(std::uint16_t pid)
{
    sim::Identity identity;
    identity.pid = pid;
    identity.collections = {{.interface = -1}};
    identity.controlInterface = -1;
    return identity;
}

/// A text as the scripted device takes it.
std::string coded(const std::string& text)
{
    return hex(ByteVector(text.begin(), text.end()));
}

/// Output reports as text; a report that is not 17 bytes long, or not filled with zeros, shows.
std::string texts(const std::string& path, std::size_t count)
{
    std::string all;
    for (const sim::WireRecord& record : sim::takeTraffic(path, count)) {
        if (record.direction != sim::WireRecord::Direction::toDevice)
            continue;
        EXPECT_EQ(record.bytes.size(), 17U);
        EXPECT_EQ(record.bytes.at(0), 0);
        std::string text(record.bytes.begin() + 1, record.bytes.end());
        all += text.substr(0, text.find_last_not_of('\0') + 1);
    }
    return all;
}

bool comesTrue(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition())
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        else
            std::this_thread::yield();
    return true;
}

TEST(PowerSupply, tellsMeansOfWhatItHasSent)
{
    OpenedDevice<PYRUX_PSUCTRL_Base> supplyOf(psuCtrl, supply(0x018D));
    for (const char* text : {"[V1230.5]", "[V1230.7]", "[I1002.0]", "[P10.50]", "[V5012.0]", "[I5010.0]",
                             "[V7999.9]", "[V1999.9", "[V19x9.9]", "[R11200]", "[T1041.5]"})
        supplyOf.device->send(coded(text));
    float temperature = 0;
    ASSERT_TRUE(comesTrue([&] { return !supplyOf->getThermal(temperature) && temperature == 41.5F; }));
    PsuInput input{};
    EXPECT_EQ(supplyOf->getInput(input), E_OK);
    EXPECT_FLOAT_EQ(input.voltage, 230.6F);
    EXPECT_FLOAT_EQ(input.inputPower, 230.6F);
    EXPECT_FLOAT_EQ(input.outputPower, 120);
    PsuLog log{};
    EXPECT_EQ(supplyOf->getLog(log), E_OK);
    EXPECT_EQ(log.POUT_V12, 120);
    EXPECT_EQ(log.speed, 1200);
}

TEST(PowerSupply, asksForItsFan)
{
    OpenedDevice<PYRUX_VOLTGRID_Base> grid(voltgrid, supply(0x0030));
    grid.device->answer(coded("[MQ]"), coded("[M5]"));
    const char* points[]{"[m13002]", "[m24004]", "[m36006]", "[m47010]"};
    for (int i = 0; i < 4; ++i)
        grid.device->answer(coded("[Q" + std::to_string(i + 1) + "]"), coded(points[i]));
    VoltgridFan fan{};
    EXPECT_EQ(grid->getFan(fan), E_OK);
    EXPECT_EQ(texts(grid.path, 10), "[MQ][Q1][Q2][Q3][Q4]");
    EXPECT_EQ(fan.mode, 5);
    EXPECT_EQ(fan.points[0].speed, 10);
    EXPECT_EQ(fan.points[3].temperature, 70);
    EXPECT_EQ(fan.points[3].speed, 100);
}

WAITING_TEST(PowerSupply, entersItsFanModeTwiceForACurve)
{
    OpenedDevice<PYRUX_PSUCTRL_Base> supplyOf(psuCtrl, supply(0x01A5));
    const PsuCtrlFan fan{.mode = 5, .speed = 0, .points = {{25, 5}, {40, 37}, {60, 89}, {70, 95}}};
    EXPECT_EQ(supplyOf->setFan(fan), E_OK);
    EXPECT_EQ(texts(supplyOf.path, 0), "[M5][m12501][m24004][m36009][m47010][M2][M5]");
    EXPECT_EQ(supplyOf->setFan({.mode = 6, .speed = 0, .points = {}}), E_INVALID_MODE);
    EXPECT_EQ(supplyOf->setMultiRail(3), E_OK);
    EXPECT_EQ(supplyOf->setMultiRail(4), E_INVALID_MODE);
    EXPECT_EQ(texts(supplyOf.path, 1), "[O3]");
}

TEST(PowerSupply, tellsItsVersionAndRailMode)
{
    OpenedDevice<PYRUX_VOLTGRID_Base> grid(voltgrid, supply(0x0030));
    grid.device->answer(coded("[SQ]"), coded("C2.13"));
    std::uint8_t family = 9, major = 0, minor = 0, mode = 0;
    EXPECT_EQ(grid->getVersion(&family, &major, &minor), E_OK);
    EXPECT_EQ(family, 0);
    EXPECT_EQ(major, 2);
    EXPECT_EQ(minor, 13);
    grid.device->answer(coded("[OQ]"), coded("[O3]"));
    EXPECT_EQ(grid->getMultiRail(&mode), E_OK);
    EXPECT_EQ(mode, 3);
    grid.device->answer(coded("[OQ]"), coded("[O?]"));
    EXPECT_EQ(grid->getMultiRail(&mode), E_OK);
    EXPECT_EQ(mode, 1);
}

} // namespace
} // namespace pyrux::test
