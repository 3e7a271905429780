#include "services/hardware_names.h"

#include "core/log.h"
#include "platform/threads.h"

#include <array>
#include <atomic>
#include <charconv>
#include <exception>
#include <sstream>
#include <string_view>
#include <thread>

namespace pyrux {
namespace {

using platform::Hardware;
using platform::HardwareFacts;

/// What is said when one of the three steps to the system's answer fails, and in front of the error code.
/// No text: nothing, and no code.
struct StepTexts {
    std::array<std::string_view, 3> steps;
    std::string_view code;
};

// The two wordings are as hosts and technicians know them.
constexpr StepTexts wordy{{"Failed to create IWbemLocator object.", "Fail to connect Server", ""},
                          "Err code = 0x"};
constexpr StepTexts terse{{"fail CoCreateInstance", "fail ConnectServer", "fail ExecQuery"},
                          "error code = 0x"};

struct Task {
    Hardware part;
    const StepTexts& texts;
    std::string_view failed;   ///< The question failed.
    std::string_view nameless; ///< There was no name in the answer. No text: that is none of our business.
};

constexpr std::array tasks{std::to_array<Task>({
    {Hardware::cpu, wordy, "Fail to get cpu info", "Fail to get cpu name"},
    {Hardware::board, terse, "Fail to get motherboard info", ""},
    {Hardware::memory, terse, "Fail to get ram info", ""},
    {Hardware::gpu, wordy, "Fail to get gpu info", "Fail to get gpu name"},
})};

void tell(std::string_view text)
{
    consoleLine("[PYRUX]" + std::string(text));
    debugText(text);
}

void tellFailure(const Task& task, const HardwareFacts& facts)
{
    const std::string_view step = task.texts.steps[static_cast<std::size_t>(facts.failure) - 1];
    if (!step.empty()) {
        tell(step);
        std::ostringstream code;
        code << task.texts.code << std::hex << facts.code;
        tell(code.str());
    }
    tell(task.failed);
}

/// A text of the answer; empty after its end.
std::string textOf(const HardwareFacts& facts, std::size_t index)
{
    return index < facts.texts.size() ? facts.texts[index] : std::string();
}

void tellTrouble(const Task& task, const HardwareFacts& facts)
{
    if (facts.failure != HardwareFacts::Failure::none)
        tellFailure(task, facts);
    else if (!task.nameless.empty() && textOf(facts, 0).empty())
        tell(task.nameless);
}

std::int32_t gibibytes(const std::string& bytes)
{
    std::uint64_t number = 0;
    std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
    return static_cast<std::int32_t>(number >> 30);
}

using Answers = std::array<HardwareFacts, tasks.size()>;

/// Asks for all parts at once. False: a question could not be asked, or not be answered.
bool askAll(const AskHardware& ask, Answers& answers)
{
    std::atomic<bool> answered{true};
    std::array<std::thread, tasks.size()> threads;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        threads[i] = platform::startThread([&, i] {
            try {
                answers[i] = ask(tasks[i].part);
            } catch (const std::exception&) {
                answered = false;
            }
        });
        if (!threads[i].joinable())
            answered = false;
    }
    for (std::thread& thread : threads)
        if (thread.joinable())
            thread.join();
    return answered;
}

} // namespace

_error collectHardwareNames(const AskHardware& ask, SysHardwareNames& names)
{
    Answers answers;
    if (!askAll(ask, answers)) {
        log(systemCategory, "cannot get the system info");
        return E_INVALID_GET;
    }
    for (std::size_t i = 0; i < tasks.size(); ++i)
        tellTrouble(tasks[i], answers[i]);
    const auto& [cpu, board, memory, gpu] = answers;
    names = {.cpuName = textOf(cpu, 0),
             .gpuName = textOf(gpu, 0),
             .ramManufacturer = textOf(memory, 0),
             .ramModel = textOf(memory, 1),
             .ramCapacityGiB = gibibytes(textOf(memory, 2)),
             .boardManufacturer = textOf(board, 0),
             .boardProduct = textOf(board, 1)};
    return E_OK;
}

} // namespace pyrux
