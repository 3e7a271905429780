#include "simulator/models.h"
#include "simulator/models/power_supply.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

using Curve = PowerSupplyFirmware::Curve;
using Measurements = PowerSupplyFirmware::Measurements;
using Texts = std::vector<std::string>;

std::string textOf(Bytes report)
{
    EXPECT_EQ(report.size(), 16U);
    const auto end = std::ranges::find(report, 0);
    EXPECT_TRUE(std::all_of(end, report.end(), [](std::uint8_t byte) { return byte == 0; }));
    return {report.begin(), end};
}

/// A model on the table, without a bus.
template <class Supply>
class PowerSupplyFirmwareTest : public testing::Test {
protected:
    PowerSupplyFirmwareTest()
    {
        supply.connect([this](Bytes report) { reports.push_back(textOf(report)); });
    }

    /// What the device says to a text; empty: nothing. The host fills its reports with zeros.
    std::string ask(const std::string& text)
    {
        reports.clear();
        std::vector<std::uint8_t> payload(text.begin(), text.end());
        payload.resize(16);
        supply.output(payload);
        EXPECT_LE(reports.size(), 1U);
        return reports.empty() ? "" : reports.front();
    }

    Texts round()
    {
        reports.clear();
        supply.sendRound();
        return reports;
    }

    Supply supply;
    Texts reports;
};

using PsuCtrlFirmwareTest = PowerSupplyFirmwareTest<PsuCtrlFirmware>;
using VoltgridFirmwareTest = PowerSupplyFirmwareTest<VoltgridFirmware>;

TEST(PowerSupplyFirmwareIdentity, isTheModels)
{
    struct Row {
        const char* name;
        std::uint16_t pid;
        const char* product;
    };
    for (const Row& row : {
             Row{"voltgrid", 0x0030, "VOLTGRID"},
             Row{"psuCtrl", 0x018D, "AU_LINE_550_MULTI"},
             Row{"au_line_650_multi", 0x018F, "AU_LINE_650_MULTI"},
             Row{"au_line_750_multi", 0x0191, "AU_LINE_750_MULTI"},
             Row{"au_line_850_multi", 0x0193, "AU_LINE_850_MULTI"},
             Row{"au_line_550_single", 0x0195, "AU_LINE_550_SINGLE"},
             Row{"au_line_650_single", 0x0197, "AU_LINE_650_SINGLE"},
             Row{"au_line_750_single", 0x0199, "AU_LINE_750_SINGLE"},
             Row{"au_line_850_single", 0x019B, "AU_LINE_850_SINGLE"},
             Row{"silent_1300", 0x01A5, "SILENT_1300"},
             Row{"pt_line_650_multi", 0x019D, "PT_LINE_650_MULTI"},
             Row{"pt_line_750_multi", 0x019F, "PT_LINE_750_MULTI"},
             Row{"pt_line_850_multi", 0x01A1, "PT_LINE_850_MULTI"},
         }) {
        const auto supply = makeFirmware(row.name);
        ASSERT_NE(supply, nullptr) << row.name;
        const Identity& identity = supply->identity();
        EXPECT_EQ(identity.vid, 0x3A7E);
        EXPECT_EQ(identity.pid, row.pid) << row.name;
        EXPECT_EQ(identity.product, row.product);
        EXPECT_EQ(identity.serial, std::string(row.product) + "-000001");
        EXPECT_EQ(identity.controlInterface, -1);
        ASSERT_EQ(identity.collections.size(), 1U);
        EXPECT_EQ(identity.collections.front().interface, -1);
    }
}

TEST_F(PsuCtrlFirmwareTest, tellsAllThatItMeasures)
{
    supply.setMeasurements(
        Measurements{{2301, 50, 33, 121, 120, 119}, {11, 62, 48, 35, 123, 7}, 97, 415, 1234});
    EXPECT_EQ(round(), (Texts{"[P10.97]", "[V1230.1]", "[I1001.1]", "[V2005.0]", "[I2006.2]", "[V3003.3]",
                              "[I3004.8]", "[V4012.1]", "[I4003.5]", "[V5012.0]", "[I5012.3]", "[V6011.9]",
                              "[I6000.7]", "[T1041.5]", "[R11234]"}));
    supply.setMeasurements(Measurements{{}, {}, 100, 5, 60});
    const Texts least = round();
    EXPECT_EQ(least[0], "[P11.00]");
    EXPECT_EQ(least[1], "[V1000.0]");
    EXPECT_EQ(least[13], "[T1000.5]");
    EXPECT_EQ(least[14], "[R10060]");
}

