// What holds for every model: the factory, the object's fields, the core's hooks, the end.

#include "simulator/models.h"
#include "tests/support/debug_log.h"
#include "tests/support/handles.h"
#include "tests/support/opened_device.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace pyrux::test {
namespace {

class EveryModel : public testing::TestWithParam<ModelFacts> {
protected:
    /// Lines of the factory's call, the constructor's and what comes after it.
    Lines madeLines(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> texts{"PYRUX::" + facts.factoryName + ", #",
                                       hostText(facts, facts.hostClass + ", #")};
        texts.insert(texts.end(), more.begin(), more.end());
        return linesOf(facts, texts);
    }

    const ModelFacts& facts = GetParam();
};
INSTANTIATE_TEST_SUITE_P(Models, EveryModel, testing::ValuesIn(models()),
                         [](const auto& each) { return each.param.factoryName; });

/// A model that is opened, for calls through its raw tables.
class Device : public OpenedDevice<void> {
public:
    explicit Device(const ModelFacts& facts)
        : OpenedDevice(facts.factory, identityOf(facts), facts.prepare), facts(facts)
    {
    }

    std::string sent() const { return facts.written(path, 0); }

private:
    const ModelFacts& facts;
};

TEST_P(EveryModel, hasOneObjectForAPath)
{
    const auto device = std::make_shared<ScriptedDevice>(identityOf(facts));
    facts.prepare(*device);
    if (facts.unanswered)
        device->silence(facts.unanswered);
    const std::string path = sim::plug(device);
    const int handles = settledHandles();
    void* host = nullptr;
    std::int64_t time = 0;
    EXPECT_EQ(debugLinesOf([&] { time = milliseconds([&] { host = facts.factory(path.c_str()); }); }),
              madeLines(facts.openingLines));
    EXPECT_LT(time, 1500);
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(facts.written(path, 0), wire(facts.opening));
    EXPECT_EQ(sim::openHandles(), handles + 2);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(facts.factory(path.c_str()), host); }),
              linesOf(facts, {"PYRUX::" + facts.factoryName + ", #", "return object already create"}));
    EXPECT_EQ(facts.written(path, 0), "");
    EXPECT_EQ(sim::openHandles(), handles + 2);
    sim::unplug(path);
    EXPECT_EQ(callHook(host, Hook::exit, true), 0);
    EXPECT_TRUE(awaitHandles(handles));
}

TEST_P(EveryModel, isNotThereWithoutADevice)
{
    const std::string gone = sim::plug(std::make_shared<ScriptedDevice>(identityOf(facts)));
    sim::unplug(gone);
    const int handles = settledHandles();
    Lines expected = madeLines();
    expected.emplace_back("[PYRUX]init fail");
    for (const std::string& line : linesOf(facts, {hostText(facts, "~" + facts.hostClass + ", #")}))
        expected.push_back(line);
    for (const char* path : {static_cast<const char*>(nullptr), "", "no such path", gone.c_str()})
        EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(facts.factory(path), nullptr); }), expected)
            << (path ? path : "null");
    EXPECT_EQ(facts.written(gone, 0), "");
    EXPECT_TRUE(awaitHandles(handles));
}

TEST_P(EveryModel, isSimulated)
{
    const auto firmware = sim::makeFirmware(facts.factoryName);
    ASSERT_NE(firmware, nullptr);
    EXPECT_EQ(firmware->identity().vid, 0x3A7E);
    EXPECT_EQ(firmware->identity().pid, facts.pid);
    EXPECT_EQ(firmware->identity().controlInterface, facts.interface);
    const std::string path = sim::plug(firmware);
    void* const host = facts.factory(path.c_str());
    sim::unplug(path);
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(callHook(host, Hook::exit, true), 0);
}

TEST_P(EveryModel, hasItsFieldsAfterTwoTables)
{
    Device device(facts);
    const RawHost& host = rawHost(device.host);
    EXPECT_EQ(host.openFailed, 0);
    EXPECT_NE(host.device, nullptr);
    EXPECT_EQ(host.closed, 0);
}

TEST_P(EveryModel, doesNothingInTheHooksThatTheCoreDoesNotCall)
{
    Device device(facts);
    EXPECT_EQ(debugLinesOf([&] {
                  for (const Hook hook : {Hook::preInit, Hook::postInit, Hook::postExit})
                      EXPECT_EQ(callHook(device.host, hook, true), 0);
              }),
              Lines{});
    EXPECT_EQ(rawHost(device.host).closed, 0);
    EXPECT_EQ(device.sent(), "");
}

TEST_P(EveryModel, isEndedByTheCoreInTwoSteps)
{
    Device device(facts);
    const RawHost& host = rawHost(device.host);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callHook(device.host, Hook::preExit, true), 0); }),
              linesOf(facts, {hostText(facts, "device_pre_exit, #")}));
    EXPECT_EQ(host.closed, 1);
    EXPECT_NE(host.device, nullptr); // the protocol object is still there
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callHook(device.host, Hook::exit, true), 0); }),
              linesOf(facts, {"exit devie " + facts.model + " by probe", hostText(facts, "exit_device, #")}));
    EXPECT_EQ(host.openFailed, 0);
    EXPECT_EQ(host.closed, 1);
    EXPECT_EQ(device.sent(), "");
}

TEST_P(EveryModel, saysGoodbyeToADeviceThatIsThere)
{
    const int handles = settledHandles();
    Device device(facts);
    EXPECT_EQ(callHook(device.host, Hook::preExit, false), 0);
    // The end does not test `closed`: it works after device_pre_exit.
    EXPECT_EQ(callHook(device.host, Hook::exit, false), 0);
    EXPECT_EQ(device.sent(), wire(facts.goodbye));
    EXPECT_EQ(callHook(device.host, Hook::exit, false), 0);
    EXPECT_EQ(device.sent(), "");
    EXPECT_TRUE(awaitHandles(handles));
}

/// The exports that give no device object.
const std::set<std::string> plainExports{
    "pyrux_init",     "pyrux_exit", "pyrux_background",  "pyrux_version", "dprintf",      "devNums",
    "devInfo",        "sysInfo",    "registerDevNotify", "getBTVersion",  "getDGVersion", "getDriverVersion",
    "fakeTempEnable", "getSysTemp", "getSysCore",        "getVersion",    "fakeTempStep"};

/// The names of all rows, and others.
std::set<std::string> namesAnd(std::set<std::string> others)
{
    for (const ModelFacts& facts : models())
        EXPECT_TRUE(others.insert(facts.factoryName).second) << facts.factoryName;
    return others;
}

TEST(Models, areAllThatTheLibraryExports)
{
    std::istringstream list(PYRUX_EXPORTS); // what the public headers declare
    EXPECT_EQ((std::set<std::string>{std::istream_iterator<std::string>(list), {}}), namesAnd(plainExports));
}

TEST(Models, areAllThatTheSimulatorHas)
{
    const std::vector<std::string> simulated = sim::firmwareNames();
    EXPECT_TRUE(std::ranges::is_sorted(simulated));
    EXPECT_EQ(std::set(simulated.begin(), simulated.end()),
              namesAnd({"au_line_550_single", "au_line_650_multi", "au_line_650_single", "au_line_750_multi",
                        "au_line_750_single", "au_line_850_multi", "au_line_850_single", "pt_line_650_multi",
                        "pt_line_750_multi", "pt_line_850_multi", "silent_1300"}));
}

} // namespace
} // namespace pyrux::test
