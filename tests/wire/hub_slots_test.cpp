// The boundary of the lighting controllers: slots of the virtual table, the object's fields, the core's hooks
// behind them. Nothing here uses the interfaces' declarations.

#include "tests/support/debug_log.h"
#include "tests/support/hub.h"
#include "tests/support/member_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

template <class... Values>
std::int32_t callEntry(void* object, std::size_t number, Values... values)
{
    using Operation = std::int32_t(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[number])(object, values...);
}

/// Calls an entry; `memory` is what pointers of the call point to.
using Call = std::function<std::int32_t(void* object, std::size_t number, Byte* memory)>;

struct Slot {
    const char* name;
    Call call;
    const char* memory;  ///< Bytes of the record, for the slots that take one.
    std::string written; ///< What the call sends.
    bool logged = true;
    std::string after = {}; ///< What the record begins with behind the call; empty: as before.
};

/// A call with plain arguments.
template <class... Values>
Call with(Values... values)
{
    return [=](void* object, std::size_t number, Byte*) { return callEntry(object, number, values...); };
}

/// Bytes, then a pointer to the record.
template <class... Values>
Call withRecord(Values... values)
{
    return [=](void* object, std::size_t number, Byte* memory) {
        return callEntry(object, number, values..., static_cast<void*>(memory));
    };
}

/// Bytes, then two or three pointers.
template <class... Values>
Call withTwo(Values... values)
{
    return [=](void* object, std::size_t number, Byte* memory) {
        return callEntry(object, number, values..., memory, memory + 1);
    };
}

std::int32_t callWithThree(void* object, std::size_t number, Byte* memory)
{
    return callEntry(object, number, memory, memory + 1, memory + 2);
}

/// A LED and a zone as they cross the boundary.
struct RawLed {
    std::uint32_t index;
    Byte red, green, blue;
};
struct RawZone {
    std::uint32_t number;
    std::vector<RawLed> leds;
};

std::int32_t callWithZones(void* object, std::size_t number, Byte*)
{
    static std::vector<RawZone> zones{{2, {{1, 10, 11, 12}}}};
    return callEntry(object, number, &zones);
}

/// Records of the size that a callback takes, as a host without headers writes them.
template <std::size_t size>
struct RawRecord {
    Byte bytes[size];
};
template <std::size_t size>
void ignore(RawRecord<size>)
{
}

/// One of a strand controller's: fan 4 of port 1.
std::int32_t callWithZone14(void* object, std::size_t number, Byte*)
{
    static std::vector<RawZone> zones{{14, {{1, 10, 11, 12}}}};
    return callEntry(object, number, &zones);
}

/// A pointer to the record, then a byte.
Call withRecord2(Byte value)
{
    return [=](void* object, std::size_t number, Byte* memory) {
        return callEntry(object, number, static_cast<void*>(memory), value);
    };
}

/// Two pointers, the second to byte 32.
std::int32_t withTwoApart(void* object, std::size_t number, Byte* memory)
{
    return callEntry(object, number, static_cast<void*>(memory), memory + 32);
}

const std::string idMemory = counting(0x61, 32);

const std::string darkPort = " | 01 | 82";
const std::string glowHubDark = "00 07 00 30" + darkPort + " | 00 07 01 30" + darkPort + " | 00 07 02 30" +
                                darkPort + " | 00 07 03 30" + darkPort + " | 80 05";
const std::string glowHub2Dark =
    "80 16 02 01 | 80 16 02 02 | 80 16 02 02 01 | 80 16 02 02 02 | 80 16 02 02 03";
const std::string playDockDark = "80 09 01 | 80 09 02 | 80 09 03";

/// Zones 0, 2 and others: four bytes each, then the color.
constexpr const char* fiveZones = "00000000 02000000 00000000 00000000 00000000 0A0B0C";
constexpr const char* fourZones = "00000000 02000000 00000000 00000000 0A0B0C";
constexpr const char* threeZones = "00000000 02000000 00000000 0A0B0C";

template <class Model>
std::vector<Slot> slotsOf();