/// A number after the head of a report.
double number(const std::string& report)
{
    return std::strtod(report.c_str() + 3, nullptr);
}

/// Holds a round's reports against what a supply can do at all.
void expectPlausible(const Texts& round, bool withFactor)
{
    ASSERT_EQ(round.size(), 15U);
    const double in = number(round[1]) * number(round[2]) * (withFactor ? number(round[0]) : 1);
    double out = 0;
    for (std::size_t channel = 2; channel <= 6; ++channel)
        out += number(round[2 * channel - 1]) * number(round[2 * channel]);
    EXPECT_GT(out, 50);
    EXPECT_LT(out, in);
    EXPECT_GT(out, in * 0.6);
    EXPECT_NEAR(number(round[0]), 0.96, 0.03);
    EXPECT_NEAR(number(round[1]), 230, 1);
    EXPECT_NEAR(number(round[3]), 5, 0.11);
    EXPECT_NEAR(number(round[5]), 3.3, 0.01);
    for (const std::size_t place : {7, 9, 11})
        EXPECT_NEAR(number(round[place]), 12, 0.21);
    EXPECT_GT(number(round[13]), 25);
    EXPECT_LT(number(round[13]), 65);
    EXPECT_GE(number(round[14]), 200);
    EXPECT_LE(number(round[14]), 2000);
}

TEST(PowerSupplyFirmwareLoad, goesUpAndDownSlowly)
{
    for (const std::string& name : firmwareNames()) {
        const auto supply = std::dynamic_pointer_cast<PowerSupplyFirmware>(makeFirmware(name));
        if (!supply)
            continue;
        Texts now;
        supply->connect([&](Bytes report) { now.push_back(textOf(report)); });
        double before = 0, least = 1e9, most = 0;
        for (int i = 0; i < 300; ++i) {
            now.clear();
            supply->sendRound();
            expectPlausible(now, name != "voltgrid");
            const double amperes = number(now[10]);
            if (i > 0) {
                EXPECT_NEAR(amperes, before, 1) << name;
            }
            before = amperes;
            least = std::min(least, amperes);
            most = std::max(most, amperes);
        }
        EXPECT_GT(most, 3 * least) << name;
        EXPECT_LT(most, 5 * least) << name;
    }
}

TEST(PowerSupplyFirmwareLoad, isTheSameAgain)
{
    Texts first, second;
    for (Texts* const reports : {&first, &second}) {
        VoltgridFirmware supply;
        supply.connect([&](Bytes report) { reports->push_back(textOf(report)); });
        for (int i = 0; i < 50; ++i)
            supply.sendRound();
    }
    EXPECT_EQ(first.size(), 750U);
    EXPECT_EQ(first, second);
}

TEST(PowerSupplyFirmwareLoad, isOnOneRailWhereThereIsOnlyOne)
{
    for (const char* name : {"au_line_550_single", "psuCtrl"}) {
        const auto supply = std::dynamic_pointer_cast<PowerSupplyFirmware>(makeFirmware(name));
        Texts round;
        supply->connect([&](Bytes report) { round.push_back(textOf(report)); });
        supply->sendRound();
        ASSERT_EQ(round.size(), 15U);
        const bool one = name != std::string("psuCtrl");
        EXPECT_EQ(round[8] == "[I4000.0]", one);
        EXPECT_EQ(round[12] == "[I6000.0]", one);
        EXPECT_NE(round[10], "[I5000.0]");
    }
}

TEST_F(PsuCtrlFirmwareTest, takesALoad)
{
    EXPECT_TRUE(supply.happen("load", {80}));
    EXPECT_EQ(round()[10].substr(0, 3), "[I5");
    const double high = number(reports[10]);
    EXPECT_EQ(number(round()[10]), high);
    EXPECT_TRUE(supply.happen("load", {40}));
    EXPECT_NEAR(number(round()[10]), high / 2, 0.3);
    EXPECT_TRUE(supply.happen("vary", {}));
    for (int i = 0; i < 10; ++i)
        round();
    EXPECT_GT(number(round()[10]), 0);
    EXPECT_FALSE(supply.happen("load", {101}));
    EXPECT_FALSE(supply.happen("load", {-1}));
    EXPECT_FALSE(supply.happen("load", {}));
    EXPECT_FALSE(supply.happen("vary", {1}));
    EXPECT_FALSE(supply.happen("dpi", {1}));
    EXPECT_EQ(supply.events(), (Texts{"load PERCENT", "vary"}));
}

