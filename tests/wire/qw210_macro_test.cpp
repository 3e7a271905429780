// The keyboards: macros.

#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace pyrux::test {
namespace {

template <class Model>
class KeyboardMacro : public KeyboardTest<Model> {
};
TYPED_TEST_SUITE(KeyboardMacro, KeyboardModels, ModelName);

constexpr const char* nameBytes = "4D 61 63 72 6F 20 35 00 AA BB CC DD EE FF 01 02";

std::unique_ptr<MacroRecord> macro(std::uint8_t index, std::uint8_t count)
{
    auto record = std::make_unique<MacroRecord>();
    std::memset(static_cast<void*>(record.get()), 0, sizeof *record);
    record->index = index;
    record->boundKey = 0x0204;
    std::memcpy(record->name, bytes(nameBytes).data(), 16);
    record->eventCount = count;
    // codes 0x0001 to 0x00C6 with delay 3
    for (std::uint8_t i = 0; i < 199; ++i)
        record->events[i] = {std::uint16_t(i + 1), 0, 3};
    return record;
}

/// The events of `macro` from the first on, as they stand on the wire.
std::string events(int first, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        const auto code = std::uint8_t(first + i + 1);
        text += " " + hex(std::span(&code, 1)) + " 5C 06 00";
    }
    return text;
}

std::string decimalHex(int value)
{
    const auto byte = std::uint8_t(value);
    return hex(std::span(&byte, 1));
}

constexpr const char* endMark = " 00 FC FE FF";

/// What the setting of a macro of so many events sends. The last block of a count of events and end mark that
/// divides by 15 is one of 0 events.
std::string blocks(int count)
{
    std::string all = events(0, count) + endMark;
    std::vector<std::string> pieces;
    int left = count + 1;
    for (int block = 0; block < (count + 1) / 15 + 1; ++block) {
        const int size = std::min(left, 15);
        pieces.push_back((block == 0 ? "53 00 " : "53 01 ") + decimalHex(size) + " 00" +
                         all.substr(std::size_t(block) * 180, std::size_t(size) * 12));
        left -= size;
    }
    return joined(pieces);
}

std::string header(const char* name = nameBytes)
{
    return std::string("41 80 | 51 18 05 00 04 3E | 51 19 05 00 ") + name;
}

TYPED_TEST(KeyboardMacro, isWrittenInBlocks)
{
    for (const int count : {0, 1, 13, 14, 15, 29, 198}) {
        const auto record = macro(5, std::uint8_t(count));
        EXPECT_EQ(this->keyboard->setMacro(record.get()), E_OK) << count;
        EXPECT_EQ(this->keyboard.written(), wire(joined({header(), blocks(count)}))) << count;
        EXPECT_EQ(+record->events[count].code, 0);
        EXPECT_EQ(+record->events[count].kind, 3);
        EXPECT_EQ(+record->events[count].delay, 0xFFFF);
    }
}

TYPED_TEST(KeyboardMacro, ofFourteenEventsEndsInABlockOfNone)
{
    EXPECT_EQ(this->keyboard->setMacro(macro(5, 14).get()), E_OK);
    const std::vector<std::string> pieces = reports(this->keyboard.written());
    ASSERT_EQ(pieces.size(), 5U);
    EXPECT_EQ(pieces[3], wire("53 00 0F 00" + events(0, 14) + endMark));
    EXPECT_EQ(pieces[4], wire("53 01 00"));
}

TYPED_TEST(KeyboardMacro, ofFifteenEventsHasItsEndMarkInASecondBlock)
{
    EXPECT_EQ(this->keyboard->setMacro(macro(5, 15).get()), E_OK);
    const std::vector<std::string> pieces = reports(this->keyboard.written());
    ASSERT_EQ(pieces.size(), 5U);
    EXPECT_EQ(pieces[3], wire("53 00 0F 00" + events(0, 15)));
    EXPECT_EQ(pieces[4], wire("53 01 01 00 00 FC FE FF"));
}

TYPED_TEST(KeyboardMacro, ofNoEventsIsItsEndMark)
{
    EXPECT_EQ(this->keyboard->setMacro(macro(5, 0).get()), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire(header() + " | 53 00 01 00 00 FC FE FF"));
}

