#include "devices/macro_codec.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <vector>

namespace pyrux::macros {

void PrintTo(const Step& step, std::ostream* out)
{
    *out << "{code " << step.code << ", kind " << int(step.kind) << ", delay " << step.delay << "}";
}

namespace {

using Bytes = std::array<std::uint8_t, 4>;
using State = Collector::State;

/// A reply with four bytes in each of its places.
Reply chunkOf(std::size_t count, Bytes event = {0x04, 0x5C, 0x00, 0x00})
{
    std::vector<std::uint8_t> bytes(4);
    for (std::size_t i = 0; i < count; ++i)
        bytes.insert(bytes.end(), event.begin(), event.end());
    return Reply(bytes);
}

std::vector<std::uint8_t> payloadHead(const Report& report, std::size_t count)
{
    const auto head = report.payload().first(count);
    return {head.begin(), head.end()};
}

TEST(MacroCodec, writesEachKindOfEvent)
{
    EXPECT_EQ(encode({.code = 0x0004, .kind = 0, .delay = 10}), (Bytes{0x04, 0x5C, 0x14, 0x00}));
    EXPECT_EQ(encode({.code = 0x0304, .kind = 1, .delay = 0x0180}), (Bytes{0x04, 0x3F, 0x00, 0x03}));
    EXPECT_EQ(encode({.code = 0x0500, .kind = 2, .delay = 1}), (Bytes{0x01, 0x9E, 0x02, 0x00}));
    EXPECT_EQ(encode({.code = 0x0501, .kind = 2, .delay = 1}), (Bytes{0xFF, 0x9E, 0x02, 0x00}));
    EXPECT_EQ(encode({.code = 0, .kind = 3, .delay = 0xFFFF}), (Bytes{0x00, 0xFC, 0xFE, 0xFF}));
}

TEST(MacroCodec, losesTheTopBitOfADelay)
{
    EXPECT_EQ(encode({.code = 0x0004, .kind = 0, .delay = 0x8001}), (Bytes{0x04, 0x5C, 0x02, 0x00}));
}

TEST(MacroCodec, readsEachKindOfEvent)
{
    const auto read = [](Bytes bytes) { return decode(chunkOf(2, bytes), 8); };
    EXPECT_EQ(read({0x04, 0x5C, 0x14, 0x00}), (Step{.code = 0x0004, .kind = 0, .delay = 10}));
    EXPECT_EQ(read({0x04, 0x3F, 0x00, 0x03}), (Step{.code = 0x0304, .kind = 1, .delay = 0x0180}));
    EXPECT_EQ(read({0x01, 0x9E, 0x02, 0x00}), (Step{.code = 0x0500, .kind = 2, .delay = 1}));
    EXPECT_EQ(read({0xFF, 0x9E, 0x02, 0x00}), (Step{.code = 0x0501, .kind = 2, .delay = 1}));
    // The wheel's second byte with another first one is a key.
    EXPECT_EQ(read({0x02, 0x9E, 0x02, 0x00}), (Step{.code = 0x0202, .kind = 0, .delay = 1}));
}

TEST(MacroCodec, keepsThePlayModeInThePlaceField)
{
    EXPECT_EQ(modeByte(0, 0), 0x3C);
    EXPECT_EQ(modeByte(1, 1), 0x5D);
    EXPECT_EQ(modeByte(2, 3), 0x7F);
    EXPECT_EQ(modeOf(0x3C), 0);
    EXPECT_EQ(modeOf(0x5D), 1);
    EXPECT_EQ(modeOf(0x7F), 2);
    EXPECT_EQ(modeOf(0x9C), 0);
}

TEST(MacroCodec, knowsBothFormsOfAnEmptyPlace)
{
    const auto isEmpty = [](std::uint8_t a, std::uint8_t b) {
        return isEmptyPlace(Reply(std::array<std::uint8_t, 6>{0x52, 0x18, 0x00, 0x00, a, b}));
    };
    EXPECT_TRUE(isEmpty(0xFF, 0x3F));
    EXPECT_TRUE(isEmpty(0xFF, 0xFF));
    EXPECT_FALSE(isEmpty(0xFF, 0x3C));
    EXPECT_FALSE(isEmpty(0xFE, 0x3F));
}

TEST(MacroCodec, putsFifteenEventsInAReport)
{
    const std::vector<Step> steps(16, {.code = 0x0004, .kind = 0, .delay = 1});
    const std::vector<Report> reports = eventReports(steps, Tail::none);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(payloadHead(reports[0], 8),
              (std::vector<std::uint8_t>{0x53, 0, 15, 0, 0x04, 0x5C, 0x02, 0x00}));
    EXPECT_EQ(payloadHead(reports[1], 9), (std::vector<std::uint8_t>{0x53, 1, 1, 0, 0x04, 0x5C, 0x02, 0, 0}));
}

TEST(MacroCodec, addsAnEmptyReportAfterFullOnesWhereTheDeviceWantsIt)
{
    const std::vector<Step> steps(15);
    EXPECT_EQ(eventReports(steps, Tail::none).size(), 1U);
    const std::vector<Report> reports = eventReports(steps, Tail::emptyChunk);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1], (Report{0x53, 0x01, 0x00}));
    EXPECT_EQ(eventReports(std::vector<Step>(14), Tail::emptyChunk).size(), 1U);
}

TEST(MacroCodec, readsInFifteensAndThenFive)
{
    Collector collector(198);
    EXPECT_EQ(collector.command(), (Report{0x53, 0x10, 15}));
    for (int chunk = 0; chunk < 12; ++chunk) {
        ASSERT_EQ(collector.take(chunkOf(15)), State::reading);
        ASSERT_EQ(collector.command(), (Report{0x53, 0x11, 15}));
    }
    ASSERT_EQ(collector.take(chunkOf(15)), State::reading);
    EXPECT_EQ(collector.command(), (Report{0x53, 0x11, 5}));
}

TEST(MacroCodec, endsWithTheEndMark)
{
    Collector collector(198);
    ASSERT_EQ(collector.take(chunkOf(15, {0x01, 0x9E, 0x02, 0x00})), State::reading);
    EXPECT_EQ(collector.take(chunkOf(1, {0x00, 0xFC, 0xFE, 0xFF})), State::complete);
    EXPECT_EQ(collector.events().size(), 15U);
    EXPECT_EQ(collector.events().back(), (Step{.code = 0x0500, .kind = 2, .delay = 1}));
}

TEST(MacroCodec, refusesMoreEventsThanAMacroMayHave)
{
    Collector collector(16);
    ASSERT_EQ(collector.take(chunkOf(15)), State::reading);
    EXPECT_EQ(collector.take(chunkOf(15)), State::overfull);
}

TEST(MacroCodec, takesAsManyEventsAsAMacroMayHave)
{
    Collector collector(16);
    ASSERT_EQ(collector.take(chunkOf(15)), State::reading);
    std::vector<std::uint8_t> bytes{0x53, 0x11, 15, 0, 0x04, 0x5C, 0x00, 0x00, 0x00, 0xFC};
    EXPECT_EQ(collector.take(Reply(bytes)), State::complete);
    EXPECT_EQ(collector.events().size(), 16U);
}

} // namespace
} // namespace pyrux::macros
