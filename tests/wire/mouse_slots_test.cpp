// The slots of the wired mice.

#include "tests/support/led_mouse.h"
#include "tests/support/slots.h"

namespace pyrux::test {
namespace {

using Rows = std::vector<Slot>;

// Rows that stand in this order in the lists of several models, with arguments that make each call's reports
// its own.

Rows lights()
{
    return {
        {"setLightingInit", with(), "", "41 02 | C0 F0 00 00 01 | C0"},
        {"setLightingUninit", with(), "", "41 00"},
        {"setLightingPortColor", with(memory), "", "", "", Sort::quiet, -15},
        {"setSyncLightingData", with(zoneList(1, 5)), "", "C0 01 01 00 05 0A 0B 0C", "", Sort::quiet},
        {"setLightingTurnOff", with(), "", "C0"},
    };
}

Rows profiles()
{
    return {
        {"changeProfileId",
         with(Byte{3}),
         "",
         "41 80 | 51 00 00 00 03",
         "",
         Sort::logged,
         0,
         {"change profile id = 3"}},
        {"getCurrProfileId",
         with(memory),
         "EE",
         "41 80 | 52 00",
         "02",
         Sort::logged,
         0,
         {"get profile id = 2"}},
        {"resetProfile", with(Byte{1}), "", "41 01 | 50 10 00 00 FF | 41 00"},
        {"resetPartial", with(Byte{1}), "", "41 80 | 51 98 04 | 51 22 00 00 C0 C0"},
    };
}

Rows effects()
{
    return {
        {"setEffectMode", with(Byte{254}), "", "41 80 | 51 28 00 00 FE"},
        {"getEffectMode", with(memory), "EE", "41 80 | 52 28", "04"},
        // Mode 2, speed 3, direction, brightness 128, color.
        {"setGeneralEffect", with(memory), "02 03 01 80 11 22 33",
         "41 80 | 51 2B 00 00 02 28 00 FF FF 40 11 22 33 | 41 80 | 51 28 00 00 02"},
        {"getGeneralEffect", with(memory), "01", "41 80 | 52 2B 00 00 01", ""},
        {"setCustomEffect", with(memory), "01 02 03 04 05 06",
         "41 80 | 51 A8 00 00 01 02 03 04 05 06 | 41 80 | 51 28 00 00 B0"},
        {"getCustomEffect", with(memory), "", "41 80 | 52 A8", "11 12 13 14 15 16"},
    };
}

/// Leaves out the pointer's and the double-click's speed, which are this machine's own.
Call withoutSystemSettings(const Call& call)
{
    return [call](void* object, std::size_t number, Byte* memory) {
        const std::intptr_t result = call(object, number, memory);
        memory[45] = memory[46] = 0;
        return result;
    };
}

Rows keysAndRest()
{
    return {
        {"setKeyMapping", with(Byte{2}, std::uint16_t{0x1234}), "",
         "41 80 | 52 10 | 51 20 B2 00 34 12 | 51 18 02 00 FF 3F"},
        // Thirteen codes 0x03FF.
        {"setKeyMappingAll", with(memory), times(13, "FF 03"), "41 80 | 52 10 | 51 22 00 00 10 10"},
        {"getKeyMappingAll", with(memory), "",
         "41 80 | 52 18 00 | 53 10 02 | 52 18 01 | 53 10 02 | 52 18 02 | 53 10 02 | 52 18 03 | 53 10 02 | "
         "52 18 04 | 53 10 02 | 52 18 05 | 53 10 02 | 52 18 06 | 52 20 BE | 52 18 07 | 53 10 02 | 52 18 08 | "
         "53 10 02 | 52 18 09 | 53 10 02 | 52 18 0A | 53 10 02 | 52 18 0B | 53 10 02 | 52 18 0C | 53 10 02 | "
         "52 10 | 52 22",
         times(6, "FF 03") + " 00 00 " + times(6, "FF 03")},
        {"setMouseCombo", with(Byte{0}), "", "41 80 | 41 80 | 52 10"},
        {"getMouseCombo", with(memory), "EE", "41 80 | 52 10", "00"},
        {"startRecordMacro", with(), "", "41 01 | 51 22 00 00 C0 C0"},
        {"stopRecordMacro", with(), "", "41 80"},
        // Button 5, mode 3.
        {"setMacro", with(memory), "05 " + times(40, "00") + " 03", "41 80 | 52 22 | 51 18 05 00 FF 3F"},
        {"getMacro", with(memory), "06", "41 80 | 52 18 06", "06 " + times(40, "00") + " 03"},
        {"clearMacro", with(Byte{4}), "", "41 80 | 52 22 | 51 18 04 00 FF 3F"},
        // Level 1 current, level 1 enabled, middle double-click speed.
        {"setPerformance", with(memory), "01 " + times(29, "00") + " 01 " + times(15, "00") + " 06",
         "41 80 | 51 9B 00 00 01 00 02 03 04 05 06 | "
         "51 40 00 00 00 01 FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00 02 0A 10 | "
         "51 F0 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 FF"},
        // Seven levels of 100, all enabled.
        {"getPerformance", withoutSystemSettings(with(memory)), "", "41 80 | 52 40 | 52 9B | 52 F0 | 52 10",
         "00 " + times(14, "64 00") + " " + times(7, "01")},
        {"changeDpiLevel", with(Byte{1}), "", "41 80 | 52 9B | 52 40 | 51 40 00 00 01 07"},
        {"startSurfaceLearning", with(), "", "41 80 | 80 01 00 00 01"},
        {"stopSurfaceLearning", with(), "", "80 01"},
        {"getSurfaceLearningStatus", with(memory), "EE", "41 80 | 80 00", "01"},
        {"getSurfaceLearningResult", with(at(0), at(1)), "EE EE", "41 80 | 52 40 | 52 9B | 52 F0 | 52 10",
         "00 00"},
        {"registerNotify", with(&noted), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"saveConfig", with(), "", "41 01 | 50 55 | 41 00"},
    };
}

// What RD110 has beside.

void withoutMacros(ScriptedDevice& device)
{
    for (int button = 0; button < 13; ++button)
        device.answer("52 18 " + hexByte(button), "52 18 " + hexByte(button) + " 00 FF 3F");
}

const Slot test{"test", with(), "", "41 80"};
const Slot getMacroAll{"getMacroAll",
                       with(memory),
                       "EE",
                       "41 80 | 52 18 00 | 52 18 01 | 52 18 02 | 52 18 03 | 52 18 04 | 52 18 05 | 52 18 06 | "
                       "52 18 07 | 52 18 08 | 52 18 09 | 52 18 0A | 52 18 0B | 52 18 0C",
                       "00 00 00 00",
                       Sort::logged,
                       0,
                       {},
                       withoutMacros};
const Slot exitDevice{"exit_device", with(Byte{0}), "", "41 01 | 41 00", "", Sort::exit};

void answer(ScriptedDevice& device)
{
    device.answer("52 00", "52 00 00 00 02");
    device.answer("52 10", "52 10 00 00 00 00 00 00 00 00 00 00 FF");
    device.answer("52 18 06", "52 18 06 00 FF 3F");
    device.answer("52 22", "52 22 00 00 10 10");
    device.answer("52 28", "52 28 00 00 04");
    device.answer("52 2B", "52 2B 00 00 01");
    device.answer("52 40", "52 40 00 00 00 07");
    device.answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
    device.answer("52 A8", "52 A8 00 00 11 12 13 14 15 16");
    device.answer("80 00", "80 00 00 00 01");
}

Rows joinedRows(const std::vector<Rows>& parts)
{
    Rows all;
    for (const Rows& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// One size of memory holds all records, that of thirteen macros too.
SlotTable tableOf(std::string_view model, const std::vector<Rows>& parts)
{
    return {.model = std::string(model), .slots = joinedRows(parts), .prepare = answer, .room = 16384};
}

const AddSlotTables mice([] {
    std::vector<SlotTable> tables{
        tableOf("rd210", {profiles(), keysAndRest(), {exitDevice}}),
        tableOf("rd110", {lights(), profiles(), effects(), keysAndRest(), {test, getMacroAll, exitDevice}}),
    };
    forEachOf(PlainLedMouseModels<>(), [&]<class Model>() {
        tables.push_back(
            tableOf(Model::own.factoryName, {lights(), profiles(), effects(), keysAndRest(), {exitDevice}}));
    });
    return tables;
});

} // namespace
} // namespace pyrux::test