TYPED_TEST(KeyboardMacro, isRefusedWhereItHasNoPlace)
{
    EXPECT_EQ(this->keyboard->setMacro(macro(5, 199).get()), -2);
    EXPECT_EQ(this->keyboard->setMacro(macro(5, 255).get()), -2);
    EXPECT_EQ(this->keyboard->setMacro(macro(20, 1).get()), -2);
    EXPECT_EQ(this->keyboard->setMacro(macro(255, 1).get()), -2);
    const auto deleted = macro(20, 0);
    deleted->triggerMode = 3;
    EXPECT_EQ(this->keyboard->setMacro(deleted.get()), -2);
    EXPECT_EQ(this->keyboard.written(), "");
}

TYPED_TEST(KeyboardMacro, isWrittenByItsKeyAndMode)
{
    struct Row {
        std::uint16_t key;
        std::uint8_t mode;
        const char* field;
    };
    for (const Row& row :
         {Row{0x0004, 0, "04 3C"}, Row{0x0104, 0, "04 3D"}, Row{0x03FF, 0, "FF 3F"}, Row{0x0004, 1, "04 5C"},
          Row{0x0204, 1, "04 5E"}, Row{0x0304, 2, "04 7F"}, Row{0x0000, 2, "00 7C"}}) {
        const auto record = macro(19, 0);
        record->boundKey = row.key;
        record->triggerMode = row.mode;
        EXPECT_EQ(this->keyboard->setMacro(record.get()), E_OK);
        EXPECT_EQ(reports(this->keyboard.written()).at(1), std::string("51 18 13 00 ") + row.field);
    }
}

TYPED_TEST(KeyboardMacro, isDeletedByItsMode)
{
    const auto record = macro(5, 7);
    record->triggerMode = 3;
    EXPECT_EQ(this->keyboard->setMacro(record.get()), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 18 05 00 FF 3F"));
}

TYPED_TEST(KeyboardMacro, isWrittenEventByEvent)
{
    struct Row {
        MacroEvent event;
        const char* wire;
    };
    // code, kind, delay
    for (const Row& row : {Row{{0x0004, 0, 0}, "04 5C"}, Row{{0x0104, 0, 1}, "04 5D 02"},
                           Row{{0x03FF, 0, 0x7FFF}, "FF 5F FE FF"}, Row{{0x0004, 1, 0x0180}, "04 3C 00 03"},
                           Row{{0x0204, 1, 0x8000}, "04 3E"}, Row{{0x0004, 2, 5}, "04 FC 0A"},
                           Row{{0x0004, 9, 5}, "04 FC 0A"}, Row{{0x0500, 0, 6}, "01 9E 0C"},
                           Row{{0x0500, 1, 6}, "01 9E 0C"}, Row{{0x0501, 2, 6}, "FF 9E 0C"}}) {
        const auto record = macro(5, 1);
        record->events[0] = row.event;
        EXPECT_EQ(this->keyboard->setMacro(record.get()), E_OK);
        std::string event = row.wire;
        while (event.size() < 11)
            event += " 00";
        EXPECT_EQ(reports(this->keyboard.written()).at(3), "53 00 02 00 " + event + endMark) << row.wire;
    }
}

/// Lays a macro into place 5 of a device.
void holdMacro(ScriptedDevice& device, const char* field, int count)
{
    std::string all = events(0, count) + endMark;
    device.answer("52 18 05", std::string("52 18 05 77 ") + field);
    device.answer("52 19 05", std::string("52 19 05 77 ") + nameBytes + " 99");
    device.answer("53 10 0F", "53 10 0F 77" + all.substr(0, 180));
    std::vector<std::string> later;
    for (std::size_t at = 180; at <= 13 * 180 && at < all.size() + 180; at += 180)
        later.push_back("53 11 0F 77" + (at < all.size() ? all.substr(at, 180) : ""));
    device.answers("53 11 0F", later);
    if (all.size() > 13 * 180)
        device.answer("53 11 05", "53 11 05 77" + all.substr(13 * 180));
}

std::string readingOf(int count)
{
    std::vector<std::string> pieces{"41 80 | 52 18 05 | 52 19 05 | 51 18 05 00 04 5E 66 | 53 10 0F"};
    for (int read = 15; read <= count; read += 15)
        pieces.emplace_back(read < 195 ? "53 11 0F" : "53 11 05");
    return joined(pieces);
}

TYPED_TEST(KeyboardMacro, isReadInBlocks)
{
    for (const int count : {0, 14, 15, 29, 30, 194, 195, 198}) {
        holdMacro(*this->keyboard.device, "04 5E 66", count);
        const auto record = macro(5, 0);
        std::memset(record->name, 0xEE, sizeof record->name);
        EXPECT_EQ(this->keyboard->getMacro(record.get()), E_OK) << count;
        EXPECT_EQ(this->keyboard.written(), wire(readingOf(count))) << count;
        EXPECT_EQ(+record->index, 5);
        EXPECT_EQ(+record->boundKey, 0x0204);
        EXPECT_EQ(+record->triggerMode, 1);
        EXPECT_EQ(+record->eventCount, count);
        EXPECT_EQ(std::memcmp(record->name, bytes(nameBytes).data(), 16), 0);
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(+record->events[i].code, i + 1) << i;
            EXPECT_EQ(+record->events[i].kind, 0) << i;
            EXPECT_EQ(+record->events[i].delay, 3) << i;
        }
    }
}

