// The longest time of every operation of every model, by what is wrong with the device, against the stated one.

#include "tests/worst/longest_calls.h"
#include "tests/worst/measure.h"

#include "models.h"
#include "worst_times.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pyrux::test {
namespace {

/// What pyruxctl states of a model.
const ctl::Model& statedOf(const std::string& model)
{
    return *ctl::findModel(model);
}

struct Column {
    const char* name;
    Trouble trouble;
    int ctl::WorstTimes::*stated;
};

constexpr Column columns[]{
    {"longest", Trouble::late, &ctl::WorstTimes::longest},
    {"silent", Trouble::silent, &ctl::WorstTimes::silent},
    {"stalled", Trouble::stalled, &ctl::WorstTimes::stalled},
    {"vanished", Trouble::vanished, &ctl::WorstTimes::vanished},
};

/// Operations that send nothing and that pyruxctl has no word for.
const std::set<std::string> unstated{"registerNotify", "unRegisterNotify", "registerSystemStatusNotify",
                                     "unRegisterSystemStatusNotify", "setLightingPortColor"};

class WorstTimes : public testing::TestWithParam<SlotTable> {
protected:
    int measured(Trouble trouble, const Slot& slot) const
    {
        int most = measuredCall(trouble, table, {slot, slot.call, slot.memory});
        if (const LongestCall* longer = longestOf(slot.name))
            most = std::max(most, measuredLongest(trouble, slot, *longer));
        return most;
    }

    const SlotTable& table = GetParam();
    const ctl::Model& stated = statedOf(table.model);

private:
    const LongestCall* longestOf(const std::string& operation) const
    {
        const auto& calls = longestCalls(table.model);
        const auto found = std::ranges::find(calls, operation, &LongestCall::operation);
        return found == calls.end() ? nullptr : &*found;
    }

