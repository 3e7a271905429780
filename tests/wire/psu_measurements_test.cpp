// The power supplies: what they send by themselves, and what a host is told of it.

#include "tests/support/debug_log.h"
#include "tests/support/supply.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace pyrux::test {
namespace {

using Texts = std::vector<std::string>;

/// One round of everything.
const Texts everything{"[V1230.5]", "[I1001.2]", "[V2005.1]", "[I2006.0]", "[V3003.3]",
                       "[I3002.0]", "[V4012.1]", "[I4003.0]", "[V5012.0]", "[I5010.5]",
                       "[V6011.9]", "[I6000.5]", "[P10.97]",  "[T1041.5]", "[R11200]"};

template <class Model>
class PsuMeasurements : public testing::Test {
protected:
    PsuInput input()
    {
        PsuInput record;
        std::memset(&record, 0xEE, sizeof record);
        EXPECT_EQ(supply->getInput(record), E_OK);
        return record;
    }
    /// Means of the rails, voltage and current of channels 2 to 6.
    std::array<float, 10> output()
    {
        PsuOutput record;
        std::memset(&record, 0xEE, sizeof record);
        EXPECT_EQ(supply->getOutput(record), E_OK);
        std::array<float, 10> values{};
        std::memcpy(values.data(), &record, sizeof record);
        return values;
    }
    float thermal()
    {
        float value = -1;
        EXPECT_EQ(supply->getThermal(value), E_OK);
        return value;
    }
    std::uint16_t fanSpeed()
    {
        supply.answer("[MQ]", "[M1]");
        typename Model::Fan fan{};
        EXPECT_EQ(supply->getFan(fan), E_OK);
        supply.asked();
        return fan.speed;
    }

