#include "tests/support/supply_texts.h"

#include "simulator/bus.h"
#include "tests/support/bytes.h"
#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace pyrux::test {
namespace {

std::string textOf(std::span<const std::uint8_t> report)
{
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    if (report.size() != 17 || report[0] != 0)
        return "{" + hex(report) + "}";
    const auto end = std::find(report.begin() + 1, report.end(), 0);
    if (!std::all_of(end, report.end(), isZero))
        return "{" + hex(report) + "}";
    return {report.begin() + 1, end};
}

} // namespace

std::string ascii(std::string_view text)
{
    return hex(ByteVector(text.begin(), text.end()));
}

std::string takeTexts(const std::string& path, std::size_t atLeast)
{
    std::vector<std::string> texts;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        const bool enough = texts.size() >= atLeast;
        for (const sim::WireRecord& record : sim::takeTraffic(path, enough ? 0 : 1))
            if (record.direction == sim::WireRecord::Direction::toDevice)
                texts.push_back(textOf(record.bytes));
        if (enough)
            return joined(texts);
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "no " << atLeast << " texts: " << joined(texts);
            return joined(texts);
        }
    }
}

} // namespace pyrux::test
