#pragma once

#include "core/boundary.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace pyrux {

/// Category of the core, the services and everything that has no device: "[SYS]".
constexpr int systemCategory = 0;

/// A category that no line of ours is shown under.
constexpr int noCategory = -1;

/// 0: the log is off. Set by the debug console.
inline std::atomic<std::int32_t> debugEnabled{1};

/// Where log lines go: 1 debug output, 2 standard output, anything else the log file. Set by the debug
/// console.
inline std::atomic<std::int32_t> debugType{1};

/// Tag of a category, such as "[RD210]"; false and "[UNKNW]" for a category without one.
bool categoryTag(int category, std::string& tag);

/// Writes one line of the log: tag and text, to the sink that `debugType` selects. Lines of a category
/// without a tag are dropped. Safe from any thread; never fails.
void log(int category, std::string_view text);

/// Writes one line of the log; `text` is called only while the log is on. Likewise never fails.
template <class Text>
requires requires(Text text)
{
    std::string_view(text());
}
void log(int category, Text&& text)
{
    if (debugEnabled.load(std::memory_order_relaxed))
        attempt([&] { log(category, std::string_view(std::forward<Text>(text)())); });
}

/// The log line of a function: its full name, in two pieces where one is not the same for all, and the source
/// line.
void logCall(int category, std::string_view name, int line);
void logCall(int category, std::string_view head, std::string_view name, int line);

/// Writes a text to the debug output after "[PYRUX]", whatever the log's settings. Never fails.
void debugText(std::string_view text);

/// Writes one line to the standard output, at once. A reader that does not read is waited for at most 100 ms.
/// Never fails.
void consoleLine(std::string_view text);

} // namespace pyrux