    SupplyOf<Model> supply;
};
TYPED_TEST_SUITE(PsuMeasurements, SupplyModels, ModelName);

TYPED_TEST(PsuMeasurements, areZeroUntilTheSupplySpeaks)
{
    const PsuInput input = this->input();
    EXPECT_EQ(input.voltage, 0.0F);
    EXPECT_EQ(input.current, 0.0F);
    EXPECT_EQ(input.powerFactor, 0.0F);
    EXPECT_EQ(input.inputPower, 0.0F);
    EXPECT_EQ(input.outputPower, 0.0F);
    EXPECT_EQ(input.efficiency, 0.0F);
    EXPECT_EQ(this->output(), (std::array<float, 10>{}));
    EXPECT_EQ(this->thermal(), 0.0F);
    EXPECT_EQ(this->supply.asked(), "");
}

TYPED_TEST(PsuMeasurements, reachTheirPlaces)
{
    this->supply.tell(everything);
    const PsuInput input = this->input();
    EXPECT_FLOAT_EQ(input.voltage, 230.5F);
    EXPECT_FLOAT_EQ(input.current, 1.2F);
    EXPECT_FLOAT_EQ(input.powerFactor, 0.97F);
    const std::array<float, 10> rails{5.1F, 6.0F, 3.3F, 2.0F, 12.1F, 3.0F, 12.0F, 10.5F, 11.9F, 0.5F};
    const std::array<float, 10> output = this->output();
    for (std::size_t i = 0; i < rails.size(); ++i)
        EXPECT_FLOAT_EQ(output[i], rails[i]) << i;
    EXPECT_FLOAT_EQ(input.outputPower, 205.45F); // 30.6 + 6.6 + 36.3 + 126 + 5.95
    EXPECT_FLOAT_EQ(this->thermal(), 41.5F);
    EXPECT_EQ(this->fanSpeed(), 1200);
}

TYPED_TEST(PsuMeasurements, costTheDeviceNothing)
{
    this->supply.tell(everything);
    for (int i = 0; i < 100; ++i) {
        this->input();
        this->output();
        this->thermal();
    }
    EXPECT_EQ(this->supply.asked(), "");
}

// Deliberately so: the older supply's input power knows no power factor.
TYPED_TEST(PsuMeasurements, takeThePowerFactorIntoTheInputPowerOrDoNot)
{
    this->supply.tell({"[V1200.0]", "[I1002.0]", "[P10.50]", "[V5010.0]", "[I5010.0]"});
    const PsuInput input = this->input();
    EXPECT_FLOAT_EQ(input.outputPower, 100.0F);
    EXPECT_FLOAT_EQ(input.inputPower, TypeParam::isPsuCtrl ? 200.0F : 400.0F);
    EXPECT_FLOAT_EQ(input.efficiency, TypeParam::isPsuCtrl ? 50.0F : 25.0F);
}

TYPED_TEST(PsuMeasurements, giveNoEfficiencyWithoutInput)
{
    this->supply.tell({"[V5010.0]", "[I5010.0]", "[V1200.0]", "[P11.00]"});
    PsuInput input = this->input();
    EXPECT_FLOAT_EQ(input.outputPower, 100.0F);
    EXPECT_EQ(input.inputPower, 0.0F);
    EXPECT_EQ(input.efficiency, 0.0F);
    this->supply.tell({"[I1001.0]", "[P10.00]"});
    input = this->input();
    EXPECT_FLOAT_EQ(input.inputPower, TypeParam::isPsuCtrl ? 0.0F : 200.0F);
    EXPECT_FLOAT_EQ(input.efficiency, TypeParam::isPsuCtrl ? 0.0F : 50.0F);
}

TYPED_TEST(PsuMeasurements, mayShowMoreOutputThanInput)
{
    this->supply.tell({"[V1010.0]", "[I1001.0]", "[P11.00]", "[V6010.0]", "[I6002.5]"});
    EXPECT_FLOAT_EQ(this->input().efficiency, 250.0F);
}

TYPED_TEST(PsuMeasurements, addUpOverAllRails)
{
    constexpr const char* rails = "23456";
    for (int i = 0; i < 5; ++i) {
        SupplyOf<TypeParam> one;
        one.tell({std::string("[V") + rails[i] + "010.0]", std::string("[I") + rails[i] + "001.0]"});
        PsuInput input{};
        EXPECT_EQ(one->getInput(input), E_OK);
        EXPECT_FLOAT_EQ(input.outputPower, 10.0F) << rails[i];
        EXPECT_EQ(input.voltage, 0.0F);
    }
}

TYPED_TEST(PsuMeasurements, areReadDigitByDigit)
{
    struct Row {
        const char* text;
        float value;
    };
    for (const Row& row : {Row{"[T1000.0]", 0.0F}, Row{"[T1100.0]", 100.0F}, Row{"[T1020.0]", 20.0F},
                           Row{"[T1003.0]", 3.0F}, Row{"[T1000.4]", 0.4F}, Row{"[T1999.9]", 999.9F}}) {
        this->supply.tell({row.text});
        EXPECT_FLOAT_EQ(this->thermal(), row.value) << row.text;
    }
    for (const Row& row : {Row{"[P10.00]", 0.0F}, Row{"[P11.00]", 1.0F}, Row{"[P10.20]", 0.2F},
                           Row{"[P10.03]", 0.03F}, Row{"[P19.99]", 9.99F}}) {
        this->supply.tell({row.text});
        EXPECT_FLOAT_EQ(this->input().powerFactor, row.value) << row.text;
    }
    for (const Row& row : {Row{"[R10000]", 0.0F}, Row{"[R11000]", 1000.0F}, Row{"[R10200]", 200.0F},
                           Row{"[R10030]", 30.0F}, Row{"[R10004]", 4.0F}, Row{"[R19999]", 9999.0F}}) {
        this->supply.tell({row.text});
        EXPECT_EQ(this->fanSpeed(), row.value) << row.text;
    }
    for (const Row& row : {Row{"[V1100.0]", 100.0F}, Row{"[V1020.0]", 20.0F}, Row{"[V1003.0]", 3.0F},
                           Row{"[V1000.4]", 0.4F}, Row{"[V1999.9]", 999.9F}, Row{"[V1230.5]", 230.5F}}) {
        SupplyOf<TypeParam> one;
        one.tell({row.text});
        PsuInput input{};
        EXPECT_EQ(one->getInput(input), E_OK);
        EXPECT_FLOAT_EQ(input.voltage, row.value) << row.text;
    }
}

TYPED_TEST(PsuMeasurements, areMeansOfEachChannel)
{
    this->supply.tell(
        {"[V1229.0]", "[V1231.0]", "[V1233.0]", "[I1001.0]", "[I1002.0]", "[V2005.0]", "[V2005.4]"});
    EXPECT_FLOAT_EQ(this->input().voltage, 231.0F);
    EXPECT_FLOAT_EQ(this->input().current, 1.5F);
    EXPECT_FLOAT_EQ(this->output()[0], 5.2F);
    EXPECT_FLOAT_EQ(this->output()[1], 0.0F);
}

TYPED_TEST(PsuMeasurements, reachBackSeventeenSamples)
{
    for (int channel = 1; channel <= 6; ++channel)
        for (const char kind : {'V', 'I'}) {
            SupplyOf<TypeParam> one;
            const std::string head = std::string("[") + kind + std::to_string(channel);
            const auto mean = [&] {
                PsuInput input{};
                std::array<float, 10> rails{};
                PsuOutput output{};
                EXPECT_EQ(one->getInput(input), E_OK);
                EXPECT_EQ(one->getOutput(output), E_OK);
                std::memcpy(rails.data(), &output, sizeof output);
                if (channel == 1)
                    return kind == 'V' ? input.voltage : input.current;
                return rails[std::size_t(2 * (channel - 2) + (kind == 'V' ? 0 : 1))];
            };
            Texts texts{head + "027.0]"};
            texts.insert(texts.end(), 16, head + "010.0]");
            one.tell(texts);
            EXPECT_FLOAT_EQ(mean(), 11.0F) << head; // (27 + 16 times 10) by 17
            one.tell({head + "010.0]"});
            EXPECT_FLOAT_EQ(mean(), 10.0F) << head; // the oldest is gone
            one.tell(Texts(17, head + "012.0]"));
            EXPECT_FLOAT_EQ(mean(), 12.0F) << head;
        }
}

TYPED_TEST(PsuMeasurements, changeNothingWhenTheyAreMalformed)
{
    this->supply.tell(everything);
    const PsuInput input = this->input();
    const auto output = this->output();
    for (const char* text :
         {"[V0230.5]", "[V7230.5]", "[V8230.5]",     "[V9230.5]",  "[VA230.5]",  "[Va230.5]",
          "[V:230.5]", "[V/230.5]", "[V-230.5]",     "[V 230.5]",  "[I0001.0]",  "[I7001.0]",
          "[I9001.0]", "[IA001.0]", "[Vx230.5]", // channel
          "[V1x30.5]", "[V12x0.5]", "[V123x.5]",     "[V1230.x]",  "[V1 30.5]",  "[V1230.:]",
          "[V1/30.5]",                                                          // digits
          "[I1x01.0]", "[I10x1.0]", "[I100x.0]",     "[I1001.x]",  "[V1-10.5]", //
          "[V1230.5",  "[V1230.5)", "[V1230.5[",     "[I1001.0",   "[V1230.55]", "[V123.5]",
          "[V12305]",  "[V1]",                                                                 // bracket
          "[V",        "[",         "[V1230.5\x01]",                                           //
          "V1230.5]",  "(V1230.5]", "]V1230.5]",     " [V1230.5]", "{V1230.5]",  "[[V1230.5]", // beginning
          "[v1230.5]", "[i1001.0]", "[X1230.5]",     "[W1230.5]",  "[11230.5]",                // letter
          "[P1x.97]",  "[P10.x7]",  "[P10.9x]",      "[P10.97",    "[P10.97)",   "[P10.9]",
          "[P10.977]", "[p10.11]", //
          "[T1x41.5]", "[T10x1.5]", "[T104x.5]",     "[T1041.x]",  "[T1041.5",   "[T1041.5)",
          "[T141.5]", //
          "[R1x200]",  "[R11x00]",  "[R112x0]",      "[R1120x]",   "[R11200",    "[R11200)",
          "[R1200]",   "[R112000]"}) {
        this->supply.tell({text});
        const PsuInput now = this->input();
        EXPECT_EQ(std::memcmp(&now, &input, sizeof now), 0) << text;
        EXPECT_EQ(this->output(), output) << text;
        EXPECT_EQ(this->thermal(), 41.5F) << text;
        EXPECT_EQ(this->fanSpeed(), 1200) << text;
    }
}

TYPED_TEST(PsuMeasurements, surviveAnyBytes)
{
    this->supply.tell(everything);
    const PsuInput input = this->input();
    std::uint32_t noise = 0x2545F491;
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 30; ++i) {
            ByteVector report(17);
            for (std::uint8_t& byte : report) {
                noise = noise * 1664525 + 1013904223;
                byte = std::uint8_t((noise >> 24) | 0x80); // no text
            }
            if (i % 2 == 0)
                report[0] = '[';
            this->supply.device->send(hex(report));
        }
        this->supply.tell({});
    }
    sim::inject(this->supply.path, {});
    sim::inject(this->supply.path, {'['});
    sim::inject(this->supply.path, {'[', 'V', '1', '2'});
    this->supply.tell({});
    const PsuInput now = this->input();
    EXPECT_EQ(std::memcmp(&now, &input, sizeof now), 0);
}