    int measuredLongest(Trouble trouble, const Slot& slot, const LongestCall& longest) const
    {
        std::function<void(void*, Byte*)> before;
        if (!longest.before.empty())
            before = [&](void* host, Byte* memory) {
                const std::size_t number = numberOf(table, longest.before);
                const Slot& first = table.slots[number];
                const LongestCall* const longer = longestOf(longest.before);
                const ByteVector filled = bytes(longer ? longer->memory : first.memory);
                std::ranges::copy(filled, memory);
                (longer ? longer->call : first.call)(host, number, memory);
            };
        return longest.sameCall ? measuredCall(trouble, table, {slot, slot.call, slot.memory}, before)
                                : measuredCall(trouble, table, {slot, longest.call, longest.memory}, before);
    }
};
INSTANTIATE_TEST_SUITE_P(Models, WorstTimes, testing::ValuesIn(slotTables()),
                         [](const auto& each) { return each.param.model; });

TEST_P(WorstTimes, ofOperationsAreTheStatedOnes)
{
    for (const Slot& slot : table.slots) {
        const ctl::Operation* const operation = stated.findOperation(slot.name);
        EXPECT_TRUE(operation || unstated.contains(slot.name)) << slot.name;
        const ctl::WorstTimes times = worstTimes(stated.timing, operation ? operation->waits : ctl::Waits{});
        for (const Column& column : columns) {
            const int ms = measured(column.trouble, slot);
            EXPECT_LE(ms, times.*column.stated) << slot.name << " " << column.name;
            if (column.trouble == Trouble::late && isSumOnly(table.model, slot.name))
                continue;
            // The gap counts where a request has just gone out.
            EXPECT_GE(ms, times.*column.stated - stated.timing.gapMs) << slot.name << " " << column.name;
        }
    }
}

TEST_P(WorstTimes, endWhenTheLibraryIsToldThatTheDeviceHasGone)
{
    for (const Slot& slot : table.slots) {
        if (slot.sort == Sort::exit)
            continue; // it is on its way out already
        EXPECT_EQ(measured(Trouble::noticed, slot), 0) << slot.name;
    }
}

TEST_P(WorstTimes, ofFactoriesAreTheStatedOnes)
{
    const ctl::WorstTimes times = worstTimes(stated.timing, stated.timing.opening);
    const ModelFacts& facts = factsOf(table.model);
    EXPECT_EQ(measuredOpening(Trouble::late, facts), times.longest);
    EXPECT_EQ(measuredOpening(Trouble::silent, facts), times.silent);
    EXPECT_EQ(measuredOpening(Trouble::stalled, facts), times.stalled);
    EXPECT_EQ(measuredOpening(Trouble::vanished, facts), 0); // it is not there
}

TEST(WorstTimesPage, isWhatTheTablesSay)
{
    std::ifstream file(PYRUX_WORST_TIMES);
    std::stringstream page;
    page << file.rdbuf();
    EXPECT_EQ(page.str(), ctl::worstTimesTable());
}

/// A header, and the models whose operations it declares.
struct Header {
    const char* file;
    std::vector<const char*> models;
};
const std::vector<Header> headers{
    {"glow_hub.h", {"glow_hub"}},
    {"glow_hub2.h", {"glow2"}},
    {"led_mouse.h", {"rd110", "rd215", "rd230", "rd240"}},
    {"lighting.h",
     {"glow2", "glow_hub", "playdock", "rd110", "rd215", "rd230", "rd240", "strandhub", "strandhubv2",
      "tint_hub"}},
    {"play_dock.h", {"playdock"}},
    {"psuctrl.h", {"psuCtrl"}},
    {"qw_keyboard.h", {"qw210", "qw220"}},
    {"rd110.h", {"rd110"}},
    {"rd210.h", {"rd210"}},
    {"strandhub.h", {"strandhub", "strandhubv2"}},
    {"tint_hub.h", {"tint_hub"}},
    {"voltgrid.h", {"voltgrid"}},
};

/// The note that a header owes an operation: that of the model which takes longest. None where no model has it, and for
/// an `exit_device` without a goodbye.
std::string noteOf(const Header& header, const std::string& operation)
{
    bool found = false;
    ctl::WorstTimes most{};
    for (const char* model : header.models) {
        const ctl::Model& stated = statedOf(model);
        const ctl::Operation* const row = stated.findOperation(operation);
        if (!row)
            continue;
        found = true;
        const ctl::WorstTimes times = worstTimes(stated.timing, row->waits);
        most.longest = std::max(most.longest, times.longest);
        most.silent = std::max(most.silent, times.silent);
    }
    const std::string note = waitNote(most);
    if (operation != "exit_device")
        return found ? note : "";
    return most.longest > 0 ? "The goodbye w" + note.substr(1) : "";
}

TEST(WorstTimesNotes, standBeforeTheOperationsInTheHeaders)
{
    constexpr std::string_view declaration = "    virtual _error ";
    std::set<std::pair<std::string, std::string>> told; // model and operation
    for (const Header& header : headers) {
        std::ifstream file(std::string(PYRUX_HEADERS "/") + header.file);
        ASSERT_TRUE(file) << header.file;
        std::string line, before;
        for (; std::getline(file, line); before = line) {
            if (!line.starts_with(declaration))
                continue;
            const std::string operation =
                line.substr(declaration.size(), line.find('(') - declaration.size());
            for (const char* model : header.models)
                told.emplace(model, operation);
            if (const std::string note = noteOf(header, operation); !note.empty()) {
                EXPECT_EQ(before, "    /// @note " + note) << header.file << " " << operation;
            }
        }
    }
    for (const ctl::Model& model : ctl::models()) {
        if (model.identities.empty())
            continue; // the computer
        for (const ctl::Operation& operation : model.operations)
            EXPECT_TRUE(told.contains({std::string(model.command), std::string(operation.name)}))
                << model.command << " " << operation.name;
    }
}

} // namespace
} // namespace pyrux::test
