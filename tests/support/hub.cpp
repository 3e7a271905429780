#include "tests/support/hub.h"

#include <algorithm>

namespace pyrux::test {

std::string sortedGroups(const std::string& text)
{
    std::vector<std::string> groups;
    bool open = false;
    for (const std::string& report : reports(text)) {
        if (open)
            groups.back() += " | " + report;
        else
            groups.push_back(report);
        // The first report of a port's three counts as 0, and the last one has bit 7.
        open = report.starts_with("00 ") || (open && !report.starts_with("82"));
    }
    std::ranges::sort(groups);
    return joined(groups);
}

std::string times(std::size_t count, const std::string& bytes)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + bytes;
    return text;
}

std::string counting(int first, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + hexByte(first + int(i));
    return text;
}

} // namespace pyrux::test
