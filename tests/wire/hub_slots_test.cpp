// The slots of the lighting controllers.

#include "tests/support/slots.h"

#include <span>

namespace pyrux::test {
namespace {

std::string glowHubDark()
{
    const std::string dark = " | 01 | 82";
    return "00 07 00 30" + dark + " | 00 07 01 30" + dark + " | 00 07 02 30" + dark + " | 00 07 03 30" +
           dark + " | 80 05";
}
constexpr const char* glowHub2Dark =
    "80 16 02 01 | 80 16 02 02 | 80 16 02 02 01 | 80 16 02 02 02 | 80 16 02 02 03";
constexpr const char* playDockDark = "80 09 01 | 80 09 02 | 80 09 03";

/// Zones 0, 2 and others: four bytes each, then the color.
constexpr const char* fiveZones = "00000000 02000000 00000000 00000000 00000000 0A0B0C";
constexpr const char* fourZones = "00000000 02000000 00000000 00000000 0A0B0C";
constexpr const char* threeZones = "00000000 02000000 00000000 0A0B0C";

std::vector<Slot> glowHubSlots()
{
    const std::string all = times(20, "0A 0B 0C");
    return {
        {"setLightingInit", with(), "", "80 01 01 02 | 80 01 03 02 | " + glowHubDark()},
        {"setLightingUninit", with(), "", "80 01 01 | 80 01 03"},
        {"setLightingPortColor", with(memory), fiveZones,
         "00 07 01 30 " + all + " | 01 " + times(21, "0A 0B 0C") + " | 82 " + times(7, "0A 0B 0C"), "",
         Sort::quiet},
        {"setSyncLightingData", with(zoneList(2, 1)), "", "00 07 01 30 00 00 00 0A 0B 0C | 01 | 82", "",
         Sort::quiet},
        {"setLightingTurnOff", with(), "", glowHubDark()},
        {"setEffectParameter", with(memory), "02 03 10 04 80 11 22 33",
         "80 01 01 | 80 0B 02 02 03 10 03 80 11 22 33", "01 03 10 04 80 11 22 33"},
        {"getEffectParameter", with(memory), "03", "80 01 05 03 | 80 0B 01 04", "02 00 00 03 FF"},
        {"setEffectCustomize", with(Byte{3}, memory), "01 02 03 04 05", "00 10 02 02 30 05 | 01 | 82"},
        {"getEffectCustomize", with(Byte{3}, memory), "", "80 10 01 02 30 | 80 10 01 02 30 | 80 10 01 02 30",
         "00 00 00 00 21"},
        {"setRgbLightingEffectParameter", with(memory), "09 02 10 05 80 11 22 33",
         "80 01 03 | 80 04 02 10 04 80 11 22 33"},
        {"getRgbLightingEffectParameter", with(memory), "09", "80 01 05 03 | 80 0A 01", "09 05 06 08"},
        {"setLEDSize", with(Byte{4}, Byte{7}, Byte{8}), "", "80 0D 02 08 07 08"},
        {"getLEDSize", with(Byte{3}, at(0), at(1)), "", "80 0D 01 04", "31 32"},
        {"setUID", with(memory), "41 42 43", "80 0C 02 41 42 43"},
        {"getUID", with(memory), "", "80 0C 01", "51 52 53"},
        {"setIdentify", with(Byte{15}), "", "80 15 5E 0F"},
        {"saveConfig", with(), "", "80 12 5A A5"},
        {"resetConfig", with(Byte{9}), "", "80 13 55 AA 09"},
        {"resetData", with(), "", "80 16 56 78 | 80 01 05 03 | 80 0B 01 01 | 80 01 02 | 80 01 01"},
        {"getVersion", with(memory), "", "80 14 01", "34 12"},
        {"setMultilayerMode", with(Byte{6}), "", "80 17 02 06"},
        {"getMultilayerMode", with(memory), "", "80 17 01", "61"},
        {"registerNotify", with(&notedByValue<8>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", "", "", Sort::exit},
        {"setEffectMode", with(Byte{1}, Byte{7}), "", "80 01 01 | 80 20 01 07"},
        {"getEffectMode", with(Byte{3}, memory), "EE", "80 01 05 03 | 80 0B 01 01", "00"},
        {"setRgbEffectMode", with(Byte{9}, Byte{6}), "", "80 01 03 | 80 21 00 06"},
        {"getRgbEffectMode", with(Byte{9}, memory), "EE", "80 01 05 03 | 80 0A 01", "05"},
    };
}

std::vector<Slot> glowHub2Slots()
{
    // The bytes 8, 7, 5, 1 of an effect in one argument, the first one lowest.
    return {
        {"setLightingInit", with(), "", glowHub2Dark},
        {"setLightingUninit", with(), "", "80 16 02 04"},
        {"setLightingPortColor", with(memory), fiveZones, "80 16 02 02 01 0A 0B 0C", "", Sort::quiet},
        {"setSyncLightingData", with(zoneList(2, 1)), "", "80 16 02 02 01 0A 0B 0C", "", Sort::quiet},
        {"setLightingTurnOff", with(), "", glowHub2Dark},
        {"setARGBEffectParameter", with(Byte{2}, std::uint32_t{0x01050708}, Byte{4}), "",
         "80 0B 02 0F 08 07 04 01 03"},
        {"getARGBEffectParameter", with(Byte{3}, memory), "", "80 0B 01 0F", "01 02 04 04 06"},
        {"setARGBCustomize", with(Byte{4}, memory), "41 42 43", "80 10 02 0F 0C 41 42 43"},
        {"getARGBCustomize", with(Byte{4}, memory), "", "80 10 01 0F 0C", "21 22 23"},
        {"setLayerSelect", with(Byte{9}), "", "80 17 09"},
        {"setRGBEffectParameter", with(Byte{6}, Byte{7}, Byte{5}), "", "80 0A 02 06 07 04"},
        {"getRGBEffectParameter", with(at(0), at(1), at(2)), "", "80 0A 01", "05 06 08"},
        {"setRGBCustomize", with(memory), "0A 0B 0C", "80 11 02 0A 0B 0C | 80 0A 02 04"},
        {"getRGBCustomize", with(memory), "", "80 11 01", "34 12 56"},
        {"setRGBFollowParameter", with(Byte{9}, Byte{1}, Byte{5}), "", "80 18 02 09 01 04"},
        {"getRGBFollowParameter", with(at(0), at(1), at(2)), "EE EE EE", "80 18 01", "EE EE EE"},
        {"registerNotify", with(&notedByValue<11>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", "80 16 02 04", "", Sort::exit},
    };
}

std::vector<Slot> tintHubSlots()
{
    return {
        {"setLightingInit", with(), "", "41 03 | C0 F0 | C0 02"},
        {"setLightingUninit", with(), "", "41 00"},
        // The head of the frame comes with setLightingInit.
        {"setLightingPortColor", with(memory), fourZones, "00 00 00 00 00 00 00 0A 0B 0C", "", Sort::quiet},
        {"setSyncLightingData", with(zoneList(2, 1)), "", "", "", Sort::quiet},
        {"setLightingTurnOff", with(), "", "C0 02"},
        {"setEffectParameter", with(Byte{1}, Byte{5}, Byte{5}, memory), "0A 0B 0C",
         "41 01 | 51 2B 00 00 01 26 20 FF FF FF 0A 0B 0C | 51 28 00 00 01 | 50 55 | 41 00"},
        {"getEffectParameter", with(at(0), at(1), at(2), at(3)), "01", "52 2C 00 00 01", "01 05 03 0A 0B 0C"},
        {"getEffectStandardMode", with(memory), "", "52 28", "03"},
        {"setPortMultiColor", with(memory), "01 02 03 04 05 06 07 08 09 0A 0B 0C 03",
         "41 80 | 51 28 00 00 04 | 51 30 | 51 A8 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C | "
         "51 2C 00 00 04 00 00 FF FF 7F FF FF FF 00 00 00 " +
             times(48, "FF")},
        {"getPortMultiColor", with(memory), "", "41 80 | 52 A8 | 52 2C FF FF 04 " + times(59, "FF"),
         "21 22 23 24 25 26 27 28 29 2A 2B 2C 03"},
        {"setEffectMultilayer", with(memory),
         "04 01 11 12 13 05 05 21 22 23 00 01 31 32 33 09 06 41 42 43 51 52 53 54",
         "41 01 | 51 2B 01 00 04 01 00 FF FF FF 11 12 13 | 51 28 00 00 04 | 50 55 | 41 00 | "
         "41 01 | 51 2B 01 00 05 05 00 FF FF FF 21 22 23 | 51 28 00 00 05 | 50 55 | 41 00 | "
         "41 01 | 41 01 | " // two layers that are refused after their first frame
         "41 01 | 51 A0 01 00 00 01 00 00 51 52 53 54 | 51 28 00 00 E0 | 50 55 | 41 00"},
        {"exit_device", with(Byte{0}), "", "41 00", "", Sort::exit},
    };
}

std::vector<Slot> playDockSlots()
{
    // An effect with all its bytes; byte 31 is the rate.
    constexpr const char* effect =
        "EE 08 01 0A 0B 0C 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 "
        "35 36 EE EE EE 07";
    const std::string effectOnWire = "08 02 0A 0B 0C 36 " + counting(0x21, 16) + " 31 32 33 34 35";
    // What the device answers to the gets: speed 1, of which the wire has 3 less.
    const std::string got = "EE 05 01 1A 1B 1C " + counting(0x41, 16) + " 51 52 53 54 55 56 EE EE EE 07";
    return {
        {"setLightingInit", with(), "", std::string("80 01 02 01 | ") + playDockDark},
        {"setLightingUninit", with(), "", "80 01 02"},
        {"setLightingPortColor", with(memory), threeZones, "80 09 02 01 0A 0B 0C", "", Sort::quiet},
        {"setSyncLightingData", with(zoneList(2, 1)), "", "80 09 02 00 0A 0B 0C", "", Sort::quiet},
        {"setLightingTurnOff", with(), "", playDockDark},
        {"setEffectParameter", with(memory), effect, "80 03 02 FF " + effectOnWire},
        {"getEffectParameter", with(memory), effect, "80 03 01 FF", got},
        {"getAnyEffectParameter", with(memory), effect, "80 04 01 FF 08", got},
        {"setEffectMode", with(Byte{9}, Byte{8}), "", "80 06 02 FF 08"},
        {"getEffectMode", with(Byte{9}, memory), "EE", "80 03 01 FF", "05"},
        {"setBottomEffectParameter", with(memory), "0A 0B 0C", "80 11 02 FF 0A 0B 0C"},
        {"getBottomEffectParameter", with(memory), "", "80 11 01 FF", "61 62 63"},
        {"saveConfig", with(), "", "80 B0 02"},
        {"resetConfig", with(Byte{9}), "", "80 B1 02"},
        {"resetData", with(), "", "80 B6 02"},
        {"getVersion", with(memory), "", "80 B4 01", "34 12"},
        {"registerNotify", with(&notedByValue<33>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", "", "", Sort::exit},
    };
}

/// Black frames for all places of a strand controller.
std::string strandDark()
{
    std::string text;
    for (const char* port : {"01", "02", "04"})
        for (const char* subPort : {"00", "01", "02", "04", "08", "10"})
            text += std::string(text.empty() ? "" : " | ") + "00 09 " + port + " " + subPort +
                    " 3C | 01 09 | 82 09";
    return text;
}

/// A color in 60 LEDs.
std::string strandFrame(const std::string& place, const std::string& color)
{
    const ByteVector all = bytes(times(60, color));
    const auto part = [&](std::size_t from, std::size_t count) {
        return hex(std::span(all).subspan(from, count));
    };
    return "00 09 " + place + " 3C " + part(0, 59) + " | 01 09 " + part(59, 62) + " | 82 09 " + part(121, 59);
}

std::vector<Slot> strandSlots()
{
    // Effect 5, speed 3, A, B, color, port 2, fan 4.
    constexpr const char* effect = "05 EE 03 0A 0B 11 22 33 02 04";
    constexpr const char* got = "07 EE 05 1A 1B 21 22 23 02 04";
    const std::string id = counting(0x61, 32);
    std::string eighteen = "0B000000"; // fan 1 of port 1
    for (int i = 0; i < 17; ++i)
        eighteen += " 00000000";
    const std::string zones = eighteen + " 0A0B0C";
    std::string table = "02 04";
    for (int i = 0; i < 10; ++i)
        table += " 0" + std::to_string(i) + " 05 1A 21 22 23 1B E" + std::to_string(i);
    const std::string overlay = "02 " + counting(0x41, 29);
    const std::string custom = "EE EE EE EE " + counting(1, 12);
    return {
        {"setLightingInit", with(), "", "80 01 02 01 | " + strandDark()},
        {"setLightingUninit", with(), "", "80 01 02"},
        {"setLightingPortColor", with(memory), zones, strandFrame("01 01", "0A 0B 0C"), "", Sort::quiet},
        {"setSyncLightingData", with(zoneList(14, 1)), "", "00 09 01 08 3C 00 00 00 0A 0B 0C | 01 09 | 82 09",
         "", Sort::quiet},
        {"setLightingTurnOff", with(), "", strandDark()},
        {"setEffectParameter", with(memory), effect, "80 03 02 02 08 05 02 0A 11 22 33 0B"},
        {"getEffectParameter", with(memory), effect, "80 03 01 02 08", got},
        {"getAnyEffectParameter", with(memory), effect, "80 04 01 02 08 05", got},
        {"getAllEffectParameter", with(memory), "02 04", "80 0C 01 02 08 | 81 0C 01 02 08", table},
        {"setEffectCustomize", with(Byte{2}, memory), custom, "80 08 02 02 00 " + counting(1, 12)},
        {"getEffectCustomize", with(Byte{2}, memory), "EE EE EE EE", "80 08 01 02",
         "EE EE EE EE " + counting(0x71, 12)},
        {"setGen1Size", with(memory), "03 05 06", "80 06 02 02 05 06"},
        {"getGen1Size", with(memory), "03", "80 06 01 04", "03 05 0C"},
        {"getGen2Size", with(memory), "01", "80 07 01 01", "01 03 14 10 0C"},
        {"remapGen2SubPort", with(memory), "02 01 03 02 02 03 01 04 05 05 04",
         "80 0D 02 02 01 04 02 02 04 01 08 10 10 08"},
        {"setUID", with(Byte{3}, memory), id, "80 B5 02 04 " + id},
        {"getUID", with(memory), "", "80 B5 01", id},
        {"setIdentify", with(Byte{3}, Byte{5}), "", "80 0A 02 04 10"},
        {"saveConfig", with(), "", "80 B0 02"},
        {"resetConfig", with(Byte{2}), "", "80 B1 02 02"},
        {"resetData", with(), "", "80 B6 02"},
        {"getVersion", with(memory), "", "80 B4 01", "34 12"},
        {"setARGBType", with(Byte{2}, Byte{7}), "", "80 0B 02 02 07 | 80 B2 02 02"},
        {"getARGBType", with(Byte{2}, memory), "", "80 0B 01 02", "09"},
        {"refreshPortInfo", with(Byte{3}), "", "80 B2 02 04"},
        {"registerNotify", with(&notedByValue<8>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", "", "", Sort::exit},
        {"setMultilayerMode", with(Byte{5}), "", "80 C0 02 05"},
        {"getMultilayerMode", with(memory), "", "80 C0 01", "08"},
        {"setEffectMode", with(memory, Byte{7}), effect,
         "80 04 01 02 08 07 | 80 03 02 02 08 07 04 1A 21 22 23 1B", got},
        {"getEffectMode", with(at(0), at(32)), effect, "80 03 01 02 08",
         std::string(got) + " " + times(22, "00") + " 07"},
        {"setOverlayMode", with(Byte{6}), "", "80 11 02 06 32"},
        {"getOverlayMode", with(memory), "", "80 11 01", "07"},
        {"setOverlayEffectParameter", with(memory), overlay,
         "80 11 02 01 32 | 80 10 02 02 " + counting(0x41, 29)},
        {"getOverlayEffectParameter", with(memory), "02", "80 10 01 02", "02 " + counting(0x31, 29)},
        {"getOverlayEffectParameterAll", with(memory), "", "80 10 01 01 | 80 10 01 02 | 80 10 01 04",
         "01 " + counting(0x51, 29) + " 02 " + counting(0x31, 29) + " 03 " + counting(0x71, 29)},
    };
}

/// Replies of a strand controller with bytes of their own.
void answerStrand(ScriptedDevice& device)
{
    device.answer("80 B4 01", "80 B4 03 34 12");
    const std::string strandEffect = " 03 02 08 07 04 1A 21 22 23 1B";
    device.answer("80 03 01 02 08", "80 03" + strandEffect);
    device.answer("80 04 01 02 08", "80 04" + strandEffect);
    const auto entry = [](int i) {
        return " 0" + std::to_string(i) + " 04 1A 21 22 23 1B E" + std::to_string(i);
    };
    std::string first = "80 0C 03 02 08 0A", second = "81 0C 03 02 08";
    for (int i = 0; i < 10; ++i)
        (i < 7 ? first : second) += entry(i);
    device.answer("80 0C 01 02 08", first);
    device.answer("81 0C 01 02 08", second);
    device.answer("80 08 01 02", "80 08 03 02 00 " + counting(0x71, 12));
    device.answer("80 06 01 04", "80 06 03 04 05 0C");
    device.answer("80 07 01 01", "80 07 03 01 03 14 10 0C");
    device.answer("80 B5 01", "80 B5 03 " + counting(0x61, 32));
    device.answer("80 0B 01 02", "80 0B 03 02 09");
    device.answer("80 C0 01", "80 C0 03 08");
    device.answer("80 11 01 00", "80 11 03 07");
    device.answer("80 10 01 01 00", "80 10 03 01 " + counting(0x51, 29));
    device.answer("80 10 01 02 00", "80 10 03 02 " + counting(0x31, 29));
    device.answer("80 10 01 04 00", "80 10 03 04 " + counting(0x71, 29));
}

/// Replies of the others.
void answerOthers(ScriptedDevice& device)
{
    device.answer("80 0A 01", "80 0A 03 05 06 07 08 09 0A");
    device.answer("80 0A 02", "80 0A 03");
    device.answer("80 0B 01 0F", "80 0B 03 0F 01 02 03 04 05");
    device.answer("80 0B 02", "80 0B 03");
    device.answer("80 0C 01", "80 0C 03 51 52 53");
    device.answer("80 0D 01", "80 0D 03 04 31 32");
    device.answer("80 10 01 02", "00 10 03 02 30 21 | 01 | 82");
    device.answer("80 10 01 0F", "80 10 03 0F 0C 21 22 23");
    device.answer("80 11 01", "80 11 03 34 12 56");
    device.answer("80 14 01", "80 14 03 34 12");
    device.answer("80 17 01", "80 17 03 61");
    device.answer("80 18 01", "80 18 03 01 02 03");
    device.answer("80 B4 01", "80 B4 03 34 12");
    device.answer("52 28", "52 28 77 03");
    device.answer("52 2C", "52 2C 00 01 26 20 FF FF 7F 0A 0B 0C");
    device.answer("52 A8", "52 A8 00 " + counting(0x21, 12));
    const std::string effect = " 03 05 02 1A 1B 1C 56 " + counting(0x41, 16) + " 51 52 53 54 55";
    device.answer("80 03 01 FF", "80 03" + effect);
    device.answer("80 04 01 FF", "80 04" + effect);
    device.answer("80 11 01 FF", "80 11 03 61 62 63");
}

SlotTable tableOf(const char* model, std::vector<Slot> slots, void (*answer)(ScriptedDevice&))
{
    return {.model = model, .slots = std::move(slots), .prepare = answer, .lanes = true};
}

const AddSlotTables hubs([] {
    return std::vector<SlotTable>{
        tableOf("glow_hub", glowHubSlots(), answerOthers),
        tableOf("glow2", glowHub2Slots(), answerOthers),
        tableOf("tint_hub", tintHubSlots(), answerOthers),
        tableOf("playdock", playDockSlots(), answerOthers),
        tableOf("strandhub", strandSlots(), answerStrand),
        tableOf("strandhubv2", strandSlots(), answerStrand),
    };
});

} // namespace
} // namespace pyrux::test
