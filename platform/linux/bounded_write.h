#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace pyrux::platform {

enum class Written {
    all,
    none, ///< The reader has not made room.
    cut,  ///< The same, after a part.
    lost, ///< There is no reader any more, or the system refuses.
};

/// Writes to a file of any kind, and waits at most `limit` for a pipe, a terminal or a socket that has no
/// room. The file keeps its flags, which it may share with other processes. A reader that has gone raises no
/// signal.
Written writeWithin(int descriptor, std::string_view bytes, std::chrono::milliseconds limit);

/// Writes lines as a whole: one that was cut short is ended before the next.
class LineWriter {
public:
    Written put(int descriptor, std::string_view line, std::chrono::milliseconds limit);

private:
    std::atomic<bool> cut{false};
};

/// Counts the texts that a reader has not made room for.
class Losses {
public:
    /// Hands a text to `write`, which tells whether there was room for it; in front of it the number of those
    /// that have been lost.
    template <class Write>
    void put(const std::string& text, Write&& write)
    {
        const unsigned long before = count.exchange(0);
        if (before > 0 && !write("[PYRUX]lost " + std::to_string(before) + " lines"))
            count += before + 1;
        else if (!write(text))
            ++count;
    }

private:
    std::atomic<unsigned long> count{0};
};

} // namespace pyrux::platform
