#include "tests/support/debug_log.h"

#include "tests/support/debug_capture.h"

#include <memory>

namespace pyrux::test {
namespace {

std::unique_ptr<DebugCapture> capture;

std::string withoutSourceLine(std::string line)
{
    if (line.ends_with('\n'))
        line.pop_back();
    const std::size_t comma = line.rfind(", ");
    if (comma != std::string::npos && comma + 2 < line.size() &&
        line.find_first_not_of("0123456789", comma + 2) == std::string::npos)
        line.replace(comma + 2, std::string::npos, "#");
    return line;
}

} // namespace

void forgetDebugOutput()
{
    capture.reset();
    capture = std::make_unique<DebugCapture>();
}

Lines debugLines()
{
    Lines lines;
    for (const std::string& text : capture->texts())
        lines.push_back(withoutSourceLine(text));
    return lines;
}

Lines debugLinesWith(const std::string& line)
{
    capture->waitFor(line);
    return debugLines();
}

Lines debugLinesOf(const std::function<void()>& call)
{
    forgetDebugOutput();
    call();
    return debugLines();
}

} // namespace pyrux::test
