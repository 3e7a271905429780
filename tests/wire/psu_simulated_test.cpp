// The power supplies against their firmware models: means come out, what is set reads back.

#include "simulator/models.h"
#include "simulator/models/power_supply.h"
#include "tests/support/supply.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Measurements = sim::PowerSupplyFirmware::Measurements;

/// A supply that sends what a test lets it.
template <class Model>
class SimulatedSupplyOf {
public:
    explicit SimulatedSupplyOf(const std::string& model = Model::isPsuCtrl ? "psuCtrl" : "voltgrid",
                               std::chrono::milliseconds pause = 0ms)
        : device(std::dynamic_pointer_cast<sim::PowerSupplyFirmware>(sim::makeFirmware(model)))
    {
        device->setPause(pause);
        path = sim::plug(device);
        host = Model::factory(path.c_str());
        EXPECT_NE(host, nullptr);
    }
    ~SimulatedSupplyOf()
    {
        sim::unplug(path);
        host->exit_device(1);
    }
    SimulatedSupplyOf(const SimulatedSupplyOf&) = delete;
    SimulatedSupplyOf& operator=(const SimulatedSupplyOf&) = delete;

    /// The supply sends rounds, and the host has read them when this returns.
    void sendRounds(int count)
    {
        for (int i = 0; i < count; ++i) {
            device->sendRound();
            std::uint8_t mode = 0;
            EXPECT_EQ(host->getMultiRail(&mode), E_OK); // its reply comes after
        }
    }

    PsuInput input()
    {
        PsuInput record{};
        EXPECT_EQ(host->getInput(record), E_OK);
        return record;
    }

    typename Model::Interface* operator->() const { return host; }

    std::shared_ptr<sim::PowerSupplyFirmware> device;
    std::string path;
    typename Model::Interface* host = nullptr;
};

template <class Model>
class SimulatedSupply : public testing::Test {
protected:
    SimulatedSupplyOf<Model> supply;
};
TYPED_TEST_SUITE(SimulatedSupply, SupplyModels, ModelName);

TYPED_TEST(SimulatedSupply, tellsTheMeansOfItsMeasurements)
{
    const Measurements low{{2290, 50, 33, 120, 118, 121}, {10, 60, 20, 30, 100, 5}, 97, 400, 1000};
    const Measurements high{{2310, 52, 35, 124, 122, 123}, {14, 80, 40, 50, 140, 7}, 98, 415, 1200};
    this->supply.device->setMeasurements(low);
    this->supply.sendRounds(3);
    this->supply.device->setMeasurements(high);
    this->supply.sendRounds(3);
    const PsuInput input = this->supply.input();
    EXPECT_FLOAT_EQ(input.voltage, 230.0F);
    EXPECT_FLOAT_EQ(input.current, 1.2F);
    EXPECT_FLOAT_EQ(input.powerFactor, 0.98F);
    PsuOutput output{};
    EXPECT_EQ(this->supply->getOutput(output), E_OK);
    std::array<float, 10> rails{};
    std::memcpy(rails.data(), &output, sizeof output);
    const std::array<float, 10> means{5.1F, 7.0F, 3.4F, 3.0F, 12.2F, 4.0F, 12.0F, 12.0F, 12.2F, 0.6F};
    for (std::size_t i = 0; i < means.size(); ++i)
        EXPECT_FLOAT_EQ(rails[i], means[i]) << i;
    EXPECT_FLOAT_EQ(input.outputPower, 246.02F); // 35.7 + 10.2 + 48.8 + 144 + 7.32
    EXPECT_FLOAT_EQ(input.inputPower, TypeParam::isPsuCtrl ? 270.48F : 276.0F);
    float temperature = 0;
    EXPECT_EQ(this->supply->getThermal(temperature), E_OK);
    EXPECT_FLOAT_EQ(temperature, 41.5F);
    typename TypeParam::Fan fan{};
    EXPECT_EQ(this->supply->getFan(fan), E_OK);
    EXPECT_EQ(fan.speed, 1200);
    EXPECT_EQ(fan.mode, 1);
    this->supply.sendRounds(17); // the low ones are gone
    EXPECT_FLOAT_EQ(this->supply.input().voltage, 231.0F);
}

