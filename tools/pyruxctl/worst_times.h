#pragma once

#include <string>

/// @file
/// How long operations can take: what each one waits for is data, and the times follow from it.

namespace pyrux::ctl {

/// What a device can hold up.
struct Steps {
    int requests = 0; ///< Reports whose reply is waited for.
    int writes = 0;   ///< Reports that are only written. Frames that go through a queue hold nobody up.
    int pauseMs = 0;  ///< Pauses of the operation's own.
};

struct Waits {
    Steps all{};        ///< At most, with a device that answers.
    Steps unanswered{}; ///< With a device that answers nothing, which an operation may give up on.
};

/// What the operations of a model have in common.
struct DeviceTiming {
    int replyMs = 0;     ///< Limit of a reply.
    int gapMs = 0;       ///< Least time between requests.
    int readerMs = 3000; ///< Until the reader of a device that has gone gives up, and all waits with it.
    bool stopsAtWrite = false; ///< An operation ends at the first write that is not taken.
    Waits opening{};           ///< Of the factory.
};

/// The longest times of an operation, in ms, by what is wrong with the device.
struct WorstTimes {
    int longest;  ///< Whatever is wrong with it: each report is taken and answered at the last moment.
    int silent;   ///< It takes everything and answers nothing.
    int stalled;  ///< It hangs in each write for longer than the library waits.
    int vanished; ///< It has gone, and the library has not been told.
};

/// A device that has gone, of which the library has been told, takes no time.
WorstTimes worstTimes(const DeviceTiming& timing, const Waits& waits);

/// The times in the words of the headers: "Waits at most 6 s, 4 s for a device that answers nothing."
std::string waitNote(const WorstTimes& times);

/// All operations' times, as the manual shows them: Markdown.
std::string worstTimesTable();

} // namespace pyrux::ctl
