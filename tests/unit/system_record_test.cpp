#include "services/system_record.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace {

using pyrux::readSystemRecord;

/// The record's twenty cells as they lie in memory.
using Cells = std::array<std::uint32_t, 20>;

Cells cellsOf(const SysDetailRecord& record)
{
    Cells cells;
    static_assert(sizeof cells == sizeof record);
    std::memcpy(cells.data(), &record, sizeof cells);
    return cells;
}

/// A record with 7 in every cell.
SysDetailRecord sevens()
{
    Cells cells;
    cells.fill(7);
    SysDetailRecord record;
    std::memcpy(&record, cells.data(), sizeof record);
    return record;
}

void expectRefused(const std::string& reply, std::string_view text)
{
    SysDetailRecord record = sevens();
    EXPECT_EQ(readSystemRecord(reply, record), text) << reply;
    EXPECT_EQ(cellsOf(record), cellsOf(sevens())) << reply;
}

} // namespace

TEST(SystemRecord, putsEachFieldIntoItsCell)
{
    SysDetailRecord record = sevens();
    EXPECT_EQ(readSystemRecord("0.5;101;2.5;103;104;5.5;106;7.5;108;109;110;111;112;113;-114", record), "");
    constexpr std::uint32_t half = 0x3F000000;  // 0.5
    constexpr std::uint32_t two = 0x40200000;   // 2.5
    constexpr std::uint32_t five = 0x40B00000;  // 5.5
    constexpr std::uint32_t seven = 0x40F00000; // 7.5
    EXPECT_EQ(cellsOf(record), (Cells{103, 104, 101, 110, 111, 112, 113, 0xFFFFFF8E, half, two,
                                      108, 109, 106, 0,   0,   0,   0,   0,          five, seven}));
}

TEST(SystemRecord, doesNotCareAboutFurtherFields)
{
    SysDetailRecord record{};
    EXPECT_EQ(readSystemRecord("0;1;2;3;4;5;6;7;8;9;10;11;12;13;14;", record), "");
    EXPECT_EQ(record.field14, 14);
    EXPECT_EQ(readSystemRecord("0;1;2;3;4;5;6;7;8;9;10;11;12;13;15;x;;", record), "");
    EXPECT_EQ(record.field14, 15);
    EXPECT_EQ(readSystemRecord(" 0 s; +1.9;2e1;3x;4;5;6;7;8;9;10;11;12;13;14 %", record), "");
    EXPECT_EQ(record.field1, 1);
    EXPECT_EQ(record.field2, 20.0F);
    EXPECT_EQ(record.field3, 3);
}

TEST(SystemRecord, staysWhenThereAreFewerThanFifteen)
{
    for (const char* reply :
         {"", ";", "1", "0;1;2;3;4;5;6;7;8;9;10;11;12;13", "0;1;2;3;4;5;6;7;8;9;10;11;12;13;", "x;x;x"})
        expectRefused(reply, "");
}

TEST(SystemRecord, staysWhenAFieldIsNoNumber)
{
    for (int bad = 0; bad < 15; ++bad) {
        const bool isFloat = bad == 0 || bad == 2 || bad == 5 || bad == 7;
        const auto reply = [&](const char* field) {
            std::string text;
            for (int i = 0; i < 15; ++i)
                text += (i == 0 ? "" : ";") + std::string(i == bad ? field : "1");
            return text;
        };
        expectRefused(reply("x"), isFloat ? "invalid stof argument" : "invalid stoi argument");
        expectRefused(reply(isFloat ? "1e99" : "2147483648"),
                      isFloat ? "stof argument out of range" : "stoi argument out of range");
        if (bad != 14)
            expectRefused(reply(""), isFloat ? "invalid stof argument" : "invalid stoi argument");
    }
}
