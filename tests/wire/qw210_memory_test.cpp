// The keyboards: the effect memory, as it is read and written as a whole.

#include "tests/support/debug_log.h"
#include "tests/support/effect_rows.h"
#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace pyrux::test {
namespace {

template <class Model>
class KeyboardMemory : public testing::Test {
};
TYPED_TEST_SUITE(KeyboardMemory, KeyboardModels, ModelName);

/// An effect memory that is put together piece by piece.
class Memory {
public:
    /// Puts a piece after the others.
    /// @return its pointer, as two bytes
    std::string put(const std::string& piece)
    {
        const ByteVector all = bytes(piece);
        const std::uint8_t pointer[]{std::uint8_t(image.size() / 4), std::uint8_t(image.size() / 4 >> 8)};
        image.insert(image.end(), all.begin(), all.end());
        return hex(pointer);
    }

    void describe(std::uint8_t effect, std::uint8_t frames, std::uint8_t extraWords,
                  const std::string& header)
    {
        const std::uint8_t numbers[]{frames, extraWords};
        descriptors[effect] = hex(numbers) + " " + header;
    }

    /// Puts an effect of records, without masks.
    void effect(std::uint8_t number, const std::vector<std::string>& records, const std::string& extra = "",
                const std::string& masks = "00 00 00 00")
    {
        std::string header = extra;
        if (records.size() > 1)
            header += " " + masks;
        std::string entries;
        std::uint8_t frame = 0;
        for (const std::string& record : records) {
            entries += " " + put(record) + " " + hex(std::span(&frame, 1)) + " 00";
            ++frame;
        }
        describe(number, std::uint8_t(records.size()), std::uint8_t(bytes(extra).size() / 4),
                 put(header + entries));
    }

