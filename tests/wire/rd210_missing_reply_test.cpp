// RD210: what each operation makes of a reply that does not come, or that is another command's. Each case
// waits for 2 s, so all run at once, each with a mouse of its own.

#include "tests/support/debug_log.h"
#include "tests/support/mouse.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

namespace pyrux::test {
namespace {

constexpr const char* noCombo = "52 10 00 00 00 00 00 00 00 00 00 00 FF";
constexpr const char* combo3 = "52 10 00 00 00 00 00 00 00 00 00 00 03";
constexpr const char* nameBytes = "4D";

using Host = PYRUX_RD210_Base&;

struct Scenario {
    const char* name;
    std::function<void(ScriptedDevice&)> prepare;
    std::function<_error(Host)> call;
    _error result;
    std::string written; ///< All output reports; with " ..." at the end, how they begin.
};

/// No command that begins so is answered.
auto without(const char* command)
{
    return [command](ScriptedDevice& device) { device.silence(command); };
}

/// Commands that begin so are answered by another report.
auto with(const char* command, const char* reply)
{
    return [command, reply](ScriptedDevice& device) { device.answer(command, reply); };
}

PerformanceRecord performance()
{
    PerformanceRecord record{};
    record.currentLevel = 2;
    record.levelEnabled[2] = 1;
    record.settingF0 = 0x66;
    record.settingBank = 8;
    record.pointerSpeed = 6;
    record.doubleClickSpeed = 6;
    for (DpiLevel& level : record.levels)
        level = {100, 100};
    return record;
}

constexpr const char* performanceWritten =
    "51 40 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 02 0A 10";

MouseMacroRecord macro(std::uint8_t button, std::uint8_t count)
{
    MouseMacroRecord record{};
    record.button = button;
    record.name[0] = 'M';
    record.count = count;
    return record;
}

/// Codes for one button, the others left alone.
_error mapOne(Host host, std::size_t button, std::uint16_t code)
{
    std::array<std::uint16_t, 13> map{};
    map.fill(0x03FF);
    map[button] = code;
    map[12] = 0x0C0C;
    return host.setKeyMappingAll(map.data());
}

/// Calls with outputs that must stay as they were.
template <class Value>
auto keeps(_error (PYRUX_RD210_Base::*operation)(Value*))
{
    return [operation](Host host) {
        Value output;
        std::memset(&output, 0xEE, sizeof output);
        if constexpr (requires { output.button; })
            output.button = 2;
        const Value before = output;
        const _error result = (host.*operation)(&output);
        EXPECT_EQ(std::memcmp(&output, &before, sizeof output), 0);
        return result;
    };
}

/// Reads the key map and compares one code.
auto mapHas(std::size_t button, std::uint16_t code)
{
    return [button, code](Host host) {
        std::array<std::uint16_t, 13> map{};
        const _error result = host.getKeyMappingAll(map.data());
        EXPECT_EQ(map[button], code);
        return result;
    };
}

void plainButtons(ScriptedDevice& device)
{
    device.answer("52 10", noCombo);
    device.answer("52 22", "52 22 00 00 10 10");
    for (const char* number : {"00", "01", "02", "03", "04", "05", "06", "07", "08", "09", "0A", "0B", "0C"})
        device.answer(std::string("52 18 ") + number, std::string("52 18 ") + number + " 00 FF 3F");
    for (const char* place : {"B0 00", "B1 00", "B2 00", "B3 00", "B4 00", "B5 00", "BE 00", "BF 00", "B0 01",
                              "B1 01", "B2 01", "B3 01", "B4 01"})
        device.answer(std::string("52 20 ") + place, std::string("52 20 ") + place + " 34 12");
}

constexpr const char* twoButtonsRead = "41 80 | 52 18 00 | 52 20 B0 | 52 18 01 | 52 20 B1 | ";
constexpr const char* restRead = " | 52 18 03 | 52 20 B3 | 52 18 04 | 52 20 B4 | 52 18 05 | 52 20 B5 | 52 18 "
                                 "06 | 52 20 BE | 52 18 07 | 52 20 BF | "
                                 "52 18 08 | 52 20 B0 01 | 52 18 09 | 52 20 B1 01 | 52 18 0A | 52 20 B2 01 | "
                                 "52 18 0B | 52 20 B3 01 | 52 18 0C | "
                                 "52 20 B4 01";

/// A plain device with one more rule.
template <class Rule>
auto plainBut(Rule rule)
{
    return [rule](ScriptedDevice& device) {
        plainButtons(device);
        rule(device);
    };
}

std::string partTwoUpTo(std::size_t count)
{
    std::string filled = "[FF 51 9B 00 00";
    for (int i = 5; i < 65; ++i)
        filled += " FF";
    std::vector<std::string> all{
        "41 80",      "52 22",          "51 98 10", "51 22 00 00 10 10",
        filled + "]", "51 F0 00 00 01", "52 10",    "51 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 03"};
    all.resize(count);
    return joined(all);
}

const auto changeProfile = [](Host host) { return host.changeProfileId(3); };
const auto mapTwo = [](Host host) { return host.setKeyMapping(2, 0x0009); };
const auto stepTwo = [](Host host) { return host.setKeyMapping(2, 0x0500); };
const auto setPerformance = [](Host host) {
    const PerformanceRecord record = performance();
    return host.setPerformance(&record);
};
const auto setMacro = [](Host host) {
    MouseMacroRecord record = macro(2, 16);
    return host.setMacro(&record);
};
const auto comboOn = [](Host host) { return host.setMouseCombo(1); };
const auto comboOff = [](Host host) { return host.setMouseCombo(0); };
const auto resetTwo = [](Host host) { return host.resetPartial(2); };
const auto dpiTwo = [](Host host) { return host.changeDpiLevel(2); };

const Scenario scenarios[]{
    {"profile 41 80", without("41 80"), changeProfile, E_OK, "41 80 | 51 00 00 00 03"},
    {"profile 51 00", without("51 00"), changeProfile, E_INVALID_SET, "41 80 | 51 00 00 00 03"},
    {"profile byte 1", with("51 00", "51 01 00 00 03"), changeProfile, E_INVALID_SET,
     "41 80 | 51 00 00 00 03"},
    {"profile byte 0", with("51 00", "50 00 00 00 03"), changeProfile, E_INVALID_SET,
     "41 80 | 51 00 00 00 03"},
    {"get profile 41 80", without("41 80"),
     [](Host host) {
         std::uint8_t profile = 0xEE;
         return host.getCurrProfileId(&profile);
     },
     E_OK, "41 80 | 52 00"},
    {"get profile 52 00", without("52 00"), keeps(&PYRUX_RD210_Base::getCurrProfileId), E_INVALID_GET,
     "41 80 | 52 00"},

    {"reset all 41 01", without("41 01"), [](Host host) { return host.resetProfile(1); }, E_OK,
     "41 01 | 50 10 00 00 FF | 41 00"},
    {"reset all 50 10", without("50 10"), [](Host host) { return host.resetProfile(1); }, E_INVALID_SET,
     "41 01 | 50 10 00 00 FF | 41 00"},
    {"reset all 41 00", without("41 00"), [](Host host) { return host.resetProfile(1); }, E_OK,
     "41 01 | 50 10 00 00 FF | 41 00"},
    {"reset one 50 10", without("50 10"), [](Host host) { return host.resetProfile(0); }, E_INVALID_SET,
     "41 01 | 50 10 00 00 00 ..."},
    {"reset one 50 55", without("50 55"), [](Host host) { return host.resetProfile(0); }, E_OK,
     "41 01 | 50 10 00 00 00 | 50 55 | 41 00"},

    {"part 0 51 98", without("51 98"), [](Host host) { return host.resetPartial(0); }, E_INVALID_SET,
     "41 80 | 51 98 02"},
    {"part 1 51 98", without("51 98"), [](Host host) { return host.resetPartial(1); }, E_INVALID_SET,
     "41 80 | 51 98 04"},
    {"part 1 51 22", without("51 22"), [](Host host) { return host.resetPartial(1); }, E_INVALID_SET,
     "41 80 | 51 98 04 | 51 22 00 00 C0 C0"},
    {"part 2 52 22", plainBut(without("52 22")), resetTwo, E_OK,
     "41 80 | 52 22 | 51 98 10 | 51 22 00 00 C0 C0 ..."},
    {"part 2 51 98", plainBut(without("51 98")), resetTwo, E_INVALID_SET, partTwoUpTo(3)},
    {"part 2 51 22", plainBut(without("51 22")), resetTwo, E_INVALID_SET, partTwoUpTo(4)},
    {"part 2 51 9B", plainBut(without("51 9B")), resetTwo, E_INVALID_SET, partTwoUpTo(5)},
    {"part 2 51 F0", plainBut(without("51 F0")), resetTwo, E_INVALID_SET, partTwoUpTo(6)},
    {"part 2 52 10", plainBut(without("52 10")), resetTwo, E_INVALID_SET, partTwoUpTo(7)},
    {"part 2 51 10", plainBut(without("51 10")), resetTwo, E_INVALID_SET, partTwoUpTo(8)},

    {"map 52 10", plainBut(without("52 10")), mapTwo, E_INVALID_SET, "41 80 | 52 10"},
    {"map 51 20", plainBut(without("51 20")), mapTwo, E_INVALID_SET, "41 80 | 52 10 | 51 20 B2 00 09 ..."},
    {"map byte 2", plainBut(with("51 20", "51 20 B3 00")), mapTwo, E_INVALID_SET,
     "41 80 | 52 10 | 51 20 B2 00 09 ..."},
    {"map byte 3", plainBut(with("51 20", "51 20 B2 01")), mapTwo, E_INVALID_SET,
     "41 80 | 52 10 | 51 20 B2 00 09 ..."},
    {"map 51 18", plainBut(without("51 18")), mapTwo, E_OK,
     "41 80 | 52 10 | 51 20 B2 00 09 | 51 18 02 00 FF 3F"},
    {"map 52 22", plainBut(without("52 22")), [](Host host) { return host.setKeyMapping(7, 9); },
     E_INVALID_SET, "41 80 | 52 10 | 52 22"},
    {"map 51 22", plainBut(without("51 22")), [](Host host) { return host.setKeyMapping(7, 0x0501); },
     E_INVALID_SET, "41 80 | 52 10 | 52 22 | 51 22 00 00 10 10 ..."},
    {"map level 52 9B", plainBut(without("52 9B")), [](Host host) { return host.setKeyMapping(2, 0x01E3); },
     E_OK, "41 80 | 52 10 | 52 9B | 51 20 B2 00 E3 01 | 51 18 02 00 FF 3F"},
    {"step 51 18", plainBut(without("51 18")), stepTwo, E_INVALID_SET,
     "41 80 | 52 10 | 51 18 02 00 B2 5C ..."},
    {"step byte 2", plainBut(with("51 18", "51 18 03 00 B2 5C")), stepTwo, E_INVALID_SET,
     "41 80 | 52 10 | 51 18 02 00 B2 5C ..."},
    {"step 53 00", plainBut(without("53 00")), stepTwo, E_INVALID_SET,
     "41 80 | 52 10 | 51 18 02 00 B2 5C | 53 00 02 00 01 9E 80 00 00 FC"},

    {"map all 52 10", plainBut(without("52 10")), [](Host host) { return mapOne(host, 2, 9); }, E_INVALID_SET,
     "41 80 | 52 10"},
    {"map all 51 22", plainBut(without("51 22")), [](Host host) { return mapOne(host, 2, 9); }, E_INVALID_SET,
     "41 80 | 52 10 | 51 22 00 00 10 10"},
    {"map all first", plainBut(without("51 20 B2")), [](Host host) { return mapOne(host, 2, 9); }, E_OK,
     "41 80 | 52 10 | 51 22 00 00 10 10 | 51 20 B2 00 09 | 51 18 02 00 FF 3F | 51 20 B4 01 0C 0C | 51 18 0C "
     "00 FF 3F"},
    {"map all last", plainBut([](ScriptedDevice& device) {
         device.silence("51 20 B4 01");
         device.silence("51 18 0C");
     }),
     [](Host host) { return mapOne(host, 2, 9); }, E_INVALID_SET,
     "41 80 | 52 10 | 51 22 00 00 10 10 | 51 20 B2 00 09 | 51 18 02 00 FF 3F | 51 20 B4 01 0C 0C ..."},

    {"read map 52 18", plainBut(without("52 18 02")), mapHas(2, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2" + restRead + " | 52 10 | 52 22"},
    {"read map 52 18 byte 2", plainBut(with("52 18 02", "52 18 03 00 B2 5C")), mapHas(2, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2" + restRead + " | 52 10 | 52 22"},
    {"read map 53 10", plainBut([](ScriptedDevice& device) {
         device.answer("52 18 02", "52 18 02 00 B2 5C");
         device.silence("53 10 02");
     }),
     mapHas(2, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 53 10 02 | 52 20 B2" + restRead + " | 52 10 | 52 22"},
    {"read map 53 10 byte 2", plainBut([](ScriptedDevice& device) {
         device.answer("52 18 02", "52 18 02 00 B2 5C");
         device.answer("53 10 02", "53 10 03 00 01 9E 80");
     }),
     mapHas(2, 0x1234), E_OK, std::string(twoButtonsRead) + "52 18 02 | 53 10 02 | 52 20 B2 ..."},
    {"read map 52 20", plainBut(without("52 20 B2 00")), mapHas(2, 0), E_INVALID_GET,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2"},
    {"read map level 52 9B", plainBut([](ScriptedDevice& device) {
         device.answer("52 20 B2 00", "52 20 B2 00 E3 01");
         device.silence("52 9B");
     }),
     mapHas(2, 0x01E3), E_OK, std::string(twoButtonsRead) + "52 18 02 | 52 20 B2 | 52 9B ..."},
    {"read map 52 10", plainBut(without("52 10")), mapHas(12, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2" + restRead + " | 52 10 | 52 22"},
    {"read map D8", plainBut([](ScriptedDevice& device) {
         device.answer("52 10", combo3);
         device.silence("52 20 D8");
     }),
     mapHas(3, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2" + restRead + " | 52 10 | 52 20 D8 | 52 22"},
    {"read map 52 22", plainBut(without("52 22")), mapHas(7, 0x1234), E_OK,
     std::string(twoButtonsRead) + "52 18 02 | 52 20 B2" + restRead + " | 52 10 | 52 22"},

    {"combo 52 10", plainBut(without("52 10")), comboOn, E_INVALID_SET, "41 80 | 41 80 | 52 10"},
    {"combo 51 20", plainBut(without("51 20")), comboOn, E_INVALID_SET,
     "41 80 | 41 80 | 52 10 | 51 20 B5 00 EA 01"},
    {"combo second 52 10", plainBut([](ScriptedDevice& device) {
         device.answers("52 10", {noCombo, ""});
     }),
     comboOn, E_INVALID_SET, "41 80 | 41 80 | 52 10 | 51 20 B5 00 EA 01 | 52 10"},
    {"combo 51 10", plainBut(without("51 10")), comboOn, E_INVALID_SET,
     "41 80 | 41 80 | 52 10 | 51 20 B5 00 EA 01 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 05"},
    {"combo off 51 10", plainBut([](ScriptedDevice& device) {
         device.answer("52 10", combo3);
         device.silence("51 10");
     }),
     comboOff, E_INVALID_SET, "41 80 | 41 80 | 52 10 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF"},
    {"get combo 52 10", without("52 10"), keeps(&PYRUX_RD210_Base::getMouseCombo), E_INVALID_GET,
     "41 80 | 52 10"},

    {"record 51 22", without("51 22"), [](Host host) { return host.startRecordMacro(); }, E_INVALID_SET,
     "41 01 | 51 22 00 00 C0 C0"},
    {"record 41 01", without("41 01"), [](Host host) { return host.startRecordMacro(); }, E_OK,
     "41 01 | 51 22 00 00 C0 C0"},
    {"stop recording 41 80", without("41 80"), [](Host host) { return host.stopRecordMacro(); },
     E_INVALID_SET, "41 80"},

    {"macro 52 22", plainBut(without("52 22")), setMacro, E_INVALID_SET, "41 80 | 52 22"},
    {"macro 51 18", plainBut(without("51 18")), setMacro, E_INVALID_SET, "41 80 | 52 22 | 51 18 02 00 B2 3C"},
    {"macro 51 22", plainBut(without("51 22")),
     [](Host host) {
         MouseMacroRecord record = macro(6, 1);
         return host.setMacro(&record);
     },
     E_INVALID_SET, "41 80 | 52 22 | 51 22 00 00 10 10 ..."},
    {"macro 51 19", plainBut(without("51 19")), setMacro, E_INVALID_SET,
     std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes + " ..."},
    {"macro 51 19 byte 2", plainBut(with("51 19", "51 19 03")), setMacro, E_INVALID_SET,
     std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes + " ..."},
    {"macro first chunk", plainBut(without("53 00")), setMacro, E_INVALID_SET,
     std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes +
         " | 53 00 0F 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 "
         "00 5C 00 00 "
         "00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C"},
    {"macro second chunk", plainBut(without("53 01")), setMacro, E_INVALID_SET,
     std::string("41 80 | 52 22 | 51 18 02 00 B2 3C | 51 19 02 00 ") + nameBytes +
         " | 53 00 0F 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 "
         "00 5C 00 00 "
         "00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C 00 00 00 5C | 53 01 02 00 00 5C "
         "00 00 00 FC "
         "FE FF"},
    {"clear macro 51 18", plainBut(without("51 18")), [](Host host) { return host.clearMacro(2); },
     E_INVALID_SET, "41 80 | 52 22 | 51 18 02 00 FF 3F"},
    {"get macro 52 18", without("52 18"), keeps(&PYRUX_RD210_Base::getMacro), E_INVALID_GET,
     "41 80 | 52 18 02"},
    {"get macro 52 18 byte 2", with("52 18", "52 18 03 00 FF FF"), keeps(&PYRUX_RD210_Base::getMacro),
     E_INVALID_GET, "41 80 | 52 18 02"},
    {"get macro 52 19", without("52 19"),
     [](Host host) {
         MouseMacroRecord record = macro(2, 0);
         return host.getMacro(&record);
     },
     E_INVALID_GET, "41 80 | 52 18 02 | 52 19 02 ..."},
    {"get macro 52 19 byte 2", with("52 19", "52 19 03"),
     [](Host host) {
         MouseMacroRecord record = macro(2, 0);
         return host.getMacro(&record);
     },
     E_INVALID_GET, "41 80 | 52 18 02 | 52 19 02 ..."},
    {"get macro 51 18", without("51 18"),
     [](Host host) {
         MouseMacroRecord record = macro(2, 0);
         return host.getMacro(&record);
     },
     E_INVALID_GET, "41 80 | 52 18 02 | 52 19 02 | 51 18 02 00 B2 ..."},

    {"performance 51 9B", plainBut(without("51 9B")), setPerformance, E_INVALID_SET,
     "41 80 | 51 9B 00 00 02 00 01 03 04 05 06"},
    {"performance 51 40", plainBut(without("51 40")), setPerformance, E_INVALID_SET,
     std::string("41 80 | 51 9B 00 00 02 00 01 03 04 05 06 | ") + performanceWritten + " ..."},
    {"performance 51 F0", plainBut(without("51 F0")), setPerformance, E_INVALID_SET,
     std::string("41 80 | 51 9B 00 00 02 00 01 03 04 05 06 | ") + performanceWritten +
         " | 51 F0 00 00 66 ..."},
    {"performance 52 10", plainBut(without("52 10")), setPerformance, E_OK,
     std::string("41 80 | 51 9B 00 00 02 00 01 03 04 05 06 | ") + performanceWritten +
         " | 51 F0 00 00 66 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 02 00 00 00 08"},
    {"performance 51 10", plainBut(without("51 10")), setPerformance, E_INVALID_SET,
     std::string("41 80 | 51 9B 00 00 02 00 01 03 04 05 06 | ") + performanceWritten +
         " | 51 F0 00 00 66 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF 00 00 00 08"},
    {"get performance 52 40", without("52 40"), keeps(&PYRUX_RD210_Base::getPerformance), E_INVALID_GET,
     "41 80 | 52 40"},
    {"get performance 52 9B", without("52 9B"), keeps(&PYRUX_RD210_Base::getPerformance), E_INVALID_GET,
     "41 80 | 52 40 | 52 9B"},
    {"get performance 52 F0", without("52 F0"), keeps(&PYRUX_RD210_Base::getPerformance), E_INVALID_GET,
     "41 80 | 52 40 | 52 9B | 52 F0"},
    {"get performance 52 10", without("52 10"), keeps(&PYRUX_RD210_Base::getPerformance), E_INVALID_GET,
     "41 80 | 52 40 | 52 9B | 52 F0 | 52 10"},
    {"surface result 52 40", without("52 40"),
     [](Host host) {
         std::uint8_t a = 0xEE;
         std::uint8_t b = 0xEE;
         const _error result = host.getSurfaceLearningResult(&a, &b);
         EXPECT_EQ(a, 10);
         EXPECT_EQ(b, 16);
         return result;
     },
     E_INVALID_GET, "41 80 | 52 40"},

    {"level 52 9B",
     [](ScriptedDevice& device) {
         device.silence("52 9B");
         device.answer("52 40", "52 40 00 00 00 05");
     },
     dpiTwo, E_OK, "41 80 | 52 9B | 52 40 | 51 40 00 00 02 05"},
    {"level 52 40", without("52 40"), dpiTwo, E_INVALID_SET, "41 80 | 52 9B | 52 40"},
    {"level 51 40",
     [](ScriptedDevice& device) {
         device.silence("51 40");
         device.answer("52 40", "52 40 00 00 00 05");
     },
     dpiTwo, E_INVALID_SET, "41 80 | 52 9B | 52 40 | 51 40 00 00 02 05"},

    {"surface start", without("80 01"), [](Host host) { return host.startSurfaceLearning(); }, E_INVALID_SET,
     "41 80 | 80 01 00 00 01"},
    {"surface stop", without("80 01"), [](Host host) { return host.stopSurfaceLearning(); }, E_INVALID_SET,
     "80 01"},
    {"surface status", without("80 00"), keeps(&PYRUX_RD210_Base::getSurfaceLearningStatus), E_INVALID_GET,
     "41 80 | 80 00"},

    {"save 41 01", without("41 01"), [](Host host) { return host.saveConfig(); }, E_OK,
     "41 01 | 50 55 | 41 00"},
    {"save 50 55", without("50 55"), [](Host host) { return host.saveConfig(); }, E_INVALID_SET,
     "41 01 | 50 55 | 41 00"},
    {"save 41 00", without("41 00"), [](Host host) { return host.saveConfig(); }, E_OK,
     "41 01 | 50 55 | 41 00"},

    {"exit 41 01", without("41 01"), [](Host host) { return host.exit_device(0); }, E_OK, "41 01 | 41 00"},
    {"exit 41 00", without("41 00"), [](Host host) { return host.exit_device(0); }, E_OK, "41 01 | 41 00"},
};

WAITING_TEST(RD210MissingReply, givesTheOperationsOwnCode)
{
    std::vector<std::unique_ptr<Mouse>> mice;
    std::vector<std::function<void()>> running;
    for (const Scenario& scenario : scenarios) {
        Mouse& mouse = *mice.emplace_back(std::make_unique<Mouse>());
        scenario.prepare(*mouse.device);
        running.emplace_back([&scenario, &mouse] {
            EXPECT_EQ(scenario.call(*mouse.host), scenario.result) << scenario.name;
            const std::string written = mouse.written();
            if (scenario.written.ends_with(" ...")) {
                const std::string beginning = wire(scenario.written.substr(0, scenario.written.size() - 4));
                EXPECT_TRUE(written.starts_with(beginning)) << scenario.name << ": " << written;
            } else {
                EXPECT_EQ(written, wire(scenario.written)) << scenario.name;
            }
        });
    }
    // No operation above misses more than two replies.
    EXPECT_LT(milliseconds([&] { together(running); }), 60000);
}

TEST(RD210MissingReply, isLoggedBehindTwoSeconds)
{
    Mouse mouse;
    mouse.device->silence("80 01");
    std::int64_t time = 0;
    EXPECT_EQ(
        debugLinesOf([&] { time = milliseconds([&] { mouse->stopSurfaceLearning(); }); }),
        (Lines{"[PYRUX][RD210]PYRUX::PYRUX_RD210::stopSurfaceLearning, #", "[PYRUX][RD210]USB RX timeout",
               "[PYRUX][RD210]PYRUX::PYRUX_RD210::stopSurfaceLearning, ret = -2"}));
    EXPECT_GE(time, 1990);
    EXPECT_LT(time, 3900);
}

TEST(RD210MissingReply, doesNotKeepAnObjectFromBeingMade)
{
    auto device = std::make_shared<ScriptedDevice>();
    device->silence("43");
    const std::string path = sim::plug(device);
    PYRUX_RD210_Base* host = nullptr;
    const auto time = milliseconds([&] { host = rd210(path.c_str()); });
    ASSERT_NE(host, nullptr);
    EXPECT_GE(time, 1990);
    EXPECT_LT(time, 3900);
    EXPECT_EQ(host->changeProfileId(1), E_OK);
    EXPECT_EQ(takeWritten(path), wire(joined({RD210Model::facts().opening, "41 80 | 51 00 00 00 01"})));
    host->exit_device(1);
}

WAITING_TEST(RD210MissingReply, thatComesLateIsNoReplyToTheNextCommand)
{
    Mouse mouse;
    mouse.device->answers("52 00", {"", "52 00 00 00 02"});
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_INVALID_GET);
    mouse.device->send("52 00 00 00 04");
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK); // the late one has been looked at
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 2);
}

TEST(RD210StalledDevice, isGivenOneSecondForAWriteAndTwoForTheReply)
{
    // The writes that hang are released, and the device closed, at the end: nothing is left behind.
    const int handles = sim::openHandles();
    const int writers = sim::writersInside();
    Mouse mouse;
    sim::setConduct(mouse.path, {.writeTime = std::chrono::seconds(60)});
    const auto time = milliseconds([&] { EXPECT_EQ(mouse->stopSurfaceLearning(), E_INVALID_SET); });
    EXPECT_GE(time, 2990);
    EXPECT_LT(time, 5900);
    // A write that hangs holds the end up for no longer than the rest of the end.
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(mouse->exit_device(1), E_OK); }), 1800);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    sim::releaseWrites(mouse.path);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while ((sim::writersInside() > writers || sim::openHandles() > handles) &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(sim::writersInside(), writers);
    EXPECT_EQ(sim::openHandles(), handles);
}

TEST(RD210Reader, survivesThirtyFailedReadsAndEndsAtTheNext)
{
    Mouse mouse;
    forgetDebugOutput();
    sim::setConduct(mouse.path, {.readFailures = 30});
    // The reader pauses for 100 ms after each failure: the first reply comes too late.
    const auto time = milliseconds([&] {
        EXPECT_EQ(mouse->stopSurfaceLearning(), E_INVALID_SET);
        int attempts = 1;
        while (mouse->stopSurfaceLearning() != E_OK && attempts < 10)
            ++attempts;
        EXPECT_LT(attempts, 10);
    });
    EXPECT_GE(time, 2900);
    for (const std::string& line : debugLines())
        EXPECT_NE(line, "[PYRUX][RD210]RD210 USB fail");
    // Its failures are counted over its life.
    sim::setConduct(mouse.path, {.readFailures = 1});
    const Lines lines = debugLinesWith("[PYRUX][RD210]RD210 USB fail");
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][RD210]RD210 USB fail"), 1);
    // Now nobody reads the replies.
    mouse.forget();
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), wire("80 01"));
}

} // namespace
} // namespace pyrux::test