TEST_F(PsuCtrlFirmwareTest, keepsItsFanMode)
{
    EXPECT_EQ(ask("[MQ]"), "[M1]");
    for (const char* mode : {"[M2]", "[M3]", "[M4]", "[M5]", "[M1]"}) {
        EXPECT_EQ(ask(mode), "");
        EXPECT_EQ(ask("[MQ]"), mode);
    }
    for (const char* wrong : {"[M0]", "[M6]", "[Mx]", "[M22]", "[M3", "M3]", "[]", "[M]", "[N3]", ""})
        EXPECT_EQ(ask(wrong), "") << wrong;
    EXPECT_EQ(ask("[MQ]"), "[M1]");
    EXPECT_EQ(supply.fanMode(), 1);
}

TEST_F(PsuCtrlFirmwareTest, turnsItsFanByTheMode)
{
    EXPECT_TRUE(supply.happen("load", {80})); // 56 degrees
    const auto rpmIn = [this](const char* mode) {
        ask(mode);
        return round().back();
    };
    EXPECT_EQ(rpmIn("[M1]"), "[R10720]"); // 10 + 26 percent of 2000
    EXPECT_EQ(rpmIn("[M2]"), "[R11020]");
    EXPECT_EQ(rpmIn("[M3]"), "[R11320]");
    EXPECT_EQ(rpmIn("[M4]"), "[R12000]");
    EXPECT_EQ(rpmIn("[M5]"), "[R10920]"); // 46 percent: between 40: 30 and 60: 50
    supply.setMeasurements(std::nullopt);
    EXPECT_TRUE(supply.happen("load", {0})); // 28 degrees
    EXPECT_EQ(rpmIn("[M5]"), "[R10200]");
}

TEST_F(PsuCtrlFirmwareTest, tellsItsCurve)
{
    EXPECT_EQ(ask("[Q1]"), "[m13002]");
    EXPECT_EQ(ask("[Q2]"), "[m24004]");
    EXPECT_EQ(ask("[Q3]"), "[m36006]");
    EXPECT_EQ(ask("[Q4]"), "[m47008]");
    EXPECT_EQ(ask("[Q0]"), "");
    EXPECT_EQ(ask("[Q5]"), "");
}

TEST_F(PsuCtrlFirmwareTest, takesACurveOnlyOnEnteringItsMode)
{
    const Curve factory{{{30, 10}, {40, 30}, {60, 50}, {70, 70}}};
    const Curve next{{{25, 0}, {45, 20}, {55, 80}, {65, 100}}};
    EXPECT_EQ(ask("[M5]"), "");
    for (const char* point : {"[m12501]", "[m24503]", "[m35509]", "[m46510]"})
        EXPECT_EQ(ask(point), "");
    EXPECT_EQ(supply.storedCurve(), next);
    EXPECT_EQ(supply.curve(), factory);
    EXPECT_EQ(ask("[M5]"), ""); // the mode is not entered: it has not been left
    EXPECT_EQ(supply.curve(), factory);
    EXPECT_EQ(ask("[Q4]"), "[m47008]");
    EXPECT_EQ(ask("[M2]"), "");
    EXPECT_EQ(supply.curve(), factory);
    EXPECT_EQ(ask("[M5]"), "");
    EXPECT_EQ(supply.curve(), next);
    EXPECT_EQ(ask("[Q1]"), "[m12501]");
    EXPECT_EQ(ask("[Q3]"), "[m35509]");
    EXPECT_EQ(ask("[Q4]"), "[m46510]");
}

TEST_F(PsuCtrlFirmwareTest, takesNoPointThatIsNone)
{
    const Curve before = supply.storedCurve();
    for (const char* wrong : {"[m02503]", "[m52503]", "[m1x503]", "[m12x03]", "[m125x3]", "[m1250x]",
                              "[m12500]", "[m12511]", "[m12520]", "[m12503x", "[m1250]", "[m125030]"})
        EXPECT_EQ(ask(wrong), "") << wrong;
    EXPECT_EQ(supply.storedCurve(), before);
}

