#include "tests/support/written.h"

#include "simulator/bus.h"
#include "tests/support/bytes.h"
#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <span>
#include <vector>

namespace pyrux::test {

std::string takeWritten(const std::string& path, std::size_t atLeast)
{
    std::vector<std::string> pieces;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        const bool enough = pieces.size() >= atLeast;
        for (const sim::WireRecord& record : sim::takeTraffic(path, enough ? 0 : 1)) {
            if (record.direction != sim::WireRecord::Direction::toDevice)
                continue;
            const std::span<const std::uint8_t> report(record.bytes);
            if (report.size() == 65 && report[0] == 0)
                pieces.push_back(shortened(report.subspan(1)));
            else
                pieces.push_back("[" + hex(report) + "]");
        }
        if (enough)
            return joined(pieces);
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "no " << atLeast << " reports: " << joined(pieces);
            return joined(pieces);
        }
    }
}

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

} // namespace pyrux::test
