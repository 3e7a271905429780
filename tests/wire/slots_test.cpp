// The boundary: the slots of every model's virtual table, against lists that the library has no part in.

#include "tests/support/debug_log.h"
#include "tests/support/isolated.h"
#include "tests/support/opened_device.h"
#include "tests/support/slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

/// A model that is opened, for calls through its raw tables.
class Device : public OpenedDevice<void> {
public:
    explicit Device(const SlotTable& table, const Prepare& prepare = {})
        : OpenedDevice(factsOf(table.model).factory, identityOf(factsOf(table.model)),
                       [&](ScriptedDevice& device) {
                           factsOf(table.model).prepare(device);
                           if (table.prepare)
                               table.prepare(device);
                           if (prepare)
                               prepare(device);
                       })
    {
    }
};

ByteVector filled(const SlotTable& table, const std::string& begin)
{
    ByteVector memory = bytes(begin);
    memory.resize(table.room, table.fill);
    return memory;
}

/// Memory without what fills its end.
std::string told(const SlotTable& table, ByteVector memory)
{
    while (!memory.empty() && memory.back() == table.fill)
        memory.pop_back();
    return hex(memory);
}

/// Entries that an end of the object is: a closed one is not asked by them.
bool ends(const Slot& slot)
{
    return slot.sort == Sort::exit || slot.sort == Sort::destructor;
}

/// What an entry of a closed object answers.
std::intptr_t closedResult(const Slot& slot)
{
    return slot.sort == Sort::lone ? slot.result : -11;
}

std::size_t exitOf(const SlotTable& table)
{
    return std::size_t(std::ranges::find(table.slots, Sort::exit, &Slot::sort) - table.slots.begin());
}

/// Calls all entries of a closed object but the ends.
void expectClosed(const SlotTable& table, void* host)
{
    const ModelFacts& facts = factsOf(table.model);
    std::vector<std::string> logged;
    const Lines lines = debugLinesOf([&] {
        for (std::size_t number = 0; number < table.slots.size(); ++number) {
            const Slot& slot = table.slots[number];
            if (ends(slot))
                continue;
            ByteVector memory = filled(table, slot.memory);
            EXPECT_EQ(slot.call(host, number, memory.data()), closedResult(slot)) << slot.name;
            EXPECT_EQ(told(table, memory), told(table, filled(table, slot.memory))) << slot.name;
            if (slot.sort == Sort::logged)
                logged.push_back(hostText(facts, slot.name + ", #"));
        }
    });
    EXPECT_EQ(lines, linesOf(facts, logged));
}

class Slots : public testing::TestWithParam<SlotTable> {
protected:
    const SlotTable& table = GetParam();
    const ModelFacts& facts = factsOf(table.model);
};
INSTANTIATE_TEST_SUITE_P(Models, Slots, testing::ValuesIn(slotTables()),
                         [](const auto& each) { return each.param.model; });

TEST_P(Slots, standInTheListedOrder)
{
    ASSERT_EQ(table.slots.size(), facts.slots);
    for (std::size_t number = 0; number < table.slots.size(); ++number) {
        const Slot& slot = table.slots[number];
        Device device(table, slot.prepare);
        if (table.begin)
            table.begin(*device.device, device.host);
        facts.written(device.path, 0);
        ByteVector memory = filled(table, slot.memory);
        std::intptr_t result = -1;
        const Lines lines = debugLinesOf([&] { result = slot.call(device.host, number, memory.data()); });
        EXPECT_EQ(result, slot.result) << slot.name;
        if (slot.sort == Sort::destructor) {
            device.release();
            continue;
        }
        std::vector<std::string> texts;
        if (slot.sort == Sort::logged || slot.sort == Sort::exit)
            texts.push_back(hostText(facts, slot.name + ", #"));
        texts.insert(texts.end(), slot.between.begin(), slot.between.end());
        if (slot.sort == Sort::logged)
            texts.push_back(hostText(facts, slot.name + ", ret = " + std::to_string(slot.result)));
        EXPECT_EQ(lines, linesOf(facts, texts)) << slot.name;
        const std::string written = facts.written(device.path, reports(slot.written).size());
        if (table.lanes)
            EXPECT_EQ(sortedGroups(written), sortedGroups(wire(slot.written))) << slot.name;
        else
            EXPECT_EQ(written, wire(slot.written)) << slot.name;
        EXPECT_EQ(told(table, memory),
                  told(table, filled(table, slot.after.empty() ? slot.memory : slot.after)))
            << slot.name;
    }
}

TEST_P(Slots, allAnswerThatTheObjectIsClosed)
{
    Device device(table);
    const std::size_t exit = exitOf(table);
    ASSERT_LT(exit, table.slots.size());
    EXPECT_EQ(callEntry(device.host, exit, Byte{1}), 0);
    EXPECT_EQ(rawHost(device.host).openFailed, 0);
    EXPECT_EQ(rawHost(device.host).closed, 1);
    expectClosed(table, device.host);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(device.host, exit, Byte{0}), 0); }),
              linesOf(facts, {hostText(facts, table.slots[exit].name + ", #")}));
    EXPECT_EQ(facts.written(device.path, 0), "");
}

TEST_P(Slots, allAnswerSoWhileTheCoreEndsTheObject)
{
    Device device(table);
    EXPECT_EQ(callHook(device.host, Hook::preExit, true), 0);
    expectClosed(table, device.host);
    EXPECT_EQ(callHook(device.host, Hook::exit, true), 0);
    expectClosed(table, device.host);
    EXPECT_EQ(facts.written(device.path, 0), "");
}

/// The tables against the models.
TEST(SlotTables, areThereForEveryModel)
{
    std::vector<std::string> expected, found;
    for (const ModelFacts& facts : models())
        expected.push_back(facts.factoryName);
    for (const SlotTable& table : slotTables())
        found.push_back(table.model);
    std::ranges::sort(expected);
    std::ranges::sort(found);
    EXPECT_EQ(found, expected);
}

ISOLATED_TEST(SlotTables, answerThatTheDevicesHaveGone)
{
    pyrux_background(1); // no control application is told
    pyrux_init();
    // Left as they are: the core ends them while the process does.
    static auto& devices = *new std::vector<Device*>;
    for (const SlotTable& table : slotTables())
        devices.push_back(new Device(table));
    for (Device* device : devices)
        sim::unplug(device->path);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const SlotTable& table = slotTables()[i];
        void* const host = devices[i]->host;
        const std::atomic_ref closed(rawHost(host).closed);
        while (!closed && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        ASSERT_EQ(closed, 1) << table.model;
        for (std::size_t number = 0; number < table.slots.size(); ++number) {
            const Slot& slot = table.slots[number];
            if (ends(slot))
                continue;
            ByteVector memory = filled(table, slot.memory);
            EXPECT_EQ(slot.call(host, number, memory.data()), closedResult(slot))
                << table.model << " " << slot.name;
        }
    }
}

} // namespace
} // namespace pyrux::test
