// The keyboards: what each operation makes of a reply that does not come, or that is another command's. Each
// case waits for 3 s and more, so all run at once, each with a keyboard of its own.

#include "tests/support/debug_log.h"
#include "tests/support/keyboard.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <thread>

namespace pyrux::test {
namespace {

using Keyboard = KeyboardOf<QW210Model>;
using Host = PYRUX_QW210_Base&;

struct Scenario {
    const char* name;
    std::function<void(ScriptedDevice&)> prepare;
    std::function<_error(Host)> call;
    int result;
    std::string written;
    /// What the next call that uses the library's copy sends.
    std::string then;
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

/// The keys of three places, the middle one's with a first action byte of 4.
_error mapThree(Host host)
{
    const KeyMapEntry entries[]{{1, {1, 2, 3}}, {2, {4, 5, 6}}, {3, {7, 8, 9}}};
    return host.setKeyMapping(3, entries);
}

/// Reads the key map into a table of 5A, of which the pages in front of `page` are replaced.
_error readKeys(Host host, int page)
{
    KeyMapTable table;
    std::memset(static_cast<void*>(&table), 0x5A, sizeof table);
    const _error result = host.getKeyMappingAll(&table);
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(table.values[i], i < 16 * page ? 0 : 0x5A5A) << i;
    return result;
}

MacroRecord macro(std::uint8_t index)
{
    MacroRecord record;
    std::memset(static_cast<void*>(&record), 0, sizeof record);
    record.index = index;
    record.boundKey = 4;
    std::memset(record.name, 'M', sizeof record.name);
    return record;
}

void holdMacro(ScriptedDevice& device, const char* missing)
{
    device.answer("52 18 05", "52 18 05 00 04 5E 66");
    device.answer("53 10 0F", "53 10 0F 00 04 5C 02 00 00 FC FE FF");
    device.silence(missing);
}

auto macroWithout(const char* missing)
{
    return [missing](ScriptedDevice& device) { holdMacro(device, missing); };
}

_error setGeneral(Host host)
{
    const EffectRecord record = effect("02 11 22 33 03 00 80");
    return host.setGeneralEffect(&record);
}

/// A preview that fails leaves the copy alone.
_error setGeneralInVain(Host host)
{
    const _error result = setGeneral(host);
    EffectRecord got = effect("EE");
    EXPECT_EQ(host.getGeneralEffect(2, &got), E_OK);
    EXPECT_EQ(textOf(got), times(12, "00"));
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(host.getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, 0);
    return result;
}

_error modeAfter(Host host, std::uint8_t set)
{
    const _error result = host.setEffectMode(set);
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(host.getEffectMode(&mode), E_OK);
    EXPECT_EQ(mode, set);
    return result;
}

std::string secondEffect()
{
    return previewOf(2, 2, "88 88 88 88",
                     "0C 00 0C 00 03 00 00 00 07 00 01 00 00 01 00 C1 00 00 00 00 00 00 00 00 00 00 00 00 "
                     "00 80 00 80 0B 10 00 00 11 22 33 80 00 00 02 01 03 00 00 00 " +
                         times(48, "FF"));
}

const std::string commit = "41 80 | 51 28 | 41 01 | 50 55 | 41 00";

/// The first `count` reports of the storing.
std::string storing(std::size_t count)
{
    std::vector<std::string> pieces = reports(storingOf(bareImage210));
    pieces.resize(count);
    return joined(pieces);
}

std::vector<Scenario> scenarios()
{
    return {
        {"profile 41 80", without("41 80"), [](Host host) { return host.changeProfileId(4); }, E_OK,
         "41 80 | 51 00 00 00 04", reloading()},
        {"profile 51 00", without("51 00"), [](Host host) { return host.changeProfileId(4); }, -3,
         "41 80 | 51 00 00 00 04", reloading()},
        {"profile of another", with("51 00", "51 01 | 50 00 | 42 20 00 00 00"),
         [](Host host) { return host.changeProfileId(4); }, -3, "41 80 | 51 00 00 00 04", reloading()},
        {"read profile", without("52 00"),
         [](Host host) {
             std::uint8_t id = 0xEE;
             const _error result = host.getCurrProfileId(&id);
             EXPECT_EQ(id, 0xEE);
             return result;
         },
         -3, "41 80 | 52 00", ""},
        {"reset 50 10", without("50 10"), [](Host host) { return host.resetProfile(0); }, -3,
         "41 01 | 50 10 | 50 55 | 41 00", reloading()},
        {"reset 50 55", without("50 55"), [](Host host) { return host.resetProfile(0); }, E_OK,
         "41 01 | 50 10 | 50 55 | 41 00", reloading()},
        {"reset 41 01", without("41 01"), [](Host host) { return host.resetProfile(1); }, E_OK,
         "41 01 | 50 10 00 00 FF | 41 00", reloading()},
        {"reset a part", without("51 98"), [](Host host) { return host.resetPartial(0); }, -3,
         "41 80 | 51 98 01", ""},
        {"map keys", without("51 20 02"), mapThree, -3, "41 80 | 51 20 01 01 02 03 | 51 20 02 04 05 06", ""},
        {"map keys of another action", with("51 20 02", "51 20 02 05"), mapThree, -3,
         "41 80 | 51 20 01 01 02 03 | 51 20 02 04 05 06", ""},
        {"map pages", without("51 21 02"),
         [](Host host) {
             const KeyMapTable table{};
             return host.setKeyMappingAll(&table);
         },
         -3, "41 80 | 51 21 00 | 51 21 01 | 51 21 02", ""},
        {"read pages", without("52 21 02"), [](Host host) { return readKeys(host, 2); }, -3,
         "41 80 | 52 21 00 | 52 21 01 | 52 21 02", ""},
        {"read pages of another", with("52 21 02", "52 21 03"), [](Host host) { return readKeys(host, 2); },
         -3, "41 80 | 52 21 00 | 52 21 01 | 52 21 02", ""},
        {"set macro", without("51 19"),
         [](Host host) {
             MacroRecord record = macro(5);
             return host.setMacro(&record);
         },
         E_OK,
         "41 80 | 51 18 05 00 04 3C | 51 19 05 00 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D 4D | "
         "53 00 01 00 00 FC FE FF",
         ""},
        {"macro header", macroWithout("52 18 05"),
         [](Host host) {
             MacroRecord record = macro(5);
             return host.getMacro(&record);
         },
         -3, "41 80 | 52 18 05", ""},
        {"macro name", macroWithout("52 19 05"),
         [](Host host) {
             MacroRecord record = macro(5);
             const _error result = host.getMacro(&record);
             for (const char c : record.name)
                 EXPECT_EQ(c, 0);
             EXPECT_EQ(+record.eventCount, 1);
             return result;
         },
         E_OK, "41 80 | 52 18 05 | 52 19 05 | 51 18 05 00 04 5E 66 | 53 10 0F", ""},
        {"macro events", macroWithout("53 10 0F"),
         [](Host host) {
             MacroRecord record = macro(5);
             return host.getMacro(&record);
         },
         -3, "41 80 | 52 18 05 | 52 19 05 | 51 18 05 00 04 5E 66 | 53 10 0F", ""},
        {"all macros",
         [](ScriptedDevice& device) {
             device.answer("52 18", "52 18 00 00 FF 3F");
             device.answer("52 18 01", "52 18 01 00 04 3C");
             device.answer("53 10 0F", "53 10 0F 00 04 5C 02 00 00 FC FE FF");
             device.silence("52 18 02");
         },
         [](Host host) {
             static MacroList list;
             const _error result = host.getMacroAll(&list);
             EXPECT_EQ(list.count, 1U);
             EXPECT_EQ(+list.macros[0].index, 1);
             return result;
         },
         E_OK,
         "41 02 | 41 03 | 52 18 00 | 41 03 | 52 18 01 | 52 19 01 | 51 18 01 00 04 3C | 53 10 0F | "
         "41 03 | 52 18 02 | 41 00",
         ""},
        {"recording", without("41 01"), [](Host host) { return host.startRecordMacro(); }, -3, "41 01", ""},
        {"effect mode",
         [](ScriptedDevice& device) {
             device.silence("51 28");
             device.answer("52 28", "52 28 00 00 FF");
         },
         [](Host host) { return modeAfter(host, 7); }, -3, "41 80 | 51 28 00 00 07 | 41 80 | 52 28", ""},
        {"read effect mode", without("52 28"), [](Host host) { return modeAfter(host, 7); }, E_OK,
         "41 80 | 51 28 00 00 07 | 41 80 | 52 28", ""},
        {"preview 56 81", without("56 81"), setGeneralInVain, -3,
         "56 81 00 00 02 00 00 00 02 00 00 00 88 88 88 88 | 41 80 | 52 28", ""},
        {"preview 56 83", without("56 83 01"), setGeneralInVain, -3,
         secondEffect().substr(0, secondEffect().find(" | 41 80")) + " | 41 80 | 52 28", ""},
        {"preview 51 28", without("51 28"), setGeneral, E_OK, secondEffect(), ""},
        {"save 56 15", without("56 15 02"), [](Host host) { return host.saveConfig(); }, E_OK,
         joined({storing(3), commit}), ""},
        {"save 56 21", without("56 21 04"), [](Host host) { return host.saveConfig(); }, E_OK,
         joined({storing(21 + 5), commit}), ""},
        {"save 51 28", without("51 28"), [](Host host) { return host.saveConfig(); }, E_OK,
         joined({storing(54), commit}), ""},
        {"save 50 55", without("50 55"), [](Host host) { return host.saveConfig(); }, -3,
         joined({storing(54), commit}), ""},
        {"exit 41 01", without("41 01"), [](Host host) { return host.exit_device(0); }, E_OK,
         "41 01 | 41 00 | 41 00", "closed"},
    };
}

WAITING_TEST(KeyboardMissingReply, givesTheOperationsOwnCode)
{
    const std::vector<Scenario> all = scenarios();
    std::vector<std::unique_ptr<Keyboard>> keyboards;
    std::vector<std::function<void()>> running;
    for (const Scenario& scenario : all) {
        Keyboard& keyboard = *keyboards.emplace_back(std::make_unique<Keyboard>());
        scenario.prepare(*keyboard.device);
        running.emplace_back([&scenario, &keyboard] {
            EXPECT_EQ(scenario.call(*keyboard.host), scenario.result) << scenario.name;
            EXPECT_EQ(keyboard.written(), wire(scenario.written)) << scenario.name;
            if (scenario.then == "closed")
                return;
            EffectRecord record{};
            keyboard.host->getGeneralEffect(0, &record);
            EXPECT_EQ(keyboard.written(), scenario.then) << scenario.name;
        });
    }
    // No operation above misses more than two replies, and no reading after it more than one.
    EXPECT_LT(milliseconds([&] { together(running); }), 120000);
}

WAITING_TEST(KeyboardMissingReply, makesTheNextCallReadAgain)
{
    Keyboard keyboard;
    EXPECT_EQ(keyboard->changeProfileId(0), E_OK);
    keyboard.forget();
    keyboard.device->silence("56 20 02");
    EffectRecord record{};
    keyboard->getGeneralEffect(0, &record);
    const std::string first = keyboard.written();
    const std::string reading = wire(joined({eachOf("56 14", 21), eachOf("56 20", 3)}));
    EXPECT_TRUE(first.starts_with(reading)) << first;
    EXPECT_EQ(first.find("56 20 03"), std::string::npos) << first;
    holdImage(*keyboard.device, factoryImage210);
    EXPECT_EQ(keyboard->getGeneralEffect(3, &record), E_OK);
    EXPECT_EQ(keyboard.written(), reloading());
    EXPECT_EQ(textOf(record), "03 FF FF FF 03 00 FF 00 00 00 00 FF");
    EXPECT_EQ(keyboard->getGeneralEffect(3, &record), E_OK);
    EXPECT_EQ(keyboard.written(), "");
}

WAITING_TEST(KeyboardMissingReply, doesNotKeepAnObjectFromBeingMade)
{
    const auto device = std::make_shared<ScriptedDevice>(identityOf<QW210Model>());
    device->silence("56 14 03");
    device->silence("43");
    const std::string path = sim::plug(device);
    auto* const host = qw210(path.c_str());
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(takeWritten(path), wire("41 01 | 41 00 | 56 14 00 | 56 14 01 | 56 14 02 | 56 14 03 | "
                                      "41 80 | 52 28 | 42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01 | "
                                      "43 00 00 00 01"));
    sim::unplug(path);
    host->exit_device(1);
}

TEST(KeyboardMissingReply, isLoggedBehindThreeSeconds)
{
    Keyboard keyboard;
    keyboard.device->silence("41 01");
    std::int64_t time = 0;
    EXPECT_EQ(debugLinesOf([&] { time = milliseconds([&] { keyboard->startRecordMacro(); }); }),
              (Lines{hostLine<QW210Model>("startRecordMacro, #"), "[PYRUX][QW205V2]USB RX timeout",
                     hostLine<QW210Model>("startRecordMacro, ret = -3")}));
    EXPECT_GE(time, 2990);
    EXPECT_LT(time, 5900);
}

WAITING_TEST(KeyboardMissingReply, thatComesLateIsNoReplyToTheNextCommand)
{
    Keyboard keyboard;
    keyboard.device->answers("52 00", {"", "52 00 00 00 02"});
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(keyboard->getCurrProfileId(&profile), -3);
    keyboard.device->send("52 00 00 00 04");
    keyboard.settle(); // the late one has been looked at
    EXPECT_EQ(keyboard->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 2);
}

WAITING_TEST(KeyboardMissingReply, isWhatGarbageMakes)
{
    Keyboard keyboard;
    sim::setConduct(keyboard.path, {.garbage = true});
    EXPECT_EQ(keyboard->startRecordMacro(), -3);
    sim::setConduct(keyboard.path, {.shortReads = 1}); // 41 alone is no reply to 41 01
    EXPECT_EQ(keyboard->startRecordMacro(), -3);
    sim::setConduct(keyboard.path, {});
    EXPECT_EQ(keyboard->startRecordMacro(), E_OK);
}

WAITING_TEST(KeyboardMissingReply, isNotWaitedForOnceTheChannelIsClosed)
{
    Keyboard keyboard;
    keyboard.device->silence("41 01");
    std::atomic<int> result{1};
    std::thread caller([&] { result = keyboard->startRecordMacro(); });
    EXPECT_TRUE(keyboard.device->awaitCommands("41 01"));
    const auto time = milliseconds([&] {
        EXPECT_EQ(keyboard->exit_device(1), E_OK);
        caller.join();
    });
    EXPECT_EQ(result, -10);
    EXPECT_LT(time, 2500);
}

} // namespace
} // namespace pyrux::test
