#include "worst_times.h"

#include "models.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace pyrux::ctl {

namespace {

constexpr int writeMs = 1000; // limit of a write

std::string inSeconds(int ms)
{
    if (ms % 1000 == 0)
        return std::to_string(ms / 1000);
    std::string digits = std::to_string(1000 + ms % 1000).substr(1);
    digits.erase(digits.find_last_not_of('0') + 1);
    return std::to_string(ms / 1000) + "." + digits;
}

std::string row(std::string_view name, const DeviceTiming& timing, const Waits& waits)
{
    const WorstTimes times = worstTimes(timing, waits);
    std::string text = "| " + std::string(name);
    for (const int number : {waits.all.requests, waits.all.writes})
        text += " | " + std::to_string(number);
    for (const int ms : {times.longest, times.silent, times.stalled, times.vanished})
        text += " | " + inSeconds(ms);
    return text + " |\n";
}

std::string rowsOf(const Model& model)
{
    std::string text = row("opening", model.timing, model.timing.opening);
    for (const Operation& operation : model.operations)
        text += row(operation.name, model.timing, operation.waits);
    return text;
}

constexpr std::string_view head = R"(# Longest times

How long each operation can keep its caller, in seconds. `script/bench --worst` prints this page from the numbers of
requests and plain writes in pyruxctl's tables; the tests measure every operation of every model against it.

A plain write takes 1 s at most. A request is a write, and a wait for its reply after that: 2 s with mice, 3 s with
keyboards, 1 s with lighting controllers and power supplies, 1.5 s with TINT HUB. The columns:

- longest: whatever the device does; each report is taken, and answered, at the last moment;
- silent: it takes everything and answers nothing; many operations give up at the first reply that is missing;
- stalled: it hangs in each write;
- vanished: it has gone, of which nobody has told the library. Its reader gives up after 3 s, and all waits with it. A
  device that is opened goes meanwhile; one that has gone before is not opened.

Once the library has been told that a device has gone, a call that waits ends at once, and later ones are refused.

Not in the table: a plain write or a request waits for those that other threads have under way. `exit_device` gives calls
that are inside 2 s to finish before it ends them, which takes up to 1 s more while a write of theirs hangs, and its
threads 0.15 s. `pyrux_exit` ends all open devices at the same time.
)";

} // namespace

WorstTimes worstTimes(const DeviceTiming& timing, const Waits& waits)
{
    const auto [all, unanswered] = waits;
    const int requestMs = writeMs + timing.replyMs;
    const int replies = unanswered.requests * timing.replyMs;
    const int gap = all.requests > 0 ? timing.gapMs : 0; // after the operation before
    const bool stops = timing.stopsAtWrite && unanswered.writes > 0;
    return {
        .longest = gap + all.requests * requestMs + all.writes * writeMs + all.pauseMs,
        .silent = gap + replies + unanswered.pauseMs,
        .stalled = gap + unanswered.requests * requestMs +
                   (stops ? writeMs : unanswered.writes * writeMs + unanswered.pauseMs),
        .vanished =
            unanswered.requests * timing.gapMs + std::min(replies, timing.readerMs) + unanswered.pauseMs,
    };
}

std::string waitNote(const WorstTimes& times)
{
    if (times.longest == 0)
        return "Does not wait.";
    const std::string longest = "Waits at most " + inSeconds(times.longest) + " s";
    if (times.silent == 0 || times.silent == times.longest)
        return longest + ".";
    return longest + ", " + inSeconds(times.silent) + " s for a device that answers nothing.";
}

std::string worstTimesTable()
{
    std::vector<std::pair<std::string, std::string>> sections; // names, rows
    for (const Model& model : models()) {
        if (model.identities.empty())
            continue;
        const std::string rows = rowsOf(model);
        const auto same = std::ranges::find(sections, rows, &std::pair<std::string, std::string>::second);
        if (same == sections.end())
            sections.emplace_back(model.command, rows);
        else
            same->first += ", " + std::string(model.command);
    }
    std::string text(head);
    for (const auto& [names, rows] : sections)
        text += "\n## " + names +
                "\n\n| operation | requests | writes | longest | silent | stalled | vanished |\n"
                "|---|---|---|---|---|---|---|\n" +
                rows;
    return text;
}

} // namespace pyrux::ctl