    void hold(ScriptedDevice& device) const
    {
        for (const auto& [effect, text] : descriptors) {
            const std::string command = "56 14 " + hex(std::span(&effect, 1));
            device.answer(command, command + " 00 " + text);
        }
        ASSERT_LE(image.size(), 33U * 60U);
        for (std::uint8_t page = 0; page < 33; ++page) {
            const std::string command = "56 20 " + hex(std::span(&page, 1));
            const std::size_t begin = std::min<std::size_t>(60U * page, image.size());
            const std::size_t end = std::min<std::size_t>(begin + 60U, image.size());
            device.answer(command, command + " 00 " + hex(std::span(image).subspan(begin, end - begin)));
        }
    }

private:
    ByteVector image;
    std::map<std::uint8_t, std::string> descriptors;
};

constexpr const char* background = "00 01 00 C1 00 00 00 00 44 55 66 77 00 00 00 00";
constexpr const char* rain = "81 40 00 80 05 10 00 00 11 22 33 80 00 00 03 00 30 18 04 10 01 00 00 00";
constexpr const char* emptyRecord = "10 00 00 C1 00 00 00 00";
constexpr const char* steadyRecord = "00 01 00 C1 00 00 00 00 01 02 03 04 00 00 00 00";

bool twoFrames(std::uint8_t effect)
{
    static constexpr std::uint8_t all[]{2, 3, 5, 6, 9, 10, 11, 12, 15, 17};
    return std::ranges::find(all, effect) != std::end(all);
}

template <class Model>
std::string copyOf(KeyboardOf<Model>& keyboard, std::uint8_t id)
{
    EffectRecord record = effect("EE");
    EXPECT_EQ(keyboard->getGeneralEffect(id, &record), E_OK);
    return textOf(record);
}

using Four = std::array<EffectRecord, 4>;

template <class Model>
std::vector<std::string> layersOf(KeyboardOf<Model>& keyboard)
{
    Four got{};
    EXPECT_EQ(keyboard->getMultilayerEffect(got.data()), E_OK);
    return {textOf(got[0]), textOf(got[1]), textOf(got[2]), textOf(got[3])};
}

template <class Model>
std::vector<std::string> zonesOf(KeyboardOf<Model>& keyboard, ByteVector* matrix = nullptr)
{
    Four got{};
    ByteVector all(4 * Model::zoneBytes, 0x5A);
    EXPECT_EQ(keyboard->getMultizoneEffect(got.data(), all.data()), E_OK);
    if (matrix)
        *matrix = all;
    return {textOf(got[0]), textOf(got[1]), textOf(got[2]), textOf(got[3])};
}

/// All rows that there are for each effect, as many at once as there are effects.
TYPED_TEST(KeyboardMemory, isReadByTheRowsOfTheEffects)
{
    std::map<std::uint8_t, std::vector<const EffectRow*>> rows;
    for (const EffectRow& row : effectRows)
        if (row.reads)
            rows[row.effect].push_back(&row);
    ASSERT_EQ(rows.size(), 17U);
    std::size_t most = 0;
    for (const auto& [effect, ofEffect] : rows)
        most = std::max(most, ofEffect.size());
    for (std::size_t round = 0; round < most; ++round) {
        Memory memory;
        for (const auto& [number, ofEffect] : rows) {
            const EffectRow& row = *ofEffect[std::min(round, ofEffect.size() - 1)];
            if (twoFrames(number))
                memory.effect(number, {background, row.record});
            else
                memory.effect(number, {row.record});
        }
        KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
        for (const auto& [number, ofEffect] : rows) {
            const EffectRow& row = *ofEffect[std::min(round, ofEffect.size() - 1)];
            EXPECT_EQ(copyOf(keyboard, number), row.reads) << row.record;
        }
    }
}

TYPED_TEST(KeyboardMemory, ofTheFactoryIsReadAndWrittenBack)
{
    KeyboardOf<TypeParam> keyboard(
        [](ScriptedDevice& device) { holdImage(device, TypeParam::factoryImage); });
    static constexpr const char* effects[]{
        "00 FF FF FF 00 00 FF 00 00 00 00 00", // 0
        "01 00 00 00 03 00 FF 00 00 00 00 00", // 1
        "02 FF FF FF 03 00 FF 00 00 00 00 FF", // 2
        "03 FF FF FF 03 00 FF 00 00 00 00 FF", // 3
        "04 00 00 00 00 00 FF 00 00 00 00 00", // 4
        "05 FF FF FF 03 00 FF 00 00 00 00 FF", // 5
        "06 FF FF FF 03 00 FF 00 00 00 00 FF", // 6
        "07 00 00 00 03 00 FF 00 00 00 00 00", // 7
        "08 FF FF FF 03 00 FF 00 00 00 00 00", // 8
        "09 FF FF FF 03 00 FF 00 00 00 00 FF", // 9
        "0A FF FF FF 03 00 FF 00 00 00 00 FF", // 10
        "0B FF FF FF 03 00 FF 00 00 00 00 FF", // 11
        "0C FF FF FF 03 00 FF 00 00 00 00 FF", // 12
        "0D 00 00 00 03 00 FF 00 00 00 00 00", // 13
        "0E 00 00 00 03 00 FF 00 00 00 00 00", // 14
        "0F FF FF FF 03 00 FF 00 00 00 00 FF", // 15
        "10 FF FF FF 03 00 FF 00 00 00 00 FF", // 16
        "11 FF FF FF 03 00 FF 00 00 00 00 FF", // 17
    };
    std::array<EffectRecord, 18> all{};
    EXPECT_EQ(keyboard->getGeneralEffectAll(all.data()), E_OK);
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(textOf(all[i]), effects[i]);
    const std::vector<std::string> empty(4, "10 FF FF FF 03 00 FF 00 00 00 00 FF");
    ByteVector matrix;
    EXPECT_EQ(layersOf(keyboard), empty);
    EXPECT_EQ(zonesOf(keyboard, &matrix), empty);
    EXPECT_EQ(matrix, ByteVector(4 * TypeParam::zoneBytes));
    EXPECT_EQ(keyboard->saveConfig(), E_OK);
    EXPECT_EQ(keyboard.written(),
              joined({storingOf(TypeParam::factoryImage), wire("41 80 | 51 28 | 41 01 | 50 55 | 41 00")}));
}

TYPED_TEST(KeyboardMemory, ofAnotherKindIsReadAndWrittenBack)
{
    KeyboardOf<TypeParam> keyboard([](ScriptedDevice& device) {
        holdImage(device, TypeParam::changedImage);
        device.answer("52 28", "52 28 00 00 13");
    });
    static constexpr const char* effects[]{
        "00 10 20 30 00 00 A0 00 00 00 00 00", // 0
        "01 00 00 00 02 07 A1 00 00 00 00 00", // 1
        "02 12 22 32 03 00 A2 00 42 52 62 72", // 2
        "03 13 23 33 04 00 A3 01 43 53 63 73", // 3
        "04 00 00 00 00 00 A4 00 00 00 00 00", // 4
        "05 15 25 35 01 00 A5 01 45 55 65 75", // 5
        "06 16 26 36 02 00 A6 00 46 56 66 76", // 6
        "07 00 00 00 03 00 A7 00 00 00 00 00", // 7
        "08 18 28 38 04 00 A8 00 00 00 00 00", // 8
        "09 19 29 39 05 00 A9 01 49 59 69 79", // 9
        "0A 1A 2A 3A 01 00 AA 00 4A 5A 6A 7A", // 10
        "0B 1B 2B 3B 02 00 AB 01 4B 5B 6B 7B", // 11
        "0C 1C 2C 3C 03 00 AC 00 4C 5C 6C 7C", // 12
        "0D 00 00 00 04 04 AD 00 00 00 00 00", // 13
        "0E 00 00 00 05 00 AE 00 00 00 00 00", // 14
        "0F 1F 2F 3F 01 00 AF 01 4F 5F 6F 7F", // 15
        "10 FF FF FF 03 00 FF 00 00 00 00 FF", // 16
        "11 21 31 41 03 00 B1 01 51 61 71 81", // 17
    };
    for (std::uint8_t i = 0; i < 18; ++i)
        if (i != 4) {
            EXPECT_EQ(copyOf(keyboard, i), effects[i]);
        }
    EffectRecord custom = effect("EE");
    std::array<std::uint8_t, 504> colors{};
    EXPECT_EQ(keyboard->getCustomEffect(&custom, colors.data()), E_OK);
    EXPECT_EQ(textOf(custom), effects[4]);
    for (std::size_t i = 0; i < colors.size(); ++i)
        EXPECT_EQ(colors[i], std::uint8_t(7 * i + 3)) << i;
    EXPECT_EQ(layersOf(keyboard), (std::vector<std::string>{"00 10 20 30 00 00 A0 00 00 00 00 00",
                                                            "02 12 22 32 03 00 A2 00 00 00 00 00",
                                                            "10 FF FF FF 03 00 FF 00 00 00 00 FF",
                                                            "0D 00 00 00 04 04 AD 00 00 00 00 00"}));
    ByteVector matrix;
    EXPECT_EQ(zonesOf(keyboard, &matrix), (std::vector<std::string>{"00 10 20 30 00 00 A0 00 00 00 00 00",
                                                                    "05 15 25 35 01 00 A5 01 45 55 65 75",
                                                                    "10 FF FF FF 03 00 FF 00 00 00 00 FF",
                                                                    "09 19 29 39 05 00 A9 01 49 59 69 79"}));
    for (std::size_t i = 0; i < matrix.size(); ++i)
        EXPECT_EQ(matrix[i], i % TypeParam::zoneBytes % 4 == i / TypeParam::zoneBytes ? 1 : 0) << i;
    EXPECT_EQ(keyboard->saveConfig(), E_OK);
    EXPECT_EQ(keyboard.written(), joined({storingOf(TypeParam::changedImage),
                                          wire("41 80 | 51 28 00 00 13 | 41 01 | 50 55 | 41 00")}));
}

TYPED_TEST(KeyboardMemory, isWrittenOutOfWhatTheHostHasSet)
{
    KeyboardOf<TypeParam> keyboard;
    for (std::uint8_t i = 0; i < 18; ++i) {
        if (i == 4)
            continue;
        const std::uint8_t option = i == 1 ? 7 : i == 13 ? 4 : 0;
        const EffectRecord record{i,
                                  std::uint8_t(0x10 + i),
                                  std::uint8_t(0x20 + i),
                                  std::uint8_t(0x30 + i),
                                  std::uint8_t(1 + i % 5),
                                  option,
                                  std::uint8_t(0xA0 + i),
                                  std::uint8_t(i % 2),
                                  std::uint8_t(0x40 + i),
                                  std::uint8_t(0x50 + i),
                                  std::uint8_t(0x60 + i),
                                  std::uint8_t(0x70 + i)};
        EXPECT_EQ(keyboard->setGeneralEffect(&record), E_OK);
    }
    EffectRecord custom = effect("04 14 24 34 05 00 A4 00 44 54 64 74");
    std::array<std::uint8_t, 504> colors{};
    for (std::size_t i = 0; i < colors.size(); ++i)
        colors[i] = std::uint8_t(7 * i + 3);
    EXPECT_EQ(keyboard->setCustomEffect(&custom, colors.data()), E_OK);
    const Four layers{
        effect("00 10 20 30 01 00 A0 00 40 50 60 70"), effect("02 12 22 32 03 00 A2 00 42 52 62 72"),
        effect("10 20 30 40 02 00 B0 00 50 60 70 80"), effect("0D 1D 2D 3D 04 04 AD 01 4D 5D 6D 7D")};
    EXPECT_EQ(keyboard->setMultilayerEffect(layers.data()), E_OK);
    const Four zones{
        effect("00 10 20 30 01 00 A0 00 40 50 60 70"), effect("05 15 25 35 01 00 A5 01 45 55 65 75"),
        effect("10 20 30 40 02 00 B0 00 50 60 70 80"), effect("09 19 29 39 05 00 A9 01 49 59 69 79")};
    ByteVector matrix(4 * TypeParam::zoneBytes);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = i % TypeParam::zoneBytes % 4 == i / TypeParam::zoneBytes ? 0xFF : 0xFE;
    EXPECT_EQ(keyboard->setMultizoneEffect(zones.data(), matrix.data()), E_OK);
    keyboard.written();
    EXPECT_EQ(keyboard->saveConfig(), E_OK);
    EXPECT_EQ(keyboard.written(), joined({storingOf(TypeParam::changedImage),
                                          wire("41 80 | 51 28 00 00 13 | 41 01 | 50 55 | 41 00")}));
}

TYPED_TEST(KeyboardMemory, thatIsEmptyLacksTheRainEffect)
{
    forgetDebugOutput();
    KeyboardOf<TypeParam> keyboard;
    EXPECT_EQ(std::ranges::count(debugLines(), ownLine<TypeParam>("RAIN effect not found")), 1);
    for (std::uint8_t i = 0; i < 17; ++i)
        if (i != 4 && i != 10) {
            EXPECT_EQ(copyOf(keyboard, i), times(12, "00")) << int(i);
        }
    EXPECT_EQ(copyOf(keyboard, 10), "00 FF FF FF 00 00 00 00 00 00 00 00");
    EXPECT_EQ(copyOf(keyboard, 17), "11 FF FF FF 03 00 FF 00 00 00 00 FF");
    // The background of a layer is that of a new record.
    EXPECT_EQ(layersOf(keyboard), std::vector<std::string>(4, "10 FF FF FF 03 00 FF 00 00 00 00 FF"));
    EXPECT_EQ(zonesOf(keyboard), std::vector<std::string>(4, "10 FF FF FF 03 00 FF 00 00 00 00 FF"));
    EXPECT_EQ(keyboard->saveConfig(), E_OK);
    EXPECT_EQ(keyboard.written(),
              joined({storingOf(TypeParam::bareImage), wire("41 80 | 51 28 | 41 01 | 50 55 | 41 00")}));
}

/// The rule changes the bytes that it names and no others.
TYPED_TEST(KeyboardMemory, withoutTheRainEffectKeepsTheOthers)
{
    forgetDebugOutput();
    KeyboardOf<TypeParam> keyboard([](ScriptedDevice& device) {
        holdImage(device, TypeParam::changedImage);
        device.answer("56 14 11", "56 14 11");
    });
    EXPECT_EQ(std::ranges::count(debugLines(), ownLine<TypeParam>("RAIN effect not found")), 1);
    EXPECT_EQ(copyOf(keyboard, 3), "03 13 23 33 04 00 A3 01 43 53 63 73");
    EXPECT_EQ(copyOf(keyboard, 10), "0A FF FF FF 01 00 AA 00 4A 5A 6A 7A");
    EXPECT_EQ(copyOf(keyboard, 17), "11 FF FF FF 03 00 FF 00 00 00 00 FF");
    EXPECT_EQ(layersOf(keyboard), (std::vector<std::string>{"10 FF FF FF 03 00 FF 00 00 00 00 00",
                                                            "10 FF FF FF 03 00 FF 00 00 00 00 00",
                                                            "10 FF FF FF 03 00 FF 00 00 00 00 FF",
                                                            "10 FF FF FF 03 04 FF 00 00 00 00 00"}));
    ByteVector matrix;
    EXPECT_EQ(zonesOf(keyboard, &matrix), (std::vector<std::string>{"10 FF FF FF 03 00 FF 00 00 00 00 FF",
                                                                    "10 FF FF FF 03 00 FF 01 45 55 65 FF",
                                                                    "10 FF FF FF 03 00 FF 00 00 00 00 FF",
                                                                    "10 FF FF FF 03 00 FF 01 49 59 69 FF"}));
    EXPECT_EQ(matrix, ByteVector(4 * TypeParam::zoneBytes));
    keyboard.forget();
    const EffectRecord set = effect("11 21 31 41 03 00 B1 01 51 61 71 81");
    EXPECT_EQ(keyboard->setGeneralEffect(&set), E_OK); // works at once
    EXPECT_EQ(reports(keyboard.written()).front(), "56 81 00 00 11 00 00 00 02 00 00 00 88 88 88 88");
}

TYPED_TEST(KeyboardMemory, withTheRainEffectHasNothingChanged)
{
    forgetDebugOutput();
    Memory memory;
    memory.effect(17, {background, rain});
    KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
    EXPECT_EQ(std::ranges::count(debugLines(), ownLine<TypeParam>("RAIN effect not found")), 0);
    EXPECT_EQ(copyOf(keyboard, 17), "11 11 22 33 03 00 80 00 44 55 66 77");
    EXPECT_EQ(copyOf(keyboard, 10), times(12, "00"));
}

/// A record that is not known is passed over; its frame stays empty.
TYPED_TEST(KeyboardMemory, mayHoldRecordsThatAreNotKnown)
{
    Memory memory;
    memory.effect(0, {"77 77 00 C1 00 00 00 00 11 22 33 80 00 00 00 00"});
    memory.effect(7, {"10 A0 00 80 20 10 00 00 11 22 33 80 00 00 03 00 02 FF 00 03 00 00 00 00 00 00 00 00 "
                      "00 00 00 00 00 00 00 00"});
    memory.effect(8, {"00 30 00 C1 0C 00 00 00 11 22 33 80 01 00 04 00 00 00 00 00"});
    memory.effect(17, {background, rain});
    KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
    EXPECT_EQ(copyOf(keyboard, 0), times(12, "00"));
    EXPECT_EQ(copyOf(keyboard, 7), times(12, "00"));
    EXPECT_EQ(copyOf(keyboard, 8), "08 11 22 33 03 00 80 00 00 00 00 00");
}

/// The entries stand after the extra words and the word of the masks, by the device's own numbers.
TYPED_TEST(KeyboardMemory, isReadByTheDevicesNumbers)
{
    Memory memory;
    memory.effect(0, {steadyRecord}, "AA BB CC DD 11 22 33 44");
    memory.effect(2, {"00 30 00 C1 0C 00 00 00 11 22 33 80 01 00 04 00 00 00 00 00"});
    memory.effect(5, {background, "04 80 00 80 0B 10 00 00 21 22 23 24 02 00 02 00 00 00 00 00"},
                  "AA BB CC DD");
    memory.effect(6, {steadyRecord, steadyRecord, steadyRecord});
    memory.effect(17, {background, rain});
    KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
    EXPECT_EQ(copyOf(keyboard, 0), "00 01 02 03 00 00 04 00 00 00 00 00");
    EXPECT_EQ(copyOf(keyboard, 2), "08 11 22 33 03 00 80 00 00 00 00 00"); // one frame, and another effect
    EXPECT_EQ(copyOf(keyboard, 5), "03 21 22 23 03 00 24 01 44 55 66 77");
    EXPECT_EQ(copyOf(keyboard, 6), times(12, "00")); // three frames are none of its kinds
}

/// Only odd frames of one or two frames make zones; later ones move up.
TYPED_TEST(KeyboardMemory, leavesOutZonesThatAreNotKnown)
{
    Memory memory;
    const std::string masks =
        memory.put(times(TypeParam::maskBytes, "FF") + " " + times(TypeParam::maskBytes, "01") + " " +
                   times(6 * TypeParam::maskBytes, "80"));
    memory.effect(17, {background, rain});
    memory.effect(19,
                  {emptyRecord, "77 77 00 C1", emptyRecord, steadyRecord, background,
                   "04 80 00 80 0B 10 00 00 21 22 23 24 02 00 02 00 00 00 00 00", emptyRecord, emptyRecord},
                  "", masks + " " + masks);
    KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
    ByteVector matrix;
    const std::vector<std::string> zones = zonesOf(keyboard, &matrix);
    EXPECT_EQ(zones[0], "00 01 02 03 00 00 04 00 00 00 00 00");
    EXPECT_EQ(zones[1], "03 21 22 23 03 00 24 01 44 55 66 77");
    EXPECT_EQ(zones[2], "10 FF FF FF 03 00 FF 00 00 00 00 FF");
    for (std::size_t i = 0; i < matrix.size(); ++i) { // the second copy of each mask counts
        const bool lit = i < TypeParam::zoneBytes ? i % 8 == 0 : i % 8 == 7;
        EXPECT_EQ(matrix[i], lit ? 1 : 0) << i;
    }
}

/// A pair of period and step, or of period and length, that no speed has makes a record unknown: its zone is
/// left out.
TYPED_TEST(KeyboardMemory, leavesOutZonesOfNoSpeed)
{
    for (const char* record : {
             "00 32 00 C1 07 00 00 00 FF FF FF 80 00 00 04 00 00 04 08 00",             // 1: 7 with 4
             "00 80 00 80 0B 10 00 00 11 22 33 80 00 00 01 01 03 00 00 00",             // 2: 11 with 1
             "04 80 00 80 04 10 00 00 11 22 33 80 02 00 05 00 00 00 00 00",             // 3: 4 with 5
             "00 40 00 80 0A 10 00 00 11 22 33 80 00 00 01 00 01 10 08 01 10 00 00 00", // 5: 10 with 1
             "81 40 00 80 05 10 00 00 11 22 33 80 00 00 03 00 18 FF 10 10 01 40 00 00", // 6: 5 with 18
             "00 31 00 C1 07 00 00 00 40 00 FF 80 00 00 03 00 00 00 00 00",             // 7: 7
             "00 30 00 C1 0C 00 00 00 11 22 33 80 01 00 02 00 00 00 00 00",             // 8: 12 with 2
             "01 82 00 80 0D 10 00 00 11 22 33 80 00 00 01 00 00 01 00 00",             // 9: 13
             "28 80 00 80 08 10 00 00 11 22 33 80 00 00 01 00",                         // 10: 8
             "20 A0 00 80 20 10 00 00 11 22 33 80 00 00 04 00 02 FF 00 03",             // 11: 32 with 4
             "20 A0 00 80 10 10 00 00 11 22 33 80 00 00 06 00 01 08 09 04",             // 12: 16 with 6
             "00 34 00 C1 04 00 00 00 00 00 FF 80 00 00 05 00 00 40 00 04 A0 00 30 00", // 13: 4 with 5
             "00 83 00 C1 04 00 00 00 00 00 FF 80 00 00 00 00 00 00 00 00 30 00 10 00", // 14: no option's
         }) {
        Memory memory;
        memory.effect(17, {background, rain});
        memory.effect(19, {emptyRecord, record, emptyRecord, steadyRecord, emptyRecord, emptyRecord,
                           emptyRecord, emptyRecord});
        KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
        const std::vector<std::string> zones = zonesOf(keyboard);
        EXPECT_EQ(zones[0], "00 01 02 03 00 00 04 00 00 00 00 00") << record;
        EXPECT_EQ(zones[1], "10 FF FF FF 03 00 FF 00 00 00 00 FF") << record;
    }
}

/// A layer of effect 0 is the ground: its byte in the extra word is 0, and it takes frame 0.
TYPED_TEST(KeyboardMemory, givesTheGroundToEachLayerOfEffectZero)
{
    Memory memory;
    memory.effect(17, {background, rain});
    memory.effect(18,
                  {steadyRecord, emptyRecord, "00 30 00 C1 0C 00 00 00 11 22 33 80 01 00 04 00 00 00 00 00",
                   emptyRecord, emptyRecord},
                  "00 08 00 10");
    KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) { memory.hold(device); });
    EXPECT_EQ(layersOf(keyboard), (std::vector<std::string>{"00 01 02 03 00 00 04 00 00 00 00 00",
                                                            "08 11 22 33 03 00 80 00 00 00 00 00",
                                                            "00 01 02 03 00 00 04 00 00 00 00 00",
                                                            "10 FF FF FF 03 00 FF 00 00 00 00 FF"}));
}

