// The slots of the keyboards.

#include "tests/support/keyboard.h"
#include "tests/support/slots.h"

namespace pyrux::test {
namespace {

/// All keys but number 5 in black, in reports of up to 15.
std::string otherKeys(int leds)
{
    std::vector<std::string> pieces;
    ByteVector keys;
    const auto close = [&] {
        ByteVector report{0xC0, 0x01, Byte(keys.size()), 0};
        for (const Byte key : keys)
            report.insert(report.end(), {key, 0, 0, 0});
        pieces.push_back(hex(report));
        keys.clear();
    };
    for (int key = 0; key < leds; ++key) {
        if (key == 5)
            continue;
        keys.push_back(Byte(key));
        if (keys.size() == 15)
            close();
    }
    if (!keys.empty())
        close();
    return joined(pieces);
}

/// Where the second record of a call stands.
constexpr std::size_t second = 24000;

template <class Model>
std::vector<Slot> slotsOf()
{
    const std::size_t mask = Model::maskBytes;
    std::string macros = "41 02";
    for (const std::string& read : reports(eachOf("52 18", 20)))
        macros += " | 41 03 | " + read;
    return {
        {"setLightingInit", with(), "", "41 03 | C0 F0 00 00 01 | C0"},
        {"setLightingUninit", with(), "", "41 00"},
        {"setLightingPortColor", with(memory), "0A 0B 0C", "00 00 00 00 0A 0B 0C", "", Sort::quiet},
        {"setSyncLightingData", with(keyList(5)), "",
         joined({"C0 01 01 00 05 0A 0B 0C", otherKeys(Model::directLeds)}), "", Sort::quiet},
        {"setLightingTurnOff", with(), "", "C0"},
        {"changeProfileId", with(Byte{3}), "", "41 80 | 51 00 00 00 03"},
        {"getCurrProfileId", with(memory), "", "41 80 | 52 00"},
        {"resetProfile", with(Byte{1}), "", "41 01 | 50 10 00 00 FF | 41 00"},
        {"resetPartial", with(Byte{1}), "", "41 80 | 51 98 02"},
        {"setKeyMapping", with(std::uint32_t{2}, memory), "05 01 02 03 06 04 05 06",
         "41 80 | 51 20 05 01 02 03 | 51 20 06 04 05 06"},
        {"setKeyMappingAll", with(memory), "34 12",
         "41 80 | 51 21 00 00 34 12 | " + eachOf("51 21", 16).substr(std::string("51 21 00 | ").size())},
        {"getKeyMappingAll", with(memory), "", "41 80 | " + eachOf("52 21", 16)},
        {"startRecordMacro", with(), "", "41 01"},
        {"stopRecordMacro", with(), "",
         "41 80 | " + previewOf(0, 1, "88 88 88 88", "01 00 00 00 00 01 00 C1 " + times(12, "00"))},
        {"setMacro", with(memory), "05 " + times(18, "00") + " 03", "41 80 | 51 18 05 00 FF 3F"},
        {"getMacro", with(memory), "06", "41 80 | 52 18 06", "06 " + times(18, "00") + " 03"},
        {"getMacroAll", with(memory), "", macros + " | 41 00"},
        {"clearMacro", with(Byte{4}), "", "41 80 | 51 18 04 00 FF 3F"},
        {"setEffectMode", with(Byte{7}), "", "41 80 | 51 28 00 00 07"},
        {"getEffectMode", with(memory), "", "41 80 | 52 28"},
        {"setGeneralEffect", with(memory), "00 11 22 33 03 00 80",
         previewOf(0, 1, "88 88 88 88", "01 00 00 00 00 01 00 C1 00 00 00 00 11 22 33 80 00 00 00 00")},
        {"getGeneralEffect", with(Byte{1}, memory), "", ""},
        // Of an empty memory: effect 10 is white, and effect 17 is there.
        {"getGeneralEffectAll", with(memory), "", "",
         times(121, "00") + " FF FF FF " + times(80, "00") + " 11 FF FF FF 03 00 FF 00 00 00 00 FF"},
        {"setCustomEffect", with(memory, at(second)), "09 11 22 33 03 00 80",
         previewOf(4, 1, "BB BB BB BB",
                   "01 00 00 00 80 01 00 00 FF 00 00 00 00 00 FF 80 00 00 00 00 " + times(504, "00")),
         "04 11 22 33 03 00 80"},
        {"getCustomEffect", with(memory, at(second)), "", ""},
        {"setMultilayerEffect", with(memory), "",
         previewOf(18, 5, "AA AA AA AA",
                   "12 00 12 00 06 00 00 00 0A 00 01 00 0C 00 02 00 0E 00 03 00 10 00 04 00 "
                   "00 01 00 C1 00 00 00 00 00 00 00 00 00 00 00 00 10 00 00 C1 00 00 00 00 "
                   "10 00 00 C1 00 00 00 00 10 00 00 C1 00 00 00 00 10 00 00 C1 00 00 00 00 " +
                       times(5 * mask, "FF"))},
        {"getMultilayerEffect", with(memory), "", "", times(4, "10 FF FF FF 03 00 FF 00 00 00 00 FF")},
        {"setMultizoneEffect", with(memory, at(second)), "",
         previewOf(19, 8, "88 08 88 88",
                   "21 00 21 00 09 00 00 00 0B 00 01 00 0F 00 02 00 11 00 03 00 15 00 04 00 17 00 05 00 "
                   "1B 00 06 00 1D 00 07 00 " +
                       times(4, "10 00 00 C1 00 00 00 00 00 01 00 C1 00 00 00 00 00 00 00 00 00 00 00 00") +
                       " " + times(8 * mask, "00"))},
        {"getMultizoneEffect", with(memory, at(second)), "", "",
         times(4, "10 FF FF FF 03 00 FF 00 00 00 00 FF")},
        {"setSystemStatusEffect", with(memory), "", ""},
        {"registerSystemStatusNotify", with(&noted), "", ""},
        {"unRegisterSystemStatusNotify", with(), "", ""},
        {"registerNotify", with(&noted), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"saveConfig", with(), "",
         joined({storingOf(Model::bareImage), "41 80 | 51 28 | 41 01 | 50 55 | 41 00"})},
        {"exit_device", with(Byte{0}), "", "41 01 | 41 00 | 41 00", "", Sort::exit},
    };
}

void answer(ScriptedDevice& device)
{
    for (const std::string& read : reports(eachOf("52 18", 20)))
        device.answer(read, read + " 00 FF 3F");
}

/// One size of memory holds all records, that of twenty macros too.
template <class Model>
SlotTable table()
{
    return {.model = Model::facts().factoryName, .slots = slotsOf<Model>(), .prepare = answer, .room = 32768};
}

const AddSlotTables keyboards([] {
    std::vector<SlotTable> tables;
    forEachOf(KeyboardModels(), [&]<class Model>() { tables.push_back(table<Model>()); });
    return tables;
});

} // namespace
} // namespace pyrux::test