template <>
std::vector<Slot> slotsOf<GlowHubModel>()
{
    const std::string all = times(20, "0A 0B 0C");
    return {
        {"setLightingInit", with(), "", "80 01 01 02 | 80 01 03 02 | " + glowHubDark},
        {"setLightingUninit", with(), "", "80 01 01 | 80 01 03"},
        {"setLightingPortColor", withRecord(), fiveZones,
         "00 07 01 30 " + all + " | 01 " + times(21, "0A 0B 0C") + " | 82 " + times(7, "0A 0B 0C"), false},
        {"setSyncLightingData", callWithZones, "", "00 07 01 30 00 00 00 0A 0B 0C | 01 | 82", false},
        {"setLightingTurnOff", with(), "", glowHubDark},
        {"setEffectParameter", withRecord(), "02 03 10 04 80 11 22 33",
         "80 01 01 | 80 0B 02 02 03 10 03 80 11 22 33", true, "01 03 10 04 80 11 22 33"},
        {"getEffectParameter", withRecord(), "03", "80 01 05 03 | 80 0B 01 04", true, "02 00 00 03 FF"},
        {"setEffectCustomize", withRecord(Byte{3}), "01 02 03 04 05", "00 10 02 02 30 05 | 01 | 82"},
        {"getEffectCustomize", withRecord(Byte{3}), "", "80 10 01 02 30 | 80 10 01 02 30 | 80 10 01 02 30",
         true, "00 00 00 00 21"},
        {"setRgbLightingEffectParameter", withRecord(), "09 02 10 05 80 11 22 33",
         "80 01 03 | 80 04 02 10 04 80 11 22 33"},
        {"getRgbLightingEffectParameter", withRecord(), "09", "80 01 05 03 | 80 0A 01", true, "09 05 06 08"},
        {"setLEDSize", with(Byte{4}, Byte{7}, Byte{8}), "", "80 0D 02 08 07 08"},
        {"getLEDSize", withTwo(Byte{3}), "", "80 0D 01 04", true, "31 32"},
        {"setUID", withRecord(), "41 42 43", "80 0C 02 41 42 43"},
        {"getUID", withRecord(), "", "80 0C 01", true, "51 52 53"},
        {"setIdentify", with(Byte{15}), "", "80 15 5E 0F"},
        {"saveConfig", with(), "", "80 12 5A A5"},
        {"resetConfig", with(Byte{9}), "", "80 13 55 AA 09"},
        {"resetData", with(), "", "80 16 56 78 | 80 01 05 03 | 80 0B 01 01 | 80 01 02 | 80 01 01"},
        {"getVersion", withRecord(), "", "80 14 01", true, "34 12"},
        {"setMultilayerMode", with(Byte{6}), "", "80 17 02 06"},
        {"getMultilayerMode", withRecord(), "", "80 17 01", true, "61"},
        {"registerNotify", with(&ignore<8>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", ""},
        {"setEffectMode", with(Byte{1}, Byte{7}), "", "80 01 01 | 80 20 01 07"},
        {"getEffectMode", withRecord(Byte{3}), "EE", "80 01 05 03 | 80 0B 01 01", true, "00"},
        {"setRgbEffectMode", with(Byte{9}, Byte{6}), "", "80 01 03 | 80 21 00 06"},
        {"getRgbEffectMode", withRecord(Byte{9}), "EE", "80 01 05 03 | 80 0A 01", true, "05"},
    };
}

template <>
std::vector<Slot> slotsOf<GlowHub2Model>()
{
    // The bytes 8, 7, 5, 1 of an effect in one argument, the first one lowest.
    return {
        {"setLightingInit", with(), "", glowHub2Dark},
        {"setLightingUninit", with(), "", "80 16 02 04"},
        {"setLightingPortColor", withRecord(), fiveZones, "80 16 02 02 01 0A 0B 0C", false},
        {"setSyncLightingData", callWithZones, "", "80 16 02 02 01 0A 0B 0C", false},
        {"setLightingTurnOff", with(), "", glowHub2Dark},
        {"setARGBEffectParameter", with(Byte{2}, std::uint32_t{0x01050708}, Byte{4}), "",
         "80 0B 02 0F 08 07 04 01 03"},
        {"getARGBEffectParameter", withRecord(Byte{3}), "", "80 0B 01 0F", true, "01 02 04 04 06"},
        {"setARGBCustomize", withRecord(Byte{4}), "41 42 43", "80 10 02 0F 0C 41 42 43"},
        {"getARGBCustomize", withRecord(Byte{4}), "", "80 10 01 0F 0C", true, "21 22 23"},
        {"setLayerSelect", with(Byte{9}), "", "80 17 09"},
        {"setRGBEffectParameter", with(Byte{6}, Byte{7}, Byte{5}), "", "80 0A 02 06 07 04"},
        {"getRGBEffectParameter", callWithThree, "", "80 0A 01", true, "05 06 08"},
        {"setRGBCustomize", withRecord(), "0A 0B 0C", "80 11 02 0A 0B 0C | 80 0A 02 04"},
        {"getRGBCustomize", withRecord(), "", "80 11 01", true, "34 12 56"},
        {"setRGBFollowParameter", with(Byte{9}, Byte{1}, Byte{5}), "", "80 18 02 09 01 04"},
        {"getRGBFollowParameter", callWithThree, "EE EE EE", "80 18 01", true, "EE EE EE"},
        {"registerNotify", with(&ignore<11>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", "80 16 02 04"},
    };
}

template <>
std::vector<Slot> slotsOf<TintHubModel>()
{
    return {
        {"setLightingInit", with(), "", "41 03 | C0 F0 | C0 02"},
        {"setLightingUninit", with(), "", "41 00"},
        // The head of the frame comes with setLightingInit.
        {"setLightingPortColor", withRecord(), fourZones, "00 00 00 00 00 00 00 0A 0B 0C", false},
        {"setSyncLightingData", callWithZones, "", "", false},
        {"setLightingTurnOff", with(), "", "C0 02"},
        {"setEffectParameter", withRecord(Byte{1}, Byte{5}, Byte{5}), "0A 0B 0C",
         "41 01 | 51 2B 00 00 01 26 20 FF FF FF 0A 0B 0C | 51 28 00 00 01 | 50 55 | 41 00"},
        {"getEffectParameter",
         [](void* object, std::size_t number, Byte* memory) {
             return callEntry(object, number, memory, memory + 1, memory + 2, memory + 3);
         },
         "01", "52 2C 00 00 01", true, "01 05 03 0A 0B 0C"},
        {"getEffectStandardMode", withRecord(), "", "52 28", true, "03"},
        {"setPortMultiColor", withRecord(), "01 02 03 04 05 06 07 08 09 0A 0B 0C 03",
         "41 80 | 51 28 00 00 04 | 51 30 | 51 A8 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C | "
         "51 2C 00 00 04 00 00 FF FF 7F FF FF FF 00 00 00 " +
             times(48, "FF")},
        {"getPortMultiColor", withRecord(), "", "41 80 | 52 A8 | 52 2C FF FF 04 " + times(59, "FF"), true,
         "21 22 23 24 25 26 27 28 29 2A 2B 2C 03"},
        {"setEffectMultilayer", withRecord(),
         "04 01 11 12 13 05 05 21 22 23 00 01 31 32 33 09 06 41 42 43 51 52 53 54",
         "41 01 | 51 2B 01 00 04 01 00 FF FF FF 11 12 13 | 51 28 00 00 04 | 50 55 | 41 00 | "
         "41 01 | 51 2B 01 00 05 05 00 FF FF FF 21 22 23 | 51 28 00 00 05 | 50 55 | 41 00 | "
         "41 01 | 41 01 | " // two layers that are refused behind their first frame
         "41 01 | 51 A0 01 00 00 01 00 00 51 52 53 54 | 51 28 00 00 E0 | 50 55 | 41 00"},
        {"exit_device", with(Byte{0}), "", "41 00"},
    };
}

template <>
std::vector<Slot> slotsOf<PlayDockModel>()
{
    // An effect with all its bytes; byte 31 is the rate.
    constexpr const char* effect =
        "EE 08 01 0A 0B 0C 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 "
        "35 36 EE EE EE 07";
    const std::string effectOnWire = "08 02 0A 0B 0C 36 " + counting(0x21, 16) + " 31 32 33 34 35";
    // What the device answers to the gets: speed 1, of which the wire has 3 less.
    const std::string got = "EE 05 01 1A 1B 1C " + counting(0x41, 16) + " 51 52 53 54 55 56 EE EE EE 07";
    return {
        {"setLightingInit", with(), "", "80 01 02 01 | " + playDockDark},
        {"setLightingUninit", with(), "", "80 01 02"},
        {"setLightingPortColor", withRecord(), threeZones, "80 09 02 01 0A 0B 0C", false},
        {"setSyncLightingData", callWithZones, "", "80 09 02 00 0A 0B 0C", false},
        {"setLightingTurnOff", with(), "", playDockDark},
        {"setEffectParameter", withRecord(), effect, "80 03 02 FF " + effectOnWire},
        {"getEffectParameter", withRecord(), effect, "80 03 01 FF", true, got},
        {"getAnyEffectParameter", withRecord(), effect, "80 04 01 FF 08", true, got},
        {"setEffectMode", with(Byte{9}, Byte{8}), "", "80 06 02 FF 08"},
        {"getEffectMode", withRecord(Byte{9}), "EE", "80 03 01 FF", true, "05"},
        {"setBottomEffectParameter", withRecord(), "0A 0B 0C", "80 11 02 FF 0A 0B 0C"},
        {"getBottomEffectParameter", withRecord(), "", "80 11 01 FF", true, "61 62 63"},
        {"saveConfig", with(), "", "80 B0 02"},
        {"resetConfig", with(Byte{9}), "", "80 B1 02"},
        {"resetData", with(), "", "80 B6 02"},
        {"getVersion", withRecord(), "", "80 B4 01", true, "34 12"},
        {"registerNotify", with(&ignore<33>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", ""},
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

/// A colour in 60 LEDs.
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
    // Effect 5, speed 3, A, B, colour, port 2, fan 4.
    constexpr const char* effect = "05 EE 03 0A 0B 11 22 33 02 04";
    constexpr const char* got = "07 EE 05 1A 1B 21 22 23 02 04";
    const std::string id = counting(0x61, 32);
    std::string eighteen = "0B000000"; // fan 1 of port 1
    for (int i = 0; i < 17; ++i)
        eighteen += " 00000000";
    static const std::string zones = eighteen + " 0A0B0C";
    std::string table = "02 04";
    for (int i = 0; i < 10; ++i)
        table += " 0" + std::to_string(i) + " 05 1A 21 22 23 1B E" + std::to_string(i);
    static const std::string overlay = "02 " + counting(0x41, 29);
    static const std::string custom = "EE EE EE EE " + counting(1, 12);
    return {
        {"setLightingInit", with(), "", "80 01 02 01 | " + strandDark()},
        {"setLightingUninit", with(), "", "80 01 02"},
        {"setLightingPortColor", withRecord(), zones.c_str(), strandFrame("01 01", "0A 0B 0C"), false},
        {"setSyncLightingData", callWithZone14, "", "00 09 01 08 3C 00 00 00 0A 0B 0C | 01 09 | 82 09",
         false},
        {"setLightingTurnOff", with(), "", strandDark()},
        {"setEffectParameter", withRecord(), effect, "80 03 02 02 08 05 02 0A 11 22 33 0B"},
        {"getEffectParameter", withRecord(), effect, "80 03 01 02 08", true, got},
        {"getAnyEffectParameter", withRecord(), effect, "80 04 01 02 08 05", true, got},
        {"getAllEffectParameter", withRecord(), "02 04", "80 0C 01 02 08 | 81 0C 01 02 08", true, table},
        {"setEffectCustomize", withRecord(Byte{2}), custom.c_str(), "80 08 02 02 00 " + counting(1, 12)},
        {"getEffectCustomize", withRecord(Byte{2}), "EE EE EE EE", "80 08 01 02", true,
         "EE EE EE EE " + counting(0x71, 12)},
        {"setGen1Size", withRecord(), "03 05 06", "80 06 02 02 05 06"},
        {"getGen1Size", withRecord(), "03", "80 06 01 04", true, "03 05 0C"},
        {"getGen2Size", withRecord(), "01", "80 07 01 01", true, "01 03 14 10 0C"},
        {"remapGen2SubPort", withRecord(), "02 01 03 02 02 03 01 04 05 05 04",
         "80 0D 02 02 01 04 02 02 04 01 08 10 10 08"},
        {"setUID", withRecord(Byte{3}), idMemory.c_str(), "80 B5 02 04 " + id},
        {"getUID", withRecord(), "", "80 B5 01", true, id},
        {"setIdentify", with(Byte{3}, Byte{5}), "", "80 0A 02 04 10"},
        {"saveConfig", with(), "", "80 B0 02"},
        {"resetConfig", with(Byte{2}), "", "80 B1 02 02"},
        {"resetData", with(), "", "80 B6 02"},
        {"getVersion", withRecord(), "", "80 B4 01", true, "34 12"},
        {"setARGBType", with(Byte{2}, Byte{7}), "", "80 0B 02 02 07 | 80 B2 02 02"},
        {"getARGBType", withRecord(Byte{2}), "", "80 0B 01 02", true, "09"},
        {"refreshPortInfo", with(Byte{3}), "", "80 B2 02 04"},
        {"registerNotify", with(&ignore<8>), "", ""},
        {"unRegisterNotify", with(), "", ""},
        {"exit_device", with(Byte{0}), "", ""},
        {"setMultilayerMode", with(Byte{5}), "", "80 C0 02 05"},
        {"getMultilayerMode", withRecord(), "", "80 C0 01", true, "08"},
        {"setEffectMode", withRecord2(Byte{7}), effect,
         "80 04 01 02 08 07 | 80 03 02 02 08 07 04 1A 21 22 23 1B", true, got},
        {"getEffectMode", withTwoApart, effect, "80 03 01 02 08", true,
         std::string(got) + " " + times(22, "00") + " 07"},
        {"setOverlayMode", with(Byte{6}), "", "80 11 02 06 32"},
        {"getOverlayMode", withRecord(), "", "80 11 01", true, "07"},
        {"setOverlayEffectParameter", withRecord(), overlay.c_str(),
         "80 11 02 01 32 | 80 10 02 02 " + counting(0x41, 29)},
        {"getOverlayEffectParameter", withRecord(), "02", "80 10 01 02", true, "02 " + counting(0x31, 29)},
        {"getOverlayEffectParameterAll", withRecord(), "", "80 10 01 01 | 80 10 01 02 | 80 10 01 04", true,
         "01 " + counting(0x51, 29) + " 02 " + counting(0x31, 29) + " 03 " + counting(0x71, 29)},
    };
}

template <>
std::vector<Slot> slotsOf<StrandHubModel>()
{
    return strandSlots();
}

template <>
std::vector<Slot> slotsOf<StrandHubV2Model>()
{
    return strandSlots();
}

/// Replies of a strand controller with bytes of their own.
void answerStrand(ScriptedDevice& device)
{
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
    device.answer("80 17 01", "80 17 03 61");
    device.answer("80 18 01", "80 18 03 01 02 03");
    device.answer("52 2C", "52 2C 00 01 26 20 FF FF 7F 0A 0B 0C");
    device.answer("52 A8", "52 A8 00 " + counting(0x21, 12));
    const std::string effect = " 03 05 02 1A 1B 1C 56 " + counting(0x41, 16) + " 51 52 53 54 55";
    device.answer("80 03 01 FF", "80 03" + effect);
    device.answer("80 04 01 FF", "80 04" + effect);
    device.answer("80 11 01 FF", "80 11 03 61 62 63");
}

template <class Model>
void answerAll(ScriptedDevice& device)
{
    if (std::is_base_of_v<StrandModel, Model>)
        answerStrand(device);
    else
        answerOthers(device);
}

constexpr std::size_t room = 256; // more than any record

ByteVector memoryOf(const Slot& slot)
{
    ByteVector memory = bytes(slot.memory);
    memory.resize(room);
    return memory;
}

template <class Model>
class HubSlots : public testing::Test {
};
TYPED_TEST_SUITE(HubSlots, HubModels, HubModelName);

TYPED_TEST(HubSlots, standInTheListedOrder)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    ASSERT_EQ(slots.size(), TypeParam::slots);
    for (std::size_t number = 0; number < slots.size(); ++number) {
        const Slot& slot = slots[number];
        const std::string name = slot.name;
        HubOf<TypeParam> hub(answerAll<TypeParam>);
        ByteVector memory = memoryOf(slot);
        std::int32_t result = -1;
        const Lines lines = debugLinesOf([&] { result = slot.call(hub.host, number, memory.data()); });
        EXPECT_EQ(result, 0) << name;
        if (!slot.logged) {
            EXPECT_EQ(lines, Lines{}) << name;
        } else if (name == "exit_device") {
            EXPECT_EQ(lines, Lines{hubLine<TypeParam>(name + ", #")});
        } else {
            EXPECT_EQ(lines,
                      (Lines{hubLine<TypeParam>(name + ", #"), hubLine<TypeParam>(name + ", ret = 0")}));
        }
        const std::string written = hub.written(reports(slot.written).size());
        EXPECT_EQ(sortedGroups(written), sortedGroups(wire(slot.written))) << name;
        ByteVector after = bytes(slot.after.empty() ? std::string(slot.memory) : slot.after);
        after.resize(room);
        EXPECT_EQ(hex(memory), hex(after)) << name;
    }
}

TYPED_TEST(HubSlots, allAnswerThatTheObjectIsClosed)
{
    const std::vector<Slot> slots = slotsOf<TypeParam>();
    HubOf<TypeParam> hub(answerAll<TypeParam>);
    const auto number =
        std::size_t(std::ranges::find(slots, std::string("exit_device"), &Slot::name) - slots.begin());
    ASSERT_LT(number, slots.size());
    EXPECT_EQ(callEntry(hub.host, number, Byte{1}), 0);
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const Slot& slot = slots[i];
        if (i == number)
            continue;
        ByteVector memory = memoryOf(slot);
        std::int32_t result = 0;
        const Lines lines = debugLinesOf([&] { result = slot.call(hub.host, i, memory.data()); });
        EXPECT_EQ(result, -11) << slot.name;
        EXPECT_EQ(memory, memoryOf(slot)) << slot.name;
        EXPECT_EQ(lines, slot.logged ? Lines{hubLine<TypeParam>(std::string(slot.name) + ", #")} : Lines{})
            << slot.name;
    }
    EXPECT_EQ(callEntry(hub.host, number, Byte{0}), 0);
    EXPECT_EQ(hub.written(), "");
}

/// What stands in a host object, as a host without headers sees it.
struct Object {
    void* table;
    void* probeTable;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

TYPED_TEST(HubSlots, leaveTheFieldsBehindTwoTables)
{
    HubOf<TypeParam> hub;
    auto* const object = reinterpret_cast<Object*>(hub.host);
    EXPECT_EQ(object->openFailed, 0);
    EXPECT_NE(object->device, nullptr);
    EXPECT_EQ(object->closed, 0);
    void* const probe = &object->probeTable;
    const Byte gone = 1;
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 2, &gone), 0); }),
              Lines{hubLine<TypeParam>("device_pre_exit, #")});
    EXPECT_EQ(object->closed, 1);
    EXPECT_NE(object->device, nullptr);
    const std::string tag = std::string("[PYRUX][") + TypeParam::tag + "]";
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(callEntry(probe, 4, &gone), 0); }),
              (Lines{tag + TypeParam::exitText, hubLine<TypeParam>("exit_device, #")}));
    EXPECT_EQ(hub.written(), "");
}

