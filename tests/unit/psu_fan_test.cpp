// The second that a supply's fan curve takes, on a clock that a test moves.

#include "devices/power/psuctrl.h"
#include "devices/power/voltgrid.h"
#include "simulator/bus.h"
#include "tests/support/debug_log.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scripted_device.h"
#include "tests/support/supply_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace pyrux::test {
namespace {

sim::Identity identity()
{
    sim::Identity one;
    one.pid = 0x0030;
    one.collections = {{-1, 0xFF00, 0x0001}};
    one.controlInterface = -1;
    return one;
}

template <class Supply>
class PsuFanOnAClock : public testing::Test {
protected:
    using Fan = typename Supply::Fan;
    static constexpr bool locks = std::is_same_v<Supply, PSUCTRL>;

    PsuFanOnAClock() : device(std::make_shared<ScriptedDevice>(identity())), path(sim::plug(device))
    {
        device->silence("");
        supply = std::make_unique<Supply>(path, clock);
        EXPECT_FALSE(supply->openFailed());
    }
    ~PsuFanOnAClock() override
    {
        sim::unplug(path);
        supply.reset();
    }

    static constexpr Fan curve{.mode = 5, .speed = 0, .points = {{30, 10}, {40, 30}, {60, 50}, {70, 70}}};
    static constexpr Fan builtIn{.mode = 2, .speed = 0, .points = {}};
    static constexpr const char* sequence = "[M5] | [m13002] | [m24004] | [m36006] | [m47008] | [M2]";

    FakeClock clock;
    std::shared_ptr<ScriptedDevice> device;
    std::string path;
    std::unique_ptr<Supply> supply;
};
using Supplies = testing::Types<VOLTGRID, PSUCTRL>;
TYPED_TEST_SUITE(PsuFanOnAClock, Supplies);

TYPED_TEST(PsuFanOnAClock, entersTheModeAgainAfterASecond)
{
    std::thread setting([&] { EXPECT_EQ(this->supply->setFan(this->curve), E_OK); });
    EXPECT_EQ(this->clock.settle(), 1000U);
    EXPECT_EQ(takeTexts(this->path), this->sequence);
    this->clock.advance(999);
    EXPECT_EQ(this->clock.settle(), 1U);
    EXPECT_EQ(takeTexts(this->path), "");
    this->clock.advance(1);
    setting.join();
    EXPECT_EQ(takeTexts(this->path), "[M5]");
    EXPECT_EQ(this->clock.slept(), 1000U);
}

TYPED_TEST(PsuFanOnAClock, doesNotPauseForABuiltInMode)
{
    EXPECT_EQ(this->supply->setFan(this->builtIn), E_OK);
    EXPECT_EQ(takeTexts(this->path), "[M2]");
    EXPECT_EQ(this->clock.slept(), 0U);
}

TYPED_TEST(PsuFanOnAClock, doesNotCrossWhereTheClassForbidsIt)
{
    this->device->answer(ascii("[MQ]"), ascii("[M3]"));
    std::thread setting([&] { EXPECT_EQ(this->supply->setFan(this->curve), E_OK); });
    EXPECT_EQ(this->clock.settle(), 1000U);
    EXPECT_EQ(takeTexts(this->path), this->sequence);
    typename TypeParam::Fan fan{.mode = 9, .speed = 0, .points = {}};
    const _error refused = this->locks ? E_INVALID_GET : E_OK;
    const Lines lines = debugLinesOf([&] {
        EXPECT_EQ(this->supply->setFan(this->builtIn), refused);
        EXPECT_EQ(this->supply->getFan(fan), refused);
    });
    EXPECT_EQ(takeTexts(this->path), this->locks ? "" : "[M2] | [MQ]");
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][AU_LINE_550_MULTI]this->lock_flag == 1"),
              this->locks ? 2 : 0);
    this->clock.advance(1000);
    setting.join();
    EXPECT_EQ(takeTexts(this->path), "[M5]");
    // The flag is gone.
    EXPECT_EQ(this->supply->getFan(fan), E_OK);
    EXPECT_EQ(fan.mode, 3);
    EXPECT_EQ(this->supply->setFan(this->builtIn), E_OK);
    EXPECT_EQ(takeTexts(this->path), "[MQ] | [M2]");
}

TYPED_TEST(PsuFanOnAClock, isHeldWhileACurveIsReplaced)
{
    this->device->answer(ascii("[MQ]"), ascii("[M5]"));
    for (const char* number : {"1", "2", "3", "4"})
        this->device->answer(ascii(std::string("[Q") + number + "]"),
                             ascii(std::string("[m") + number + "3002]"));
    typename TypeParam::Fan fan{};
    std::thread reading([&] { EXPECT_EQ(this->supply->getFan(fan), E_OK); });
    EXPECT_EQ(this->clock.settle(), 1000U);
    EXPECT_EQ(takeTexts(this->path), std::string("[MQ] | [Q1] | [Q2] | [Q3] | [Q4] | ") + this->sequence);
    EXPECT_EQ(this->supply->setFan(this->builtIn), this->locks ? E_INVALID_GET : E_OK);
    EXPECT_EQ(takeTexts(this->path), this->locks ? "" : "[M2]");
    this->clock.advance(1000);
    reading.join();
    EXPECT_EQ(takeTexts(this->path), "[M5]");
    EXPECT_EQ(fan.mode, 5);
    EXPECT_EQ(fan.points[1].temperature, 40);
}

} // namespace
} // namespace pyrux::test