/// A report of eight bytes lacks the bracket that an earlier one had in its place.
TYPED_TEST(PsuMeasurements, keepNothingOfAnEarlierReport)
{
    this->supply.tell({"[V1230.5]"});
    sim::inject(this->supply.path, {'[', 'V', '1', '1', '0', '0', '.', '0'});
    this->supply.tell({});
    EXPECT_FLOAT_EQ(this->input().voltage, 230.5F);
}

TYPED_TEST(PsuMeasurements, logTheFanSpeedWhereTheClassDoes)
{
    const Lines lines = debugLinesOf([&] {
        this->supply.tell({"[R11234]", "[R10060]", "[T1041.5]", "[R1x000]"});
    });
    const auto times = [&](const char* text) { return std::ranges::count(lines, ownLine<TypeParam>(text)); };
    const int once = TypeParam::isPsuCtrl ? 1 : 0;
    EXPECT_EQ(times("R1:fan_speed=1234"), once);
    EXPECT_EQ(times("R1:fan_speed=60"), once);
    EXPECT_EQ(std::ranges::count_if(
                  lines, [](const std::string& line) { return line.find("R1") != std::string::npos; }),
              2 * once);
}

TYPED_TEST(PsuMeasurements, areRefusedByAClosedObject)
{
    this->supply->exit_device(1);
    PsuInput input{};
    PsuOutput output{};
    float temperature = 5;
    EXPECT_EQ(this->supply->getInput(input), E_CLOSED);
    EXPECT_EQ(this->supply->getOutput(output), E_CLOSED);
    EXPECT_EQ(this->supply->getThermal(temperature), E_CLOSED);
    EXPECT_EQ(temperature, 5.0F);
}