TYPED_TEST(SimulatedSupply, neverGivesMoreThanItTakes)
{
    for (int i = 0; i < 130; ++i) {
        this->supply.sendRounds(1);
        const PsuInput input = this->supply.input();
        EXPECT_GT(input.outputPower, 80.0F);
        EXPECT_GT(input.efficiency, 60.0F);
        EXPECT_LT(input.efficiency, 100.0F);
    }
}

TYPED_TEST(SimulatedSupply, keepsModes)
{
    for (const std::uint8_t mode : {2, 3, 1}) {
        EXPECT_EQ(this->supply->setMultiRail(mode), E_OK);
        std::uint8_t rail = 0;
        EXPECT_EQ(this->supply->getMultiRail(&rail), E_OK);
        EXPECT_EQ(rail, mode);
        EXPECT_EQ(this->supply.device->railMode(), mode);
    }
    for (const std::uint8_t mode : {4, 3, 2, 1}) {
        typename TypeParam::Fan fan{};
        fan.mode = mode;
        EXPECT_EQ(this->supply->setFan(fan), E_OK);
        fan.mode = 0;
        EXPECT_EQ(this->supply->getFan(fan), E_OK);
        EXPECT_EQ(fan.mode, mode);
    }
}

TYPED_TEST(SimulatedSupply, sendsByItself)
{
    const SimulatedSupplyOf<TypeParam> other(TypeParam::isPsuCtrl ? "silent_1300" : "voltgrid", 1ms);
    sim::takeTraffic(other.path, 40);
    std::uint8_t mode = 0;
    EXPECT_EQ(other->getMultiRail(&mode), E_OK);
    PsuInput input{};
    EXPECT_EQ(other->getInput(input), E_OK);
    EXPECT_GT(input.outputPower, 50.0F);
    EXPECT_GT(input.efficiency, 60.0F);
    EXPECT_LT(input.efficiency, 100.0F);
}

/// Runs a scenario for both classes at once.
template <template <class> class Scenario>
void both()
{
    together({Scenario<VoltgridModel>{}, Scenario<PsuCtrlModel>{}});
}

template <class Model>
struct KeepsACurve {
    void operator()() const
    {
        SimulatedSupplyOf<Model> supply;
        typename Model::Fan fan{.mode = 5, .speed = 0, .points = {{20, 5}, {40, 45}, {50, 89}, {65, 95}}};
        EXPECT_EQ(supply->setFan(fan), E_OK);
        using Curve = sim::PowerSupplyFirmware::Curve;
        EXPECT_EQ(supply.device->curve(), (Curve{{{20, 0}, {40, 40}, {50, 80}, {65, 100}}}));
        EXPECT_EQ(supply.device->fanMode(), 5);
        typename Model::Fan got{};
        EXPECT_EQ(supply->getFan(got), E_OK);
        EXPECT_EQ(got.mode, 5);
        constexpr int expected[4][2]{{20, 0}, {40, 40}, {50, 80}, {65, 100}};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(got.points[i].temperature, expected[i][0]);
            EXPECT_EQ(got.points[i].speed, expected[i][1]);
        }
        // A curve that cannot be is replaced in the device too.
        fan.points[1].temperature = 20;
        EXPECT_EQ(supply->setFan(fan), E_OK);
        EXPECT_EQ(supply->getFan(got), E_OK);
        EXPECT_EQ(got.points[0].temperature, 30);
        EXPECT_EQ(got.points[3].speed, 70);
        EXPECT_EQ(supply.device->curve(), (Curve{{{30, 10}, {40, 30}, {60, 50}, {70, 70}}}));
    }
};

WAITING_TEST(SimulatedSupplyFan, keepsItsCurve)
{
    both<KeepsACurve>();
}

template <class Model>
struct HasAVersion {
    void operator()() const
    {
        SimulatedSupplyOf<Model> supply;
        std::uint8_t family = 9, major = 9, minor = 9;
        EXPECT_EQ(supply->getVersion(&family, &major, &minor), E_OK);
        EXPECT_EQ(family, Model::isPsuCtrl ? 0 : 1);
        EXPECT_EQ(major, 1);
        EXPECT_EQ(minor, Model::isPsuCtrl ? 2 : 3);
    }
};

WAITING_TEST(SimulatedSupplyVersion, isRead)
{
    both<HasAVersion>();
}

} // namespace
} // namespace pyrux::test
