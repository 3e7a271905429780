#include "tests/support/bytes.h"
#include "tests/support/mouse.h"

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

} // namespace pyrux::test