TEST_F(PsuCtrlFirmwareTest, keepsItsRailMode)
{
    EXPECT_EQ(ask("[OQ]"), "[O1]");
    EXPECT_EQ(ask("[O3]"), "");
    EXPECT_EQ(ask("[OQ]"), "[O3]");
    EXPECT_EQ(ask("[O0]"), "");
    EXPECT_EQ(ask("[O4]"), "");
    EXPECT_EQ(ask("[OQ]"), "[O3]");
    EXPECT_EQ(supply.railMode(), 3);
}

TEST_F(PsuCtrlFirmwareTest, tellsItsVersion)
{
    EXPECT_EQ(ask("[SQ]"), "C1.2");
    supply.setVersion("F12.34");
    EXPECT_EQ(ask("[SQ]"), "F12.34");
}

TEST_F(VoltgridFirmwareTest, isOfTheOtherFamily)
{
    EXPECT_EQ(ask("[SQ]"), "F1.3");
}

TEST_F(PsuCtrlFirmwareTest, keepsItsSettingsWithoutPower)
{
    supply.setPause(std::chrono::milliseconds(0));
    for (const char* command : {"[m12502]", "[M5]", "[m13502]", "[O2]"})
        ask(command);
    supply.powerOff();
    supply.powerOn();
    EXPECT_EQ(ask("[MQ]"), "[M5]");
    EXPECT_EQ(ask("[OQ]"), "[O2]");
    EXPECT_EQ(ask("[Q1]"), "[m12502]");
    EXPECT_EQ(supply.storedCurve(), supply.curve()); // the point that waited is lost
}

/// A supply that sends by itself, and what it has sent.
class StreamingSupply : public testing::Test {
protected:
    StreamingSupply()
    {
        supply.setPause(std::chrono::milliseconds(1));
        supply.connect([this](Bytes report) {
            const std::lock_guard lock(mutex);
            reports.push_back(textOf(report));
            arrived.notify_all();
        });
    }

    Texts await(std::size_t count)
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(
            arrived.wait_for(lock, std::chrono::seconds(20), [&] { return reports.size() >= count; }));
        return reports;
    }

    std::mutex mutex;
    std::condition_variable arrived;
    Texts reports;
    PsuCtrlFirmware supply; // goes first: it sends to the rest
};

TEST_F(StreamingSupply, sendsRoundByRoundByItself)
{
    supply.powerOn();
    const Texts seen = await(45);
    ASSERT_GE(seen.size(), 45U);
    for (std::size_t i = 0; i < 45; ++i)
        EXPECT_EQ(seen[i].substr(0, 3), seen[i % 15].substr(0, 3));
    expectPlausible(Texts(seen.begin(), seen.begin() + 15), true);
}

TEST_F(StreamingSupply, saysNothingWithoutPower)
{
    supply.powerOn();
    await(3);
    supply.powerOff();
    const std::size_t count = await(0).size();
    supply.powerOff();
    EXPECT_EQ(await(0).size(), count);
    supply.powerOn();
    EXPECT_EQ(await(count + 1)[count].substr(0, 3), "[P1"); // a round begins anew
}

TEST_F(StreamingSupply, canBeToldToWait)
{
    supply.setPause(std::chrono::milliseconds(0));
    supply.powerOn();
    EXPECT_EQ(await(0), Texts{});
    supply.sendRound();
    EXPECT_EQ(await(0).size(), 15U);
}

TEST(StreamingSupplyAtItsEnd, mayBeLetGoByItsOwnThread)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool gone = false;
    auto supply = std::make_shared<PsuCtrlFirmware>();
    supply->setPause(std::chrono::milliseconds(1));
    auto held = std::make_shared<std::shared_ptr<PsuCtrlFirmware>>(std::move(supply));
    const std::weak_ptr<PsuCtrlFirmware> watched = *held;
    (*held)->connect([&, held](Bytes) {
        const std::lock_guard lock(mutex);
        held->reset();
        gone = true;
        changed.notify_all();
    });
    if (const auto owner = watched.lock())
        owner->powerOn();
    std::unique_lock lock(mutex);
    EXPECT_TRUE(changed.wait_for(lock, std::chrono::seconds(20), [&] { return gone; }));
    EXPECT_TRUE(watched.expired());
}

} // namespace

} // namespace pyrux::sim
