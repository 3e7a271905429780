#include "tests/kernel/gadget.h"

#include <algorithm>

namespace pyrux::test {

Gadget::Gadget(const std::vector<std::string>& arguments) : Program(PYRUX_GADGET, arguments) {}

void Gadget::take(std::string one)
{
    if (one.starts_with("> "))
        written.push_back(one.substr(2));
    else if (!one.starts_with("< "))
        Program::take(std::move(one));
}

std::string Gadget::command(const std::string& words)
{
    return write(words + "\n") ? line() : "";
}

std::string Gadget::takeWritten()
{
    while (readMore(Clock::now()))
        ;
    std::string joined;
    for (const std::string& one : written)
        joined += (joined.empty() ? "" : " | ") + one;
    written.clear();
    return joined;
}

bool Gadget::waitForWritten(const std::string& report)
{
    const auto deadline = Clock::now() + patience;
    for (;;) {
        const auto found = std::ranges::find(written, report);
        if (found != written.end()) {
            written.erase(written.begin(), found + 1);
            return true;
        }
        if (!readMore(deadline))
            return false;
    }
}

} // namespace pyrux::test