/// Whatever a device gives, the library stays within its tables.
TYPED_TEST(KeyboardMemory, mayLeadAnywhere)
{
    for (const char* descriptor :
         {"FF FF FF FF", "08 00 FF FF", "05 01 FF 02", "01 00 FE 02", "08 FF 00 00"}) {
        KeyboardOf<TypeParam> keyboard([&](ScriptedDevice& device) {
            for (const std::string& command : reports(eachOf("56 14", 21)))
                device.answer(command, command + " 00 " + descriptor);
            for (const std::string& command : reports(eachOf("56 20", 33)))
                device.answer(command, command + " 00 " + times(60, "FF"));
        });
        EXPECT_EQ(copyOf(keyboard, 17), "11 FF FF FF 03 00 FF 00 00 00 00 FF") << descriptor;
        EXPECT_EQ(keyboard->saveConfig(), E_OK);
    }
}

/// What is longer than the pages is cut.
TYPED_TEST(KeyboardMemory, endsWithItsLastPage)
{
    KeyboardOf<TypeParam> keyboard;
    const std::array<std::uint8_t, 504> colors{};
    EffectRecord custom = effect("04 00 00 00 00 00 80");
    EXPECT_EQ(keyboard->setCustomEffect(&custom, colors.data()), E_OK);
    const Four layers{effect("04"), effect("04"), effect("04"), effect("04")};
    EXPECT_EQ(keyboard->setMultilayerEffect(layers.data()), E_OK);
    const ByteVector zones(768, 1);
    EXPECT_EQ(keyboard->setMultizoneEffect(layers.data(), zones.data()), E_OK);
    keyboard.written();
    EXPECT_EQ(keyboard->saveConfig(), E_OK);
    const std::vector<std::string> pieces = reports(keyboard.written());
    ASSERT_EQ(pieces.size(), 21U + 33U + 5U);
    EXPECT_EQ(pieces[20].substr(0, 8), "56 15 14");
    EXPECT_EQ(pieces[53].substr(0, 8), "56 21 20");
}

} // namespace
} // namespace pyrux::test