TYPED_TEST(KeyboardMacro, isReadWithItsKeyAndMode)
{
    struct Row {
        const char* field;
        std::uint16_t key;
        std::uint8_t mode;
    };
    for (const Row& row : {Row{"04 3C", 0x0004, 0}, Row{"04 3D", 0x0104, 0}, Row{"04 5F", 0x0304, 1},
                           Row{"FF 5C", 0x00FF, 1}, Row{"04 7E", 0x0204, 2}, Row{"04 90", 0x0004, 0},
                           Row{"FE 3F", 0x03FE, 0}, Row{"FE FF", 0x03FE, 0}, Row{"FF 7F", 0x03FF, 2}}) {
        holdMacro(*this->keyboard.device, row.field, 1);
        const auto record = macro(5, 0);
        EXPECT_EQ(this->keyboard->getMacro(record.get()), E_OK) << row.field;
        EXPECT_EQ(+record->boundKey, row.key) << row.field;
        EXPECT_EQ(+record->triggerMode, row.mode) << row.field;
    }
}

TYPED_TEST(KeyboardMacro, isReadEventByEvent)
{
    struct Row {
        const char* wire;
        MacroEvent event;
    };
    for (const Row& row : {Row{"04 5C 02 00", {0x0004, 0, 1}}, Row{"04 5D 03 00", {0x0104, 0, 1}},
                           Row{"04 3C 00 00", {0x0004, 1, 0}}, Row{"04 3F FF FF", {0x0304, 1, 0x7FFF}},
                           Row{"04 20 00 00", {0x0004, 1, 0}}, Row{"04 40 00 00", {0x0004, 0, 0}},
                           Row{"01 9E 0C 00", {0x0500, 2, 6}}, Row{"FF 9E 0C 00", {0x0501, 2, 6}},
                           Row{"02 9E 0C 00", {0x0202, 0, 6}}, Row{"04 FD 00 00", {0x0104, 0, 0}}}) {
        holdMacro(*this->keyboard.device, "04 5E 66", 0);
        this->keyboard.device->answer("53 10 0F", std::string("53 10 0F 00 ") + row.wire + endMark);
        const auto record = macro(5, 0);
        EXPECT_EQ(this->keyboard->getMacro(record.get()), E_OK) << row.wire;
        EXPECT_EQ(+record->eventCount, 1) << row.wire;
        EXPECT_EQ(+record->events[0].code, +row.event.code) << row.wire;
        EXPECT_EQ(+record->events[0].kind, +row.event.kind) << row.wire;
        EXPECT_EQ(+record->events[0].delay, +row.event.delay) << row.wire;
    }
}

/// Any D of FC ends the list, whatever stands beside it.
TYPED_TEST(KeyboardMacro, endsAtAnyEventOfTheEndMarksKind)
{
    holdMacro(*this->keyboard.device, "04 5E 66", 0);
    this->keyboard.device->answer("53 10 0F", "53 10 0F 00 04 5C 02 00 05 FC 08 00 06 5C");
    const auto record = macro(5, 0);
    EXPECT_EQ(this->keyboard->getMacro(record.get()), E_OK);
    EXPECT_EQ(+record->eventCount, 1);
}

TYPED_TEST(KeyboardMacro, thatIsNotThereLeavesItsEventsAlone)
{
    for (const char* field : {"FF 3F", "FF FF", "FF 3F 66"}) {
        holdMacro(*this->keyboard.device, field, 3);
        const auto record = macro(5, 7);
        record->triggerMode = 1;
        EXPECT_EQ(this->keyboard->getMacro(record.get()), E_OK);
        EXPECT_EQ(this->keyboard.written(), wire("41 80 | 52 18 05"));
        EXPECT_EQ(+record->triggerMode, 3);
        EXPECT_EQ(+record->index, 5);
        EXPECT_EQ(+record->boundKey, 0);
        for (const char c : record->name)
            EXPECT_EQ(c, 0);
        EXPECT_EQ(+record->eventCount, 7);
        EXPECT_EQ(+record->events[0].code, 1);
    }
}