TYPED_TEST(HubSlots, sayGoodbyeThroughTheCore)
{
    HubOf<TypeParam> hub;
    void* const probe = &reinterpret_cast<Object*>(hub.host)->probeTable;
    const Byte there = 0;
    EXPECT_EQ(callEntry(probe, 2, &there), 0);
    EXPECT_EQ(callEntry(probe, 4, &there), 0);
    EXPECT_EQ(hub.written(), wire(TypeParam::goodbye));
}

TYPED_TEST(HubSlots, belongToOneObjectForAPath)
{
    const std::string tag = std::string("[PYRUX][") + TypeParam::tag + "]";
    const std::string factory = tag + "PYRUX::" + TypeParam::exportName + ", #";
    const auto device = std::make_shared<ScriptedDevice>(hubIdentity<TypeParam>());
    device->silence("");
    TypeParam::prepare(*device);
    const std::string path = sim::plug(device);
    typename TypeParam::Interface* host = nullptr;
    EXPECT_EQ(debugLinesOf([&] { host = TypeParam::factory(path.c_str()); }),
              (Lines{factory, hubLine<TypeParam>(std::string(TypeParam::name) + ", #")}));
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(takeWritten(path), wire(TypeParam::opening));
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(TypeParam::factory(path.c_str()), host); }),
              (Lines{factory, tag + "return object already create"}));
    EXPECT_EQ(takeWritten(path), "");
    const int handles = sim::openHandles();
    EXPECT_EQ(host->exit_device(0), E_OK);
    EXPECT_EQ(takeWritten(path), wire(TypeParam::goodbye));
    EXPECT_EQ(sim::openHandles(), handles - 2);
    sim::unplug(path);
}

TYPED_TEST(HubSlots, areNotThereForADeviceThatDoesNotOpen)
{
    const std::string tag = std::string("[PYRUX][") + TypeParam::tag + "]";
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(TypeParam::factory("no such path"), nullptr); }),
              (Lines{tag + "PYRUX::" + TypeParam::exportName + ", #",
                     hubLine<TypeParam>(std::string(TypeParam::name) + ", #"), "[PYRUX]init fail",
                     hubLine<TypeParam>("~" + std::string(TypeParam::name) + ", #")}));
    EXPECT_EQ(TypeParam::factory(""), nullptr);
}

} // namespace
} // namespace pyrux::test
