#include "tests/support/debug_log.h"

#include "tests/support/scripted_mouse.h"
#include "tests/support/system.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

std::vector<std::string> kept;

std::string withoutSourceLine(std::string line)
{
    const std::size_t comma = line.rfind(", ");
    if (comma != std::string::npos && comma + 2 < line.size() &&
        line.find_first_not_of("0123456789", comma + 2) == std::string::npos && line.substr(comma + 2) != "0")
        line.replace(comma + 2, std::string::npos, "#");
    return line;
}

void fetch()
{
    for (std::string& line : takeDebugOutput())
        kept.push_back(withoutSourceLine(std::move(line)));
}

} // namespace

void forgetDebugOutput()
{
    takeDebugOutput();
    kept.clear();
}

std::vector<std::string> debugLines()
{
    fetch();
    return std::exchange(kept, {});
}

std::vector<std::string> debugLinesUntil(const std::string& line)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        fetch();
        const auto found = std::ranges::find(kept, line);
        if (found != kept.end()) {
            std::vector<std::string> lines(kept.begin(), found + 1);
            kept.erase(kept.begin(), found + 1);
            return lines;
        }
        if (std::chrono::steady_clock::now() > deadline)
            return std::exchange(kept, {});
        // The debug output is a file or a hook of the system: nothing tells of a new line.
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

std::vector<std::string> debugLinesOf(const std::function<void()>& call)
{
    forgetDebugOutput();
    call();
    return debugLines();
}

} // namespace pyrux::test
