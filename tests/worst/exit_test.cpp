// The end of an object, from another thread, while a device that answers nothing keeps a call.

#include "tests/support/opened_device.h"
#include "tests/support/timing.h"
#include "tests/support/waiting_test.h"
#include "tests/worst/longest_calls.h"
#include "tests/worst/measure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <vector>

namespace pyrux::test {
namespace {

/// A model, and an operation that a silent device keeps for longer than the 2 s which the end gives it, or as long as
/// any of its operations.
struct Kept {
    const char* model;
    const char* operation;
    const char* command; ///< How what it sends first begins.
    bool cut;            ///< It does not come to an end by itself in time.
};
constexpr Kept kept[]{
    {"rd210", "getKeyMappingAll", "41 80", true},
    {"rd215", "getKeyMappingAll", "41 80", true},
    {"rd110", "getMacroAll", "41 80", true},
    {"qw210", "getKeyMappingAll", "41 80", true},
    {"qw220", "getKeyMappingAll", "41 80", true},
    {"glow_hub", "getVersion", "80 14", false},
    {"glow2", "getRGBEffectParameter", "80 0A", false},
    {"tint_hub", "getEffectStandardMode", "52 28", false},
    {"playdock", "getVersion", "80 B4", false},
    {"strandhub", "getVersion", "80 B4", false},
    {"strandhubv2", "getVersion", "80 B4", false},
};

const SlotTable& tableOf(const std::string& model)
{
    return *std::ranges::find(slotTables(), model, &SlotTable::model);
}

void endsInTime(const Kept& which)
{
    const ModelFacts& facts = factsOf(which.model);
    const SlotTable& table = tableOf(which.model);
    OpenedDevice<void> device(facts.factory, identityOf(facts), facts.prepare);
    sim::setConduct(device.path, {.silent = true});
    const std::size_t number = numberOf(table, which.operation);
    ByteVector memory(table.room, table.fill);
    auto call = std::async(std::launch::async,
                           [&] { return table.slots[number].call(device.host, number, memory.data()); });
    ASSERT_TRUE(device.device->awaitCommands(which.command)) << which.model;
    auto end = std::async(std::launch::async, [&] { callHook(device.host, Hook::exit, false); });
    std::intptr_t result = 0;
    const auto time = milliseconds([&] { result = call.get(); });
    EXPECT_LT(time, 2000 + 6000)
        << which.model; // far below what it would take, far above a busy machine's delay
    EXPECT_NE(result, 0) << which.model;
    EXPECT_TRUE(!which.cut || time > 1500) << which.model << " " << time; // it was given its time
    sim::unplug(device.path);                                             // which ends the goodbye
    end.get();
}

WAITING_TEST(ExitDevice, endsCallsWithinTwoSeconds)
{
    std::vector<std::function<void()>> scenarios;
    for (const Kept& which : kept)
        scenarios.emplace_back([&which] { endsInTime(which); });
    together(scenarios);
}

} // namespace
} // namespace pyrux::test
