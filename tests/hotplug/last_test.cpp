#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "tests/hotplug/hotplug_host.h"
#include "transport/device_closer.h"
#include "transport/hotplug.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using Clock = std::chrono::steady_clock;

/// The end of the library, which comes once per process: the other tests run in front of it.
class EndOfTheLibrary : public testing::Environment {
public:
    void TearDown() override
    {
        HotplugHost host;
        const std::string staying = sim::plug(sim::makeFirmware("rd210"));
        const std::string leaving = sim::plug(sim::makeFirmware("rd210"));
        EXPECT_EQ(host.take(2).size(), 2U);
        PYRUX_RD210_Base* mouse = rd210(staying.c_str());
        PYRUX_RD210_Base* gone = rd210(leaving.c_str());
        ASSERT_TRUE(mouse && gone);
        sim::unplug(leaving);
        EXPECT_EQ(host.take(1).size(), 1U);
        const auto start = Clock::now();
        pyrux_exit(); // with a delayed exit under way
        EXPECT_LT(Clock::now() - start, 3s);
        EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
        EXPECT_EQ(gone->changeProfileId(1), E_CLOSED);
        EXPECT_TRUE(DeviceCloser::instance().waitUntilIdle(10s));
        EXPECT_EQ(sim::openHandles(), 0);
        // Nobody listens any more.
        sim::unplug(staying);
        EXPECT_FALSE(notifyLinkChange(staying, 0x3A7E, 0x0171));
        EXPECT_TRUE(host.take(1, 50ms).empty());
    }
};

[[maybe_unused]] const auto* const atTheEnd = testing::AddGlobalTestEnvironment(new EndOfTheLibrary);

} // namespace