TEST(PsuCtrlLog, holdsAllMeasurements)
{
    SupplyOf<PsuCtrlModel> supply;
    supply.tell({"[V1200.0]", "[I1002.0]", "[P10.50]", "[V5012.5]", "[I5008.0]", "[V2005.0]", "[I2003.0]",
                 "[V3003.5]", "[I3002.0]", "[V4012.0]", "[I4001.0]", "[V6012.0]", "[I6002.0]", "[T1041.5]",
                 "[R11200]"});
    PsuLog record;
    std::memset(&record, 0xEE, sizeof record);
    const Lines lines = debugLinesOf([&] { EXPECT_EQ(supply->getLog(record), E_OK); });
    std::array<float, 15> values{};
    std::memcpy(values.data(), &record, sizeof values);
    // 158 W: 100 at 12 V of the first rail, 15, 7, and 36 of the other two
    EXPECT_EQ(values, (std::array<float, 15>{200.0F, 2.0F, 200.0F, 158.0F, 12.5F, 8.0F, 100.0F, 5.0F, 3.0F,
                                             15.0F, 3.5F, 2.0F, 7.0F, 1200.0F, 41.5F}));
    Lines expected{hostLine<PsuCtrlModel>("getLog, #")};
    for (const char* text : {"TEMP=41.5", "VOUT_V12=12.5", ",IOUT_V12=8", ",POUT_V12=100", ",VOUT_V5=5",
                             ",IOUT_V5=3", ",POUT_V5=15", "VOUT_V3d3=3.5", ",IOUT_V3d3=2", ",POUT_V3d3=7",
                             ",speed=1200", ",P_IN=200", ",P_OUT=158", ",V_AC=200", "I_AC=2"})
        expected.push_back(ownLine<PsuCtrlModel>("getPsuCtrlDeviceLog") + text);
    expected.push_back(hostLine<PsuCtrlModel>("getLog, ret = 0"));
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(supply.asked(), "");
}

template <class Model>
void readerEndsAtTheThirtiethFailure()
{
    SupplyOf<Model> supply;
    const std::string line = Model::facts().reader;
    forgetDebugOutput();
    sim::setConduct(supply.path, {.readFailures = 29});
    std::uint8_t mode = 0;
    int attempts = 1;
    while (supply->getMultiRail(&mode) != E_OK && attempts < 10)
        ++attempts;
    EXPECT_GT(attempts, 2); // the reader pauses for 100 ms after each failure
    EXPECT_LT(attempts, 10);
    EXPECT_EQ(std::ranges::count(debugLines(), line), 0);
    sim::setConduct(supply.path, {.readFailures = 1});
    EXPECT_EQ(std::ranges::count(debugLinesWith(line), line), 1);
    // Now nobody reads what the supply says.
    EXPECT_EQ(supply->getMultiRail(&mode), E_INVALID_GET);
    supply.device->send(ascii("[T1041.5]"));
    float temperature = -1;
    EXPECT_EQ(supply->getThermal(temperature), E_OK);
    EXPECT_EQ(temperature, 0.0F);
}

TEST(PsuReader, endsAtTheThirtiethFailureOfVoltgrid)
{
    readerEndsAtTheThirtiethFailure<VoltgridModel>();
}

TEST(PsuReader, endsAtTheThirtiethFailureOfPsuCtrl)
{
    readerEndsAtTheThirtiethFailure<PsuCtrlModel>();
}

} // namespace
} // namespace pyrux::test
