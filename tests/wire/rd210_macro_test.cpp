// RD210: macros.

#include "tests/support/mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <thread>
#include <vector>

namespace pyrux::test {
namespace {

constexpr const char* wheelOff = "52 22 00 00 10 10";
constexpr const char* wheelAOn = "52 22 00 00 10 C0";
constexpr const char* wheelBOn = "52 22 00 00 C0 10";

/// A name of forty bytes, and the same bytes on the wire.
constexpr const char* name = "Forty characters make the name of macro.";
constexpr const char* nameBytes =
    "46 6F 72 74 79 20 63 68 61 72 61 63 74 65 72 73 20 6D 61 6B 65 20 74 68 65 20 6E 61 "
    "6D 65 20 6F 66 20 6D 61 63 72 6F 2E";

MouseMacroRecord macro(std::uint8_t button, std::uint8_t mode, std::uint8_t count)
{
    MouseMacroRecord record{};
    record.button = button;
    std::memcpy(record.name, name, sizeof record.name);
    record.mode = mode;
    record.count = count;
    return record;
}

/// Events that tell their place: code 0x0100 + i, first key class, delay i.
MouseMacroRecord numbered(std::uint8_t count)
{
    MouseMacroRecord record = macro(2, 0, count);
    for (std::size_t i = 0; i < count; ++i)
        record.events[i] = {std::uint16_t(0x0100 + i), 0, std::uint16_t(i)};
    return record;
}

std::string byteText(std::size_t value)
{
    const std::uint8_t byte = std::uint8_t(value);
    return hex(std::span(&byte, 1));
}

/// The chunks of `numbered`, its end event after it.
std::string numberedChunks(std::size_t count)
{
    std::vector<std::string> chunks;
    for (std::size_t first = 0; first <= count; first += 15) {
        const std::size_t events = std::min<std::size_t>(15, count + 1 - first);
        std::string chunk = std::string("53 ") + (first == 0 ? "00" : "01") + " " + byteText(events) + " 00";
        for (std::size_t i = first; i < first + events; ++i)
            chunk += i == count ? " 00 FC FE FF"
                                : " " + byteText(i) + " 5D " + byteText(2 * i) + " " + byteText((2 * i) >> 8);
        chunks.push_back(chunk);
    }
    return joined(chunks);
}

TEST(RD210SetMacro, writesPlaceNameAndEvents)
{
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    MouseMacroRecord record = macro(2, 0, 3);
    record.events[0] = {0x0004, 0, 10};
    record.events[1] = {0x0129, 1, 0x0180};
    record.events[2] = {0x0500, 2, 64};
    EXPECT_EQ(mouse->setMacro(&record), E_OK);
    EXPECT_EQ(mouse.written(),
              wire(std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes +
                   " | 53 00 04 00 04 5C 14 00 29 3D 00 03 01 9E 80 00 00 FC FE FF"));
}

TEST(RD210SetMacro, writesTheEndIntoTheRecord)
{
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    MouseMacroRecord record = numbered(198);
    record.events[198] = {0x1111, 1, 0x1111};
    EXPECT_EQ(mouse->setMacro(&record), E_OK);
    EXPECT_EQ(record.count, 198);
    EXPECT_EQ(+record.events[198].code, 0);
    EXPECT_EQ(record.events[198].kind, 3);
    EXPECT_EQ(+record.events[198].delay, 0xFFFF);
    EXPECT_EQ(+record.events[197].code, 0x0100 + 197);
}

TEST(RD210SetMacro, encodesEachKindOfEvent)
{
    struct Case {
        MouseMacroEvent event;
        const char* bytes;
    };
    const std::array<Case, 14> cases{{
        {{0x0004, 0, 0}, "04 5C 00 00"},
        {{0x0304, 0, 0}, "04 5F 00 00"},
        {{0x0004, 1, 0}, "04 3C 00 00"},
        {{0x0204, 1, 0}, "04 3E 00 00"},
        {{0x0004, 2, 0}, "04 FC 00 00"},
        {{0x0304, 2, 0}, "04 FF 00 00"},
        {{0x0404, 2, 0}, "04 00 00 00"},
        {{0x0104, 3, 0}, "04 FD 00 00"},
        {{0x0104, 255, 0}, "04 FD 00 00"},
        {{0x0500, 0, 1}, "01 9E 02 00"},
        {{0x0501, 1, 2}, "FF 9E 04 00"},
        {{0xFF12, 0, 0x7FFF}, "12 5B FE FF"},
        {{0x0012, 1, 0x8001}, "12 3C 02 00"},
        {{0x0502, 0, 0x1234}, "02 61 68 24"},
    }};
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    MouseMacroRecord record = macro(2, 1, cases.size());
    std::string events;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        record.events[i] = cases[i].event;
        events += std::string(" ") + cases[i].bytes;
    }
    EXPECT_EQ(mouse->setMacro(&record), E_OK);
    EXPECT_TRUE(mouse.written().ends_with("| 53 00 0F 00" + events + " 00 FC FE FF"));
}

TEST(RD210SetMacro, cutsTheEventsIntoChunksOfFifteen)
{
    for (const std::uint8_t count : {0, 1, 13, 14, 15, 16, 29, 30, 44, 45, 194, 195, 197, 198}) {
        Mouse mouse;
        mouse.device->answer("52 22", wheelOff);
        MouseMacroRecord record = numbered(count);
        EXPECT_EQ(mouse->setMacro(&record), E_OK);
        EXPECT_EQ(mouse.written(),
                  wire(joined({std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes,
                               numberedChunks(count)})))
            << int(count);
    }
}

TEST(RD210SetMacro, placesTheMacroByButtonAndMode)
{
    // Button, its area for the modes 0, 1 and 2.
    struct Case {
        std::uint8_t button;
        std::array<const char*, 3> area;
    };
    constexpr std::array<Case, 13> cases{{{0, {"B0 3C", "B0 5C", "B0 7C"}},
                                          {1, {"B1 3C", "B1 5C", "B1 7C"}},
                                          {2, {"B2 3C", "B2 5C", "B2 7C"}},
                                          {3, {"B3 3C", "B3 5C", "B3 7C"}},
                                          {4, {"B4 3C", "B4 5C", "B4 7C"}},
                                          {5, {"B5 3C", "B5 5C", "B5 7C"}},
                                          {6, {"BE 3C", "BE 5C", "BE 7C"}},
                                          {7, {"BF 3C", "BF 5C", "BF 7C"}},
                                          {8, {"B0 3D", "B0 5D", "B0 7D"}},
                                          {9, {"B1 3D", "B1 5D", "B1 7D"}},
                                          {10, {"B2 3D", "B2 5D", "B2 7D"}},
                                          {11, {"B3 3D", "B3 5D", "B3 7D"}},
                                          {12, {"B4 3D", "B4 5D", "B4 7D"}}}};
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    for (const Case& each : cases)
        for (std::uint8_t mode = 0; mode < 3; ++mode) {
            MouseMacroRecord record = macro(each.button, mode, 0);
            EXPECT_EQ(mouse->setMacro(&record), E_OK);
            const std::string wheel = each.button == 6 || each.button == 7 ? "51 22 00 00 10 10" : "";
            const std::string number = byteText(each.button);
            EXPECT_EQ(mouse.written(),
                      wire(joined({"41 80 | 52 22", wheel, "51 18 " + number + " 00 " + each.area[mode],
                                   "51 19 " + number + " 00 " + nameBytes, "53 00 01 00 00 FC FE FF"})));
        }
}

TEST(RD210SetMacro, clearsTheButtonInModeThree)
{
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    MouseMacroRecord record = macro(9, 3, 5);
    EXPECT_EQ(mouse->setMacro(&record), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 22 | 51 18 09 00 FF 3F"));
}

TEST(RD210SetMacro, switchesTheWheelForItsButtons)
{
    struct Case {
        std::uint8_t button, mode;
        const char *wheel, *bytes;
    };
    for (const Case& each : {
             Case{6, 0, wheelOff, "10 10"},
             Case{6, 0, wheelAOn, "10 C0"},
             Case{6, 0, wheelBOn, "10 10"},
             Case{6, 3, wheelOff, "C0 10"},
             Case{6, 3, wheelAOn, "C0 C0"},
             Case{6, 3, wheelBOn, "C0 10"},
             Case{7, 0, wheelOff, "10 10"},
             Case{7, 0, wheelAOn, "10 10"},
             Case{7, 0, wheelBOn, "C0 10"},
             Case{7, 3, wheelOff, "10 C0"},
             Case{7, 3, wheelAOn, "10 C0"},
             Case{7, 3, wheelBOn, "C0 C0"},
         }) {
        Mouse mouse;
        mouse.device->answer("52 22", each.wheel);
        MouseMacroRecord record = macro(each.button, each.mode, 0);
        EXPECT_EQ(mouse->setMacro(&record), E_OK);
        EXPECT_TRUE(mouse.written().starts_with(std::string("41 80 | 52 22 | 51 22 00 00 ") + each.bytes +
                                                " | 51 18 0" + char('0' + each.button) + " 00 "))
            << int(each.button) << " " << int(each.mode) << " " << each.wheel;
    }
}

TEST(RD210SetMacro, refusesWhatIsOutOfRange)
{
    Mouse mouse;
    mouse.device->answer("52 22", wheelOff);
    MouseMacroRecord record = macro(13, 0, 0);
    EXPECT_EQ(mouse->setMacro(&record), E_INVALID_SET);
    record = macro(0, 4, 0);
    EXPECT_EQ(mouse->setMacro(&record), E_INVALID_SET);
    record = macro(0, 0, 199);
    EXPECT_EQ(mouse->setMacro(&record), E_INVALID_SET);
    record = macro(0, 3, 199);
    EXPECT_EQ(mouse->setMacro(&record), E_INVALID_SET);
    EXPECT_EQ(mouse->setMacro(nullptr), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210SetMacro, refusesAnUnknownWheelState)
{
    Mouse mouse;
    mouse.device->answer("52 22", "52 22 00 00 30 10");
    MouseMacroRecord record = macro(2, 0, 0);
    EXPECT_EQ(mouse->setMacro(&record), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 22"));
}

TEST(RD210ClearMacro, clearsTheButton)
{
    Mouse mouse;
    mouse.device->answer("52 22", wheelAOn);
    EXPECT_EQ(mouse->clearMacro(4), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 22 | 51 18 04 00 FF 3F"));
    EXPECT_EQ(mouse->clearMacro(6), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 22 | 51 22 00 00 C0 C0 | 51 18 06 00 FF 3F"));
    EXPECT_EQ(mouse->clearMacro(13), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

/// A mouse with a macro on button 2, of which `head` is the first reply and `chunks` the event replies.
void holdsMacro(ScriptedDevice& device, const std::string& head, const std::vector<std::string>& chunks)
{
    device.answer("52 18 02", head);
    device.answer("52 19 02", std::string("52 19 02 00 ") + nameBytes + " AA");
    if (!chunks.empty())
        device.answer("53 10", chunks.front());
    if (chunks.size() > 1)
        device.answers("53 11", std::vector<std::string>(chunks.begin() + 1, chunks.end()));
}

/// A record full of something else.
MouseMacroRecord dirty(std::uint8_t button)
{
    MouseMacroRecord record;
    std::memset(&record, 0xEE, sizeof record);
    record.button = button;
    return record;
}

TEST(RD210GetMacro, readsModeNameAndEvents)
{
    Mouse mouse;
    holdsMacro(*mouse.device, "52 18 02 00 B2 5C 77 88",
               {"53 10 0F 00 04 5C 14 00 29 3D 01 03 01 9E 80 00 FF 9E 02 00 05 FC FE FF 06 5C 00 00"});
    MouseMacroRecord record = dirty(2);
    EXPECT_EQ(mouse->getMacro(&record), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 5C 77 | 53 10 0F"));
    EXPECT_EQ(record.button, 2);
    EXPECT_EQ(std::string(record.name, 40), name);
    EXPECT_EQ(record.mode, 1);
    ASSERT_EQ(record.count, 4);
    const std::array<MouseMacroEvent, 4> expected{
        {{0x0004, 0, 10}, {0x0129, 1, 0x0180}, {0x0500, 2, 64}, {0x0501, 2, 1}}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(+record.events[i].code, +expected[i].code) << i;
        EXPECT_EQ(record.events[i].kind, expected[i].kind) << i;
        EXPECT_EQ(+record.events[i].delay, +expected[i].delay) << i;
    }
}

TEST(RD210GetMacro, decodesEachKindOfEvent)
{
    struct Case {
        const char* bytes;
        MouseMacroEvent event;
    };
    const std::array<Case, 14> cases{{
        {"04 5C 00 00", {0x0004, 0, 0}},
        {"04 5F 01 00", {0x0304, 0, 0}},
        {"04 3C 02 00", {0x0004, 1, 1}},
        {"04 3E 03 00", {0x0204, 1, 1}},
        {"04 20 FE FF", {0x0004, 1, 0x7FFF}},
        {"04 1F FF FF", {0x0304, 0, 0x7FFF}},
        {"04 40 00 01", {0x0004, 0, 0x0080}},
        {"04 FD 00 00", {0x0104, 0, 0}},
        {"04 00 00 00", {0x0004, 0, 0}},
        {"01 9E 02 00", {0x0500, 2, 1}},
        {"FF 9E 04 00", {0x0501, 2, 2}},
        {"02 9E 00 00", {0x0202, 0, 0}}, // no step without 01 or FF
        {"01 9F 00 00", {0x0301, 0, 0}},
        {"FF 7E 00 00", {0x02FF, 0, 0}},
    }};
    Mouse mouse;
    std::string chunk = "53 10 0F 00";
    for (const Case& each : cases)
        chunk += std::string(" ") + each.bytes;
    holdsMacro(*mouse.device, "52 18 02 00 B2 3C", {chunk + " 00 FC"});
    MouseMacroRecord record = dirty(2);
    EXPECT_EQ(mouse->getMacro(&record), E_OK);
    ASSERT_EQ(record.count, cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(+record.events[i].code, +cases[i].event.code) << cases[i].bytes;
        EXPECT_EQ(record.events[i].kind, cases[i].event.kind) << cases[i].bytes;
        EXPECT_EQ(+record.events[i].delay, +cases[i].event.delay) << cases[i].bytes;
    }
}

TEST(RD210GetMacro, takesTheModeFromTheHighDigit)
{
    struct Case {
        const char* area;
        std::uint8_t mode;
    };
    for (const Case& each :
         {Case{"3C", 0}, Case{"5C", 1}, Case{"5D", 1}, Case{"50", 1}, Case{"7C", 2}, Case{"7F", 2},
          Case{"6C", 0}, Case{"4C", 0}, Case{"00", 0}, Case{"DC", 0}, Case{"FC", 0}}) {
        Mouse mouse;
        holdsMacro(*mouse.device, std::string("52 18 02 00 B2 ") + each.area, {"53 10 0F 00 00 FC"});
        MouseMacroRecord record = dirty(2);
        EXPECT_EQ(mouse->getMacro(&record), E_OK);
        EXPECT_EQ(record.mode, each.mode) << each.area;
        EXPECT_EQ(record.count, 0);
        EXPECT_EQ(mouse.written(), wire(std::string("41 80 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 ") +
                                        each.area + " | 53 10 0F"));
    }
}

TEST(RD210GetMacro, pointsTheCursorByTheButtonsOwnAddress)
{
    struct Case {
        std::uint8_t button;
        const char *number, *address;
    };
    for (const Case& each :
         {Case{0, "00", "B0"}, Case{6, "06", "BE"}, Case{7, "07", "BF"}, Case{12, "0C", "B4"}}) {
        Mouse mouse;
        mouse.device->answer(std::string("52 18 ") + each.number,
                             std::string("52 18 ") + each.number + " 00 11 5D 22");
        mouse.device->answer("53 10", "53 10 0F 00 00 FC");
        MouseMacroRecord record = dirty(each.button);
        EXPECT_EQ(mouse->getMacro(&record), E_OK);
        EXPECT_EQ(mouse.written(),
                  wire(joined(
                      {"41 80", std::string("52 18 ") + each.number, std::string("52 19 ") + each.number,
                       std::string("51 18 ") + each.number + " 00 " + each.address + " 5D 22", "53 10 0F"})));
    }
}

TEST(RD210GetMacro, tellsThatThereIsNone)
{
    for (const char* head : {"52 18 02 00 FF 3F", "52 18 02 00 FF FF"}) {
        Mouse mouse;
        holdsMacro(*mouse.device, head, {});
        MouseMacroRecord record = dirty(2);
        EXPECT_EQ(mouse->getMacro(&record), E_OK);
        EXPECT_EQ(mouse.written(), wire("41 80 | 52 18 02"));
        EXPECT_EQ(record.button, 2);
        EXPECT_EQ(record.mode, 3);
        EXPECT_EQ(record.count, 0);
        EXPECT_EQ(std::string(record.name, 40), std::string(40, '\0'));
    }
}

/// Replies of event chunks: `count` events and, where there is room for one, an end.
std::vector<std::string> chunkReplies(std::size_t count, bool withEnd)
{
    std::vector<std::string> chunks;
    const std::size_t all = count + (withEnd ? 1 : 0);
    for (std::size_t first = 0; first < all || chunks.empty(); first += 15) {
        const std::size_t room = first == 195 ? 5 : 15;
        std::string chunk = std::string("53 ") + (first == 0 ? "10 " : "11 ") + byteText(room) + " 00";
        for (std::size_t i = first; i < std::min(all, first + room); ++i)
            chunk += i == count ? " 00 FC FE FF"
                                : " " + byteText(i) + " 5D " + byteText(2 * i) + " " + byteText((2 * i) >> 8);
        chunks.push_back(chunk);
    }
    return chunks;
}

TEST(RD210GetMacro, asksForFifteenEventsAtATime)
{
    for (const std::uint8_t count : {0, 1, 14, 15, 16, 29, 30, 194, 195, 197, 198}) {
        Mouse mouse;
        const auto chunks = chunkReplies(count, true);
        holdsMacro(*mouse.device, "52 18 02 00 B2 3C", chunks);
        MouseMacroRecord record = dirty(2);
        EXPECT_EQ(mouse->getMacro(&record), E_OK) << int(count);
        EXPECT_EQ(record.count, count);
        bool equal = true;
        for (std::size_t i = 0; i < count; ++i)
            equal &= record.events[i].code == 0x0100 + i && record.events[i].kind == 0 &&
                     record.events[i].delay == i;
        EXPECT_TRUE(equal) << int(count);
        std::vector<std::string> expected{"41 80 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 3C"};
        for (std::size_t i = 0; i < chunks.size(); ++i)
            expected.push_back(i == 0 ? "53 10 0F" : i == 13 ? "53 11 05" : "53 11 0F");
        EXPECT_EQ(mouse.written(), wire(joined(expected))) << int(count);
    }
}

TEST(RD210GetMacro, endsWithoutAnEndMark)
{
    Mouse mouse;
    holdsMacro(*mouse.device, "52 18 02 00 B2 3C", chunkReplies(200, false));
    MouseMacroRecord record = dirty(2);
    EXPECT_EQ(mouse->getMacro(&record), E_INVALID_GET);
    EXPECT_TRUE(mouse.written().ends_with("| 53 11 0F | 53 11 05"));
    // Nothing is written after the record's last place.
    EXPECT_EQ(record.button, 2);
}

WAITING_TEST(RD210GetMacro, goesOnAskingWhileTheDeviceIsThere)
{
    // An older reply with another count is none to this question.
    Mouse mouse;
    holdsMacro(*mouse.device, "52 18 02 00 B2 3C", {});
    mouse.device->answers("53 10", {"", "53 10 0E 00 01 5C", "53 10 0F 00 09 5C 00 00 00 FC"});
    MouseMacroRecord record = dirty(2);
    const auto time = milliseconds([&] { EXPECT_EQ(mouse->getMacro(&record), E_OK); });
    EXPECT_GE(time, 3900);
    EXPECT_LT(time, 9000);
    EXPECT_EQ(record.count, 1);
    EXPECT_EQ(+record.events[0].code, 9);
    EXPECT_EQ(mouse.written(),
              wire("41 80 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 3C | 53 10 0F | 53 10 0F | 53 10 0F"));
}

TEST(RD210GetMacro, endsWhenTheObjectIsClosed)
{
    Mouse mouse;
    holdsMacro(*mouse.device, "52 18 02 00 B2 3C", {});
    mouse.device->silence("53");
    MouseMacroRecord record = dirty(2);
    _error result = E_OK;
    std::thread reading([&] { result = mouse->getMacro(&record); });
    EXPECT_TRUE(mouse.device->awaitCommands("53 10"));
    EXPECT_LT(milliseconds([&] {
                  mouse->exit_device(1);
                  reading.join();
              }),
              1800);
    EXPECT_EQ(result, E_INVALID_GET);
}

WAITING_TEST(RD210GetMacro, endsWhenTheDeviceHasGone)
{
    // The reader gives up at the 31st failed read, 3 s after the first.
    Mouse mouse;
    holdsMacro(*mouse.device, "52 18 02 00 B2 3C", {});
    mouse.device->silence("53");
    MouseMacroRecord record = dirty(2);
    _error result = E_OK;
    std::thread reading([&] { result = mouse->getMacro(&record); });
    EXPECT_TRUE(mouse.device->awaitCommands("53 10"));
    EXPECT_LT(milliseconds([&] {
                  sim::unplug(mouse.path);
                  reading.join();
              }),
              9900);
    EXPECT_EQ(result, E_INVALID_GET);
}

TEST(RD210GetMacro, refusesAFourteenthButton)
{
    Mouse mouse;
    MouseMacroRecord record = dirty(13);
    EXPECT_EQ(mouse->getMacro(&record), E_INVALID_GET);
    EXPECT_EQ(mouse->getMacro(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

} // namespace
} // namespace pyrux::test