TYPED_TEST(KeyboardMacro, hasNoNumberAboveNineteen)
{
    for (const std::uint8_t index : {20, 255}) {
        const auto record = macro(index, 7);
        EXPECT_EQ(this->keyboard->getMacro(record.get()), -3);
        EXPECT_EQ(+record->eventCount, 7);
    }
    EXPECT_EQ(this->keyboard.written(), "");
}

TYPED_TEST(KeyboardMacro, isNeverLongerThanItsRecord)
{
    holdMacro(*this->keyboard.device, "04 5E 66", 0);
    std::string full;
    for (int i = 0; i < 15; ++i)
        full += " 04 5C 02 00";
    this->keyboard.device->answer("53 10 0F", "53 10 0F 00" + full);
    this->keyboard.device->answers("53 11 0F", {"53 11 0F 00" + full});
    this->keyboard.device->answer("53 11 05", "53 11 05 00" + full);
    struct {
        MacroRecord record;
        std::uint8_t behind[64];
    } room;
    std::memset(static_cast<void*>(&room), 0x5A, sizeof room);
    room.record.index = 5;
    EXPECT_EQ(this->keyboard->getMacro(&room.record), -3);
    for (const std::uint8_t byte : room.behind)
        EXPECT_EQ(byte, 0x5A);
}

TYPED_TEST(KeyboardMacro, comesWithAllOthers)
{
    for (const std::string& read : reports(eachOf("52 18", 20)))
        this->keyboard.device->answer(read, read + " 00 FF 3F");
    this->keyboard.device->answer("52 18 05", "52 18 05 00 04 5E 66");
    this->keyboard.device->answer("52 18 13", "52 18 13 00 06 7C 67");
    this->keyboard.device->answer("53 10 0F", "53 10 0F 00 04 5C 02 00 00 FC FE FF");
    const auto list = std::make_unique<MacroList>();
    list->count = 77;
    EXPECT_EQ(this->keyboard->getMacroAll(list.get()), E_OK);
    std::string expected = "41 02";
    for (const std::string& read : reports(eachOf("52 18", 20))) {
        expected += " | 41 03 | " + read;
        if (read == "52 18 05")
            expected += " | 52 19 05 | 51 18 05 00 04 5E 66 | 53 10 0F";
        if (read == "52 18 13")
            expected += " | 52 19 13 | 51 18 13 00 06 7C 67 | 53 10 0F";
    }
    EXPECT_EQ(this->keyboard.written(), wire(expected + " | 41 00"));
    ASSERT_EQ(list->count, 2U);
    EXPECT_EQ(+list->macros[0].index, 5);
    EXPECT_EQ(+list->macros[0].boundKey, 0x0204);
    EXPECT_EQ(+list->macros[0].triggerMode, 1);
    EXPECT_EQ(+list->macros[1].index, 19);
    EXPECT_EQ(+list->macros[1].boundKey, 0x0006);
    EXPECT_EQ(+list->macros[1].triggerMode, 2);
    EXPECT_EQ(+list->macros[1].eventCount, 1);
    EXPECT_EQ(+list->macros[1].events[0].code, 4);
}

TYPED_TEST(KeyboardMacro, isCleared)
{
    EXPECT_EQ(this->keyboard->clearMacro(19), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 18 13 00 FF 3F"));
    EXPECT_EQ(this->keyboard->clearMacro(20), E_OK);
    EXPECT_EQ(this->keyboard->clearMacro(254), E_OK);
    EXPECT_EQ(this->keyboard.written(), "");
    EXPECT_EQ(this->keyboard->clearMacro(255), E_OK);
    std::string expected;
    for (const std::string& write : reports(eachOf("51 18", 20)))
        expected += (expected.empty() ? "" : " | ") + std::string("41 80 | ") + write + " 00 FF 3F";
    EXPECT_EQ(this->keyboard.written(), wire(expected));
}

TYPED_TEST(KeyboardMacro, isRecordedByTheDevice)
{
    EXPECT_EQ(this->keyboard->startRecordMacro(), E_OK);
    EXPECT_EQ(this->keyboard.written(), wire("41 01"));
}

} // namespace
} // namespace pyrux::test
